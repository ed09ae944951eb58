// QuitSignals: ends the program in order when the system or a terminal asks it to end.
#pragma once

#include <QObject>

namespace varda {

/// Emits `received` in the event loop after SIGTERM, SIGINT or SIGHUP; one that was ignored when the program started
/// (`nohup`) stays ignored. One object at a time. When it is gone these signals do nothing: the program is ending, and
/// a second Ctrl+C must not keep it from cleaning up.
class QuitSignals final : public QObject
{
    Q_OBJECT

public:
    explicit QuitSignals(QObject *parent = nullptr);

Q_SIGNALS:
    void received();
};

} // namespace varda
