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
    void addHeader(QVBoxLayout &stack);
    void addPairing(QVBoxLayout &stack);
    void addConnection(QVBoxLayout &stack);

    VardaModel &m_model;
    QLineEdit *m_pairingEndpoint;
    QLineEdit *m_pairingCode;
    Button *m_pair;
    QLineEdit *m_connectEndpoint;
    Button *m_connect;
    TextBlock *m_status;
};

} // namespace varda
