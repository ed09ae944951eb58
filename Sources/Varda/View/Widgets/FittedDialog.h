// FittedDialog: a dialog of one width that is as high as its content.
#pragma once

#include <QDialog>

namespace varda {

/// Opens over the middle of its parent's window, and follows its layout as texts in it wrap, grow and shrink. The user
/// cannot resize it.
class FittedDialog : public QDialog
{
    Q_OBJECT

public:
    void setVisible(bool visible) override;

protected:
    FittedDialog(int width, QWidget *parent);

    bool event(QEvent *event) override;

private:
    void fit();
    void centre();

    const int m_width;
};

} // namespace varda
