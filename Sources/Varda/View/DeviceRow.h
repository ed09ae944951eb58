// DeviceRow: one device of the list, painted whole: icon, name, transport, serial and status dot.
#pragma once

#include "VardaCore/AndroidDevice.h"

#include <QAbstractButton>

namespace varda {

/// Checked while its device is the selected one. A click does not check it: it asks the model, and the next render
/// shows the answer.
class DeviceRow final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit DeviceRow(QWidget *parent = nullptr);

    /// Shows `device`; repaints only where something differs.
    void setDevice(const AndroidDevice &device, bool selected);

    const AndroidDevice &device() const { return m_device; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void nextCheckState() override {}
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Lines
    {
        QFont name;
        QFont transport;
        QFont serial;
        int height() const;
    };
    Lines lines() const;
    void paintTexts(QPainter &painter, const QRect &area) const;

    AndroidDevice m_device;
};

} // namespace varda
