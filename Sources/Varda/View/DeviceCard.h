// DeviceCard: the selected device and whether it can be worked with, and what to do if the phone does not allow that.
#pragma once

#include "Varda/View/Widgets/Panel.h"
#include "VardaCore/AndroidDevice.h"

class QLabel;

namespace varda {

class ElidedLabel;

/// The selected device: its state as an icon, its name, its transport and its state in words.
class DeviceCard final : public Surface
{
    Q_OBJECT

public:
    explicit DeviceCard(QWidget *parent = nullptr);

    void setDevice(const AndroidDevice &device);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    AndroidDevice m_device;
    ElidedLabel *m_name;
    QLabel *m_transport;
    ElidedLabel *m_state;
};

/// Tells the user to approve this computer on the phone.
class AuthorizationWarning final : public Surface
{
    Q_OBJECT

public:
    explicit AuthorizationWarning(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace varda
