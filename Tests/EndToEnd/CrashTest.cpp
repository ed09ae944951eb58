// A test whose Varda crashes fails at once and says so: this one is to fail, and CTest looks for what it says.
#include "Stage.h"
#include "VardaWindow.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

class CrashTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endsEveryWait()
    {
        Stage stage{{.varda = QStringLiteral(VARDA_PROGRAM), .adb = QStringLiteral(STAGED_ADB), .scrcpy = {}}};
        QVERIFY2(stage.errorString().isEmpty(), qUtf8Printable(stage.errorString()));
        QVERIFY(stage.startVarda());
        const VardaWindow window{stage.varda().processId()};
        kill(static_cast<pid_t>(stage.varda().processId()), SIGABRT);
        // Longer than the time that CTest grants.
        eventually([] { return false; }, 24h);
        QVERIFY(!window.lists({}));
        QFile::remove(QCoreApplication::applicationDirPath() + u"/core."_s +
                      QString::number(QCoreApplication::applicationPid()));
    }
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::CrashTest)
#include "CrashTest.moc"
