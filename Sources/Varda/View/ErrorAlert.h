// ErrorAlert: the last failure, in front of everything else.
#pragma once

#include "Varda/View/Widgets/FittedDialog.h"

namespace varda {

class HintBlock;
class TextBlock;

/// A dialog that is opened, not executed. Emits `finished` when the user dismisses it by whatever means; neither
/// `present` nor `withdraw` does.
class ErrorAlert final : public FittedDialog
{
    Q_OBJECT

public:
    explicit ErrorAlert(QWidget *window);

    /// Shows `text`, and below it what helps if that is known, on top of `host` unless it is open already; `host` may
    /// be the main window, the sheet or a file dialog.
    void present(const QString &text, QWidget *host);
    void withdraw();

private:
    void build() override;

    TextBlock *m_text = nullptr;
    HintBlock *m_hint = nullptr;
};

} // namespace varda
