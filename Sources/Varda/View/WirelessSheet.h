// WirelessSheet: pairing and connecting a phone over Wi-Fi, in a dialog over the main window.
#pragma once

#include "Varda/Model/VardaModel.h"
#include "Varda/View/Widgets/FittedDialog.h"

class QLineEdit;
class QVBoxLayout;

namespace varda {

class Button;
class TextBlock;

/// Shown while the model's `wireless` is true; closing it by any means writes false.
class WirelessSheet final : public FittedDialog
{
    Q_OBJECT

public:
    WirelessSheet(VardaModel &model, QWidget *window);

    void render();

private:
    void build() override;
    void addHeader(QVBoxLayout &stack);
    void addPairing(QVBoxLayout &stack);
    void addConnection(QVBoxLayout &stack);

    VardaModel &m_model;
    QLineEdit *m_pairingEndpoint = nullptr;
    QLineEdit *m_pairingCode = nullptr;
    Button *m_pair = nullptr;
    QLineEdit *m_connectEndpoint = nullptr;
    Button *m_connect = nullptr;
    TextBlock *m_status = nullptr;
};

} // namespace varda
