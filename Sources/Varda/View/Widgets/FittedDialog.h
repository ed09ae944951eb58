// FittedDialog: a dialog of one width that is as high as its content.
#pragma once

#include <QDialog>

namespace varda {

/// Follows its layout as texts in it wrap, grow and shrink. The person cannot resize it.
class FittedDialog : public QDialog
{
    Q_OBJECT

protected:
    FittedDialog(int width, QWidget *parent);

    bool event(QEvent *event) override;

private:
    void fit();

    const int m_width;
};

} // namespace varda
