// Steps: every command of every action of the model, as a place where something can go wrong.
#pragma once

#include "Support/ModelTest.h"

#include "Varda/Model/Adb.h"

#include <QList>

namespace varda::test {

/// Where an action tells of a failure.
enum class Report {
    Alert,      ///< `error`, and `status` with " failed."
    StatusLine, ///< `status` alone
    Console,    ///< `error`, and the console is turned off
    Nowhere,    ///< the failure of a part that the action does not depend on
};

struct Command
{
    QStringList arguments;
    QByteArray answer;
    bool withInput = false;
};

/// One command of one action.
struct Step
{
    QString name;
    QList<Command> commands; ///< those of the whole action, in order
    int index;               ///< which of them this step is
    Report report;
    QString working; ///< the status while the action runs
    std::function<void(VardaModel &, DialogScript &)> start;

    const Command &command() const { return commands[index]; }
};

/// What a user sees after an action.
struct Outcome
{
    std::optional<QString> error;
    QString status;
    QString logs;
    bool logging = false;

    bool operator==(const Outcome &) const = default;
};

Outcome outcomeOf(const VardaModel &model);

/// All steps, for the device `serial`; files are installed from and saved to the folder `scratch`. Each starts on a
/// model where that device is selected.
class Steps
{
public:
    Steps(const QString &serial, const QString &scratch);

    const QList<Step> &all() const { return m_steps; }
    const Step &named(const QString &name) const;

    /// Whether what the last started step began has ended.
    bool ended(const VardaModel &model) const { return !model.busy() && m_task && m_task->isReady(); }

private:
    using Start = std::function<void(VardaModel &, DialogScript &)>;

    void add(const QString &name, const QList<Command> &commands, Report report, const QString &working,
             const Start &start);
    void addSecond(const QString &name, Report report);
    void addActions(const QString &serial, const QString &scratch);
    void addWireless(const Command &list);
    void addConsole(const QString &serial);
    void await(QCoro::Task<> task) { m_task = std::make_unique<QCoro::Task<>>(std::move(task)); }
    void awaitNothing()
    {
        m_task = std::make_unique<QCoro::Task<>>([]() -> QCoro::Task<> { co_return; }());
    }

    QList<Step> m_steps;
    std::unique_ptr<QCoro::Task<>> m_task;
};

} // namespace varda::test
