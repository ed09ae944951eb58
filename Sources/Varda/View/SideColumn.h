// SideColumn: the product header, the attached devices, and the way to a phone over Wi-Fi.
#pragma once

#include "Varda/Model/VardaModel.h"

#include <QWidget>

class QMenu;
class QVBoxLayout;

namespace varda {

class WindowActions;
class DeviceList;

class SideColumn final : public QWidget
{
    Q_OBJECT

public:
    SideColumn(VardaModel &model, const WindowActions &actions, QWidget *parent = nullptr);

    void render();

    /// The menu of the button in the product header; the shell adds what concerns the whole program.
    QMenu *applicationMenu() const { return m_menu; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void addHeader(QVBoxLayout &stack, const WindowActions &actions);
    void addDevices(QVBoxLayout &stack, const WindowActions &actions);
    void addTrustNote(QVBoxLayout &stack);

    VardaModel &m_model;
    QMenu *m_menu;
    DeviceList *m_devices = nullptr;
};

} // namespace varda
