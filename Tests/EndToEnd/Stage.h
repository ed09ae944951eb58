// Stage: an installation of Varda of its own to play on, with the real adb, an adb server of its own and a home folder
// of its own, so that any number of plays run side by side and none touches the machine's own server or files.
//
//     Stage stage({.varda = …, .adb = …});
//     QVERIFY2(stage.errorString().isEmpty(), …);
//     stage.startVarda();
//     WindowDriver window(stage.varda().processId());
//     stage.adb({u"connect"_s, phone.endpoint()});
//     …
//     QCOMPARE(stage.leftovers(), QStringList{});          // after varda has ended and the server was killed
#pragma once

#include "Support/AdbServer.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

namespace varda::test {

/// Where the programs are that are put on the stage.
struct Programs
{
    QString varda;
    /// The adb of a staged tools tree, with its libraries beside it.
    QString adb;
    /// Empty for none.
    QString scrcpy;
};

class Stage
{
public:
    explicit Stage(const Programs &programs);
    /// Ends what still runs: Varda, the adb server, and whatever they left behind.
    ~Stage();
    Q_DISABLE_COPY_MOVE(Stage)

    /// Empty when the stage is set.
    QString errorString() const { return error; }

    /// Starts the installed Varda; false where it does not start. If it ends by a signal or with another status than 0,
    /// the test under way fails at that moment and says so, and every wait in it ends. The core that it leaves in its
    /// working directory is kept beside the test program.
    bool startVarda();
    QProcess &varda() { return process; }

    /// Runs the real adb against the stage's own server and returns all that it printed. Blocks, and starts the server
    /// where none runs.
    QString adb(const QStringList &arguments) const;
    void killServer() const { server.run({QStringLiteral("kill-server")}); }

    /// A path in the home folder of whoever sits before the window.
    QString home(const QString &name = {}) const;
    /// Where the program looks for scrcpy.
    QString scrcpyPath() const { return server.folder() + QStringLiteral("/lib/varda/Tools/scrcpy/scrcpy"); }
    /// What is left in the folder for temporary files and of processes that were started on the stage.
    QStringList leftovers() const;
    /// The processes that were started on the stage and live, as their ids and command lines.
    QStringList processes() const;

    /// The environment of everything on the stage.
    QProcessEnvironment environment() const;

private:
    QString install(const Programs &programs);
    void judgeEnd(int code, QProcess::ExitStatus status) const;
    QString keepCore() const;
    QList<qint64> processIds() const;

    AdbServer server;
    QProcess process;
    QString error;
};

} // namespace varda::test
