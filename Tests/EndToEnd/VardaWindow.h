// VardaWindow: Varda's window as its user reads and works it: status line, device rows, file dialogs, alert.
#pragma once

#include "Accessibility/WindowDriver.h"

namespace varda::test {

class VardaWindow : public WindowDriver
{
public:
    using WindowDriver::WindowDriver;

    /// What the status line shows now.
    QString status() const;
    /// Waits until the status line shows exactly `text`.
    bool statusBecomes(const QString &text) const;

    /// Waits until the device list has a row whose name holds all of `facts` (name, transport, serial, state).
    bool lists(const QStringList &facts) const;
    /// Clicks the row of the device `serial` and waits until it is the selected one.
    bool select(const QString &serial) const;
    bool isSelected(const QString &serial) const;

    /// Waits until the console's text satisfies `condition`.
    bool consoleBecomes(const std::function<bool(const QString &)> &condition) const;

    /// Answers the file dialog that is open, or about to be, with `path`.
    bool answerFileDialog(const QString &path) const;

    /// The message of the error alert that is open; empty if none is.
    QString alert() const;
    /// Waits for the error alert, reads it and closes it by its button "OK". Empty when none came.
    QString takeAlert() const;

private:
    Accessible row(const QStringList &facts) const;
};

} // namespace varda::test
