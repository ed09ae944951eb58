// FittedDialog: a dialog of one width that is as high as its content, and is built when it is first wanted.
#pragma once

#include <QDialog>

namespace varda {

/// Opens over the middle of its parent's window, and follows its layout as texts in it wrap, grow and shrink. The user
/// cannot resize it. Few dialogs are opened in every session, so none takes time or memory from the program's start.
class FittedDialog : public QDialog
{
    Q_OBJECT

public:
    /// Makes what is in the dialog, unless that was done. So does showing it.
    void ensureBuilt();

    void setVisible(bool visible) override;

protected:
    FittedDialog(int width, QWidget *parent);

    /// Makes the widgets and their layout.
    virtual void build() = 0;
    bool event(QEvent *event) override;

private:
    void fit();
    void centre();

    const int m_width;
};

} // namespace varda
