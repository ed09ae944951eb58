// Opening the live phone: what it is called with, what it inherits, and where it records to.
#include "Support/MirrorModelTest.h"

#include <QDir>
#include <QFile>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::SaveKind;

namespace {

const QString recording = u"Recording the real device in the live phone window."_s;

} // namespace

class MirrorTest : public MirrorModelTest
{
    Q_OBJECT

private:
    QStringList recordCommand(const QString &path) const { return command() + QStringList{u"--record"_s, path}; }

private Q_SLOTS:
    void guardsHaveNoEffectAtAll_data() { addMissingRows(); }
    void guardsHaveNoEffectAtAll()
    {
        QFETCH(QString, missing);
        dialogs->locations = {scratch(u"a.mp4"_s)};
        arrangeMissing(missing);
        model->mirrorPhone(false);
        model->mirrorPhone(true);
        settle();
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(dialogs->saveQuestions.size(), 0);
        QCOMPARE(scrcpy().calls().size(), 0);
        model->busy = false;
    }

    void opensWithThisCommandLineAndNoOtherEffect()
    {
        openMirror();
        QCOMPARE(model->busy(), false);
        const ToolCall call = scrcpy().calls().first();
        qInfo().noquote() << "recorded:" << call.argv;
        QCOMPARE(call.argv.first(), scrcpy().path().toUtf8());
        QCOMPARE(call.workingDirectory, QDir::currentPath());
        QCOMPARE(adb().calls().size(), 0);
    }

    void childGetsTheToolsInItsEnvironmentWhateverItInherits()
    {
        qputenv("ADB", "/usr/bin/another-adb");
        qputenv("SCRCPY_SERVER_PATH", "/another/server");
        openMirror();
        QHash<QByteArray, QByteArray> expected;
        for (char **entry = environ; *entry; ++entry) {
            const QByteArray text(*entry);
            expected.insert(text.left(text.indexOf('=')), text.mid(text.indexOf('=') + 1));
        }
        const QByteArray directory = StandInTools::directory().toUtf8();
        expected.insert("ADB", directory + "/platform-tools/adb");
        expected.insert("SCRCPY_SERVER_PATH", directory + "/scrcpy/scrcpy-server");
        qunsetenv("ADB");
        qunsetenv("SCRCPY_SERVER_PATH");
        QCOMPARE(scrcpy().calls().first().environment, expected);
    }

    void childGetsTheNullDeviceForItsMessages()
    {
        openMirror();
        const QStringList held = scrcpy().calls().first().descriptors;
        QCOMPARE(held.size(), 3);
        QVERIFY2(held[0].startsWith(u"0 "), qUtf8Printable(held[0]));
        QCOMPARE(held.mid(1), QStringList({u"1 /dev/null"_s, u"2 /dev/null"_s}));
    }

    void childLeadsASessionOfItsOwn()
    {
        openMirror();
        const ToolCall call = scrcpy().calls().first();
        QCOMPARE(call.session, call.pid);
        QVERIFY(call.session != getsid(0));
    }

    void recordsToTheChosenFile()
    {
        const QString path = scratch(u"test.mp4"_s);
        selectPhone();
        dialogs->locations = {path};
        scrcpy().on(recordCommand(path)).hangs().exitsOnTermination(0);
        model->mirrorPhone(true);
        QCOMPARE(writes->take(), QStringList({u"mirrorRunning=true"_s, u"status="_s + recording}));
        QVERIFY(called(scrcpy(), recordCommand(path)));
        QCOMPARE(dialogs->saveQuestions.size(), 1);
        QVERIFY(dialogs->saveQuestions.first().kind == SaveKind::Mpeg4Movie);
        QCOMPARE(dialogs->saveQuestions.first().proposedName, u"Varda-session.mp4"_s);
    }

    void cancelledRecordingChangesNothing()
    {
        selectPhone();
        model->mirrorPhone(true);
        settle();
        QCOMPARE(dialogs->saveQuestions.size(), 1);
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(scrcpy().calls().size(), 0);
    }

    void recordingDialogMayOutliveItsConditions()
    {
        const QString path = scratch(u"a.mp4"_s);
        selectPhone();
        dialogs->locations = {path};
        dialogs->whileOpen = [this] {
            model->devices = {device(u"other"_s)};
            model->selectedID = u"other"_s;
        };
        scrcpy().on(recordCommand(path)).hangs().exitsOnTermination(0);
        model->mirrorPhone(true);
        QVERIFY(called(scrcpy(), recordCommand(path)));
    }

    void mirrorOpenedUnderTheRecordingDialogIsTheOnlyOne()
    {
        selectPhone();
        dialogs->locations = {scratch(u"a.mp4"_s)};
        scrcpy().on(command()).hangs().exitsOnTermination(0);
        dialogs->whileOpen = [this] { model->mirrorPhone(false); };
        model->mirrorPhone(true);
        QVERIFY(called(scrcpy(), command()));
        settle();
        QCOMPARE(scrcpy().calls().size(), 1);
        QCOMPARE(writes->take(), opened());
    }

    void launchFailureIsAnErrorAndNothingElse()
    {
        selectPhone();
        QVERIFY(QFile::rename(scrcpy().path(), scrcpy().path() + u".away"));
        model->mirrorPhone(false);
        QCOMPARE(writes->take(), QStringList({u"error="_s + scrcpy().path() + u": No such file or directory"}));
        QVERIFY(!model->mirrorRunning());
        QVERIFY(QFile::rename(scrcpy().path() + u".away", scrcpy().path()));
        openMirror();
    }
};

QTEST_GUILESS_MAIN(MirrorTest)
#include "MirrorTest.moc"
