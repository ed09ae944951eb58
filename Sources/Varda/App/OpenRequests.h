// OpenRequests: how a second start of the program with a file finds the window that is open.
#pragma once

#include <QObject>
#include <QUrl>

namespace varda {

/// Takes files from later starts, under the name "local.halvex.varda" on the session bus and through the interface
/// org.freedesktop.Application (D-Bus activation of desktop entries). Without a session bus, or if another Varda has
/// the name already, nothing is ever requested. Main thread.
class OpenRequests final : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Asks the Varda that has the name to take `file` and to come to the front, and tells whether it did. Waits two
    /// seconds at most.
    static bool handOver(const QUrl &file);

    /// Takes the name. Call it when the window is shown.
    void listen();

Q_SIGNALS:
    /// Another start asks for the window to come to the front, with `file` if that is not empty.
    void requested(const QUrl &file);
};

} // namespace varda
