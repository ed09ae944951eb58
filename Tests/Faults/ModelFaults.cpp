// ModelFaults: what can go wrong with one command, and how a user learns of it.
#include "ModelFaults.h"

#include "Interposition.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

namespace {

const QString gate = u"go"_s;
constexpr qsizetype tooMuchOutput = 32 * 1024 * 1024 + 1;
const QString timeOut = u"The Android command timed out. Check the phone connection and try again."_s;

/// How many of these calls one command makes whose standard error is empty.
int callsPerCommand(Call call)
{
    switch (call) {
    case Call::ChangeMode:
    case Call::Inspect:
        return 3;
    case Call::Open:
        return 4;
    case Call::Duplicate:
        return 2;
    default:
        return 1;
    }
}

/// The call number `index` of the step's command fails.
ModelFault failing(const QString &name, Call call, int index, int error, const std::optional<QString> &sentence)
{
    const auto arrange = [=](const Step &step, StandInTools &) {
        injectFault(call, error, step.index * callsPerCommand(call) + index);
    };
    ModelFault fault{name, sentence, arrange};
    fault.injected = true;
    return fault;
}

ModelFault onlyWithInput(ModelFault fault)
{
    fault.concerns = [](const Step &step) { return step.command().withInput; };
    return fault;
}

ModelFault tool(const QString &name, const std::optional<QString> &sentence,
                const std::function<void(ToolAnswer &&)> &behave)
{
    const auto arrange = [behave](const Step &step, StandInTools &tools) {
        behave(tools.adb().on(step.command().arguments));
    };
    return {name, sentence, arrange};
}

ModelFault exiting(const QString &name, const QString &sentence, const std::function<void(ToolAnswer &&)> &behave)
{
    ModelFault fault = tool(name, sentence, behave);
    fault.exitStatusOnly = true;
    return fault;
}

/// A command that never ends by itself: its time-out passes as soon as it runs.
ModelFault hanging(const QString &name, const std::function<void(ToolAnswer &)> &behave)
{
    ModelFault fault = tool(name, timeOut, [behave](ToolAnswer &&answer) {
        behave(answer);
        answer.hangs();
    });
    fault.meanwhile = [](const Step &step, StandInTools &tools) {
        if (tools.adb().count(step.command().arguments) > 0)
            skipTime(200s);
    };
    return fault;
}

/// The tool's file is damaged before the command is launched.
ModelFault brokenTool(const QString &name, const QString &sentence, const std::function<void(const QString &)> &damage)
{
    const auto arrange = [damage](const Step &step, StandInTools &tools) {
        if (step.index == 0)
            return damage(tools.adb().path());
        tools.adb().on(step.commands[0].arguments).prints(step.commands[0].answer).waitsFor(gate);
    };
    const auto meanwhile = [damage](const Step &step, StandInTools &tools) {
        if (step.index == 0 || tools.adb().count(step.commands[0].arguments) == 0 ||
            QFile::exists(tools.adb().script() + u"/gates/"_s + gate))
            return;
        damage(tools.adb().path());
        tools.adb().open(gate);
    };
    ModelFault fault{name, sentence, arrange, meanwhile};
    // A listing looks for the tool first, and has a sentence of its own.
    fault.concerns = [](const Step &step) { return step.command().arguments != Adb::devices().arguments; };
    return fault;
}

ModelFault vanishingDirectory()
{
    ModelFault fault = tool(u"the capture directory vanishes"_s, u"…/stdout: No such file or directory"_s,
                            [](ToolAnswer &&answer) { answer.waitsFor(gate).prints("late\n"); });
    fault.meanwhile = [](const Step &step, StandInTools &tools) {
        if (tools.adb().count(step.command().arguments) == 0)
            return;
        for (const QString &name : QDir::temp().entryList({u"varda-*"_s}, QDir::Dirs))
            QDir(QDir::temp().filePath(name)).removeRecursively();
        tools.adb().open(gate);
    };
    return fault;
}

QList<ModelFault> systemFaults()
{
    QList<ModelFault> faults = {
        failing(u"no space for the capture directory (ENOSPC)"_s, Call::MakeDirectory, 0, ENOSPC,
                u"…: No space left on device"_s),
        failing(u"the directory's name is taken (EEXIST)"_s, Call::MakeDirectory, 0, EEXIST, u"…: File exists"_s),
        failing(u"the directory cannot be protected (EPERM)"_s, Call::ChangeMode, 0, EPERM,
                u"…: Operation not permitted"_s),
        failing(u"no descriptor for the output (EMFILE)"_s, Call::Open, 0, EMFILE, u"…/stdout: Too many open files"_s),
        failing(u"no space for the error text (ENOSPC)"_s, Call::Open, 1, ENOSPC,
                u"…/stderr: No space left on device"_s),
        failing(u"no process to be had (EAGAIN)"_s, Call::Spawn, 0, EAGAIN,
                u"…/adb: Resource temporarily unavailable"_s),
        failing(u"no memory to launch (ENOMEM)"_s, Call::Spawn, 0, ENOMEM, u"…/adb: Cannot allocate memory"_s),
        failing(u"the output cannot be read (EIO)"_s, Call::Read, 0, EIO, u"…/stdout: Input/output error"_s),
        failing(u"no descriptor to read the output (EMFILE)"_s, Call::Open, 2, EMFILE,
                u"…/stdout: Too many open files"_s),
        failing(u"a kernel without pidfds (ENOSYS)"_s, Call::OpenPidfd, 0, ENOSYS, std::nullopt),
        failing(u"the wait is interrupted (EINTR)"_s, Call::Wait, 0, EINTR, std::nullopt),
        failing(u"the reading is interrupted (EINTR)"_s, Call::Read, 0, EINTR, std::nullopt),
        failing(u"the output cannot be measured (EIO)"_s, Call::Inspect, 0, EIO, std::nullopt),
        failing(u"the error text cannot be read (EMFILE)"_s, Call::Open, 3, EMFILE, std::nullopt),
    };
    faults << onlyWithInput(failing(u"no pipe for the input (EMFILE)"_s, Call::Pipe, 0, EMFILE,
                                    u"Cannot make a pipe: Too many open files"_s));
    faults << onlyWithInput(
        failing(u"nobody reads the input (EPIPE)"_s, Call::Write, 0, EPIPE, u"Cannot write to …/adb: Broken pipe"_s));
    faults << onlyWithInput(
        failing(u"the pipe takes the input later (EAGAIN)"_s, Call::Write, 0, EAGAIN, std::nullopt));
    return faults;
}

QList<ModelFault> toolFaults()
{
    return {
        exiting(u"adb exits with 1 and says why"_s, u"adb: device offline\n"_s,
                [](ToolAnswer &&answer) { answer.prints("x\n").complains("adb: device offline\n").exits(1); }),
        exiting(u"adb exits with 1 and says so in its output"_s, u"failed\n"_s,
                [](ToolAnswer &&answer) { answer.prints("failed\n").exits(1); }),
        exiting(u"adb exits with 1 in silence"_s, QString(), [](ToolAnswer &&answer) { answer.exits(1); }),
        exiting(u"adb crashes (SIGSEGV)"_s, QString(), [](ToolAnswer &&answer) { answer.diesBy(SIGSEGV); }),
        tool(u"adb prints more than 32 MiB"_s, u"Command output was too large to display safely."_s,
             [](ToolAnswer &&answer) { answer.prints(QByteArray(tooMuchOutput, 'x')); }),
        hanging(u"adb hangs at once"_s, [](ToolAnswer &) {}),
        hanging(u"adb hangs after its output"_s, [](ToolAnswer &answer) { answer.prints("Success\n"); }),
        hanging(u"adb hangs and ignores SIGTERM"_s, [](ToolAnswer &answer) { answer.ignoresTermination(); }),
        brokenTool(u"adb is missing"_s, u"…/adb: No such file or directory"_s,
                   [](const QString &path) { QFile::remove(path); }),
        brokenTool(u"adb is a directory"_s, u"…/adb: Permission denied"_s,
                   [](const QString &path) {
                       QFile::remove(path);
                       QDir().mkdir(path);
                   }),
        brokenTool(u"adb is no program"_s, u"…/adb: Exec format error"_s,
                   [](const QString &path) {
                       QFile::remove(path);
                       QFile file(path);
                       if (file.open(QIODevice::WriteOnly))
                           file.write("no program\n");
                       file.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
                   }),
        vanishingDirectory(),
    };
}

} // namespace

QList<ModelFault> modelFaults()
{
    return systemFaults() + toolFaults();
}

ModelFault answering(const QString &name, const QByteArray &answer)
{
    return tool(name, std::nullopt, [answer](ToolAnswer &&rule) { rule.prints(answer); });
}

} // namespace varda::test
