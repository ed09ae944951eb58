// Taking a build in, and installing it.
#include "Support/ModelTest.h"

#include <QDir>
#include <QFile>
#include <QSysInfo>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString refusal =
    u"Choose a regular .apk file. Android App Bundles (.aab) need to be converted into APKs first."_s;

} // namespace

class BuildTest : public ModelTest
{
    Q_OBJECT

private:
    QStringList installCommand(const QString &path) const { return {u"-s"_s, serial, u"install"_s, u"-r"_s, path}; }

    /// Accepts a new file of that name.
    QString accept(const QString &name = u"demo-debug.apk"_s)
    {
        const QString path = makeFile(name);
        model->acceptAPK(QUrl::fromLocalFile(path));
        writes->take();
        return path;
    }

private Q_SLOTS:
    void acceptsRegularFilesByTheirExtension_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString &name : {u"demo.apk"_s, u"Demo.APK"_s, u"Demo.aPk"_s, u"demo.v1.2-debug.apk"_s,
                                    u"with blank .apk"_s, u"%20.apk"_s, u"#?.apk"_s, u"Größe 日本.apk"_s})
            QTest::newRow(qUtf8Printable(name)) << name;
        QTest::newRow("255 bytes") << QString(251, u'x') + u".apk";
    }
    void acceptsRegularFilesByTheirExtension()
    {
        QFETCH(QString, name);
        const QUrl location = QUrl::fromLocalFile(makeFile(name));
        const QString status = model->status();
        model->acceptAPK(location);
        QCOMPARE(model->apk(), std::optional(location));
        QCOMPARE(model->error(), std::nullopt);
        QCOMPARE(model->status(), status);
        QCOMPARE(writes->take().size(), 1);
    }

    void acceptsALinkToARegularFile()
    {
        const QString link = scratch(u"link.apk"_s);
        QVERIFY(QFile::link(makeFile(u"target"_s), link));
        model->acceptAPK(QUrl::fromLocalFile(link));
        QCOMPARE(model->apk(), std::optional(QUrl::fromLocalFile(link)));
    }

    void eachChoiceChangesOnlyItsOwnProperty()
    {
        accept(u"one.apk"_s);
        const QUrl second = QUrl::fromLocalFile(accept(u"two.apk"_s));
        QCOMPARE(model->apk(), std::optional(second));
        model->acceptAPK(QUrl::fromLocalFile(makeFile(u"demo.aab"_s)));
        QCOMPARE(writes->take(), QStringList({u"error="_s + refusal}));
        QCOMPARE(model->apk(), std::optional(second));
        accept();
        QCOMPARE(model->error(), std::optional(refusal));
    }

    void acceptsAndInstallsFromThisComputerByAnyName_data()
    {
        QTest::addColumn<QString>("address");
        const QString path = scratch(u"demo.apk"_s);
        QTest::newRow("localhost") << u"file://localhost"_s + path;
        QTest::newRow("localhost in capitals") << u"FILE://LOCALHOST"_s + path;
        QTest::newRow("its own name") << u"file://"_s + QSysInfo::machineHostName() + path;
        QTest::newRow("no host, another slash") << u"file:///"_s + path;
        QTest::newRow("no host, no slashes") << u"file:"_s + path;
    }
    void acceptsAndInstallsFromThisComputerByAnyName()
    {
        QFETCH(QString, address);
        const QString path = makeFile(u"demo.apk"_s);
        model->acceptAPK(QUrl(address));
        QCOMPARE(model->error(), std::nullopt);
        selectPhone();
        adb().onAnything().prints("Success");
        perform([this] { model->install(); });
        const QString installed = adb().calls().first().arguments().last();
        QCOMPARE(installed.startsWith(u"//") ? installed.mid(1) : installed, path);
    }

    void refusesWhatIsNoRegularLocalFile_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("name");
        for (const QString &name : {u"demo.aab"_s, u"demo.apks"_s, u"demo.zip"_s, u"demo"_s, u"apk"_s, u".apk"_s,
                                    u"demo.apk "_s, u"demo.apk.txt"_s, u"demo.apk."_s, u"demo.ａｐｋ"_s})
            QTest::newRow(qUtf8Printable(u"a file named '"_s + name + u'\'')) << u"file"_s << name;
        QTest::newRow("a directory") << u"directory"_s << u"build.apk"_s;
        QTest::newRow("a file that is gone") << u"absent"_s << u"gone.apk"_s;
        QTest::newRow("a dangling link") << u"dangling"_s << u"link.apk"_s;
        QTest::newRow("a link to a directory") << u"directory link"_s << u"link.apk"_s;
        QTest::newRow("a named pipe") << u"pipe"_s << u"pipe.apk"_s;
        QTest::newRow("a device") << u"device"_s << u"null.apk"_s;
        QTest::newRow("a network address") << u"url"_s << u"https://example.com/demo.apk"_s;
        // The first part of the path is the host: taken for a path all the same, the address would lead to the file.
        QTest::newRow("a file of another computer") << u"address"_s << u"file:/"_s;
        QTest::newRow("a file behind a port") << u"address"_s << u"file://localhost:80"_s;
        QTest::newRow("no location") << u"url"_s << QString();
        QTest::newRow("a path without a scheme") << u"url"_s << u"/tmp/demo.apk"_s;
    }
    void refusesWhatIsNoRegularLocalFile()
    {
        QFETCH(QString, kind);
        QFETCH(QString, name);
        const QString path = kind == u"address" ? makeFile(u"build.apk"_s) : scratch(name);
        const QByteArray encoded = QFile::encodeName(path);
        if (kind == u"file")
            makeFile(name);
        else if (kind == u"directory")
            QVERIFY(QDir().mkdir(path));
        else if (kind == u"dangling")
            QVERIFY(QFile::link(u"nowhere.apk"_s, path));
        else if (kind == u"directory link")
            QVERIFY(QFile::link(u"/tmp"_s, path));
        else if (kind == u"pipe")
            QCOMPARE(mkfifo(encoded.constData(), 0600), 0);
        else if (kind == u"device")
            QVERIFY(QFile::link(u"/dev/null"_s, path));
        model->acceptAPK(kind == u"url"       ? QUrl(name)
                         : kind == u"address" ? QUrl(name + path)
                                              : QUrl::fromLocalFile(path));
        QCOMPARE(writes->take(), QStringList({u"error="_s + refusal}));
    }

    void chosenFileGoesThroughTheSameGate()
    {
        const QUrl good = QUrl::fromLocalFile(makeFile(u"demo.apk"_s));
        dialogs->builds = {good, QUrl::fromLocalFile(makeFile(u"demo.aab"_s))};
        model->chooseAPK();
        QCOMPARE(writes->take(), QStringList({u"apk="_s + good.toString()}));
        model->chooseAPK();
        QCOMPARE(writes->take(), QStringList({u"error="_s + refusal}));
        QCOMPARE(dialogs->questions, 2);
    }

    void cancelledChoiceChangesNothing()
    {
        accept();
        model->chooseAPK();
        QCOMPARE(dialogs->questions, 1);
        QCOMPARE(writes->take(), QStringList());
    }

    void guardsHaveNoEffectAtAll_data()
    {
        addMissingRows();
        QTest::newRow("build") << u"build"_s;
    }
    void guardsHaveNoEffectAtAll()
    {
        QFETCH(QString, missing);
        if (missing != u"build")
            accept();
        arrangeMissing(missing == u"build" ? u"nothing"_s : missing);
        model->install();
        settle();
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(adb().calls().size(), 0);
        model->busy = false;
    }

    void successIsNamedByFileAndSerialEachTime()
    {
        selectPhone();
        const QString path = accept();
        adb().on(installCommand(path)).prints("Performing Streamed Install\nSuccess\n");
        const QString outcome = u"Installed demo-debug.apk on R58M42ABCDE. Existing app data was retained."_s;
        for (int time = 0; time < 2; ++time) {
            perform([this] { model->install(); });
            QCOMPARE(writes->take(), success(u"Installing demo-debug.apk…"_s, outcome));
        }
        QCOMPARE(adb().count(installCommand(path)), 2);
        QCOMPARE(model->apk(), std::optional(QUrl::fromLocalFile(path)));
    }

    void successWordMayStandAnywhere_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("alone") << QByteArray("Success");
        QTest::newRow("after a progress line") << QByteArray("Performing Streamed Install\nSuccess\n");
        QTest::newRow("within a word") << QByteArray("xxSuccessfulxx");
        QTest::newRow("among ill-formed bytes") << QByteArray("\xff\xfeSuccess\xc3");
        QTest::newRow("with CR LF") << QByteArray("Success\r\n");
    }
    void successWordMayStandAnywhere()
    {
        QFETCH(QByteArray, output);
        selectPhone();
        adb().on(installCommand(accept())).prints(output).complains("a warning that is none of our business\n");
        perform([this] { model->install(); });
        QCOMPARE(model->status(), u"Installed demo-debug.apk on R58M42ABCDE. Existing app data was retained."_s);
        QCOMPARE(model->error(), std::nullopt);
    }

    void outputWithoutTheSuccessWordIsAFailure_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<QString>("error");
        const QByteArray reason = "Failure [INSTALL_FAILED_VERSION_DOWNGRADE]\n";
        QTest::newRow("a failure reason, then standard error, nothing between or trimmed")
            << reason << QByteArray(" adb: failed\n") << QString::fromUtf8(reason + " adb: failed\n");
        QTest::newRow("in lower case only") << QByteArray("success\n") << QByteArray() << u"success\n"_s;
        QTest::newRow("on standard error only") << QByteArray() << QByteArray("Success\n") << u"Success\n"_s;
        QTest::newRow("silence") << QByteArray() << QByteArray() << QString();
        QTest::newRow("ill-formed bytes")
            << QByteArray("a\xff\xe2\x82z") << QByteArray("\xf0") << u"a\ufffd\ufffdz\ufffd"_s;
    }
    void outputWithoutTheSuccessWordIsAFailure()
    {
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, complaint);
        QFETCH(QString, error);
        selectPhone();
        const QString path = accept();
        adb().on(installCommand(path)).prints(output).complains(complaint);
        perform([this] { model->install(); });
        QCOMPARE(writes->take(), failure(u"Installing demo-debug.apk…"_s, error));
        QCOMPARE(model->apk(), std::optional(QUrl::fromLocalFile(path)));
        QCOMPARE(model->selectedID(), std::optional(serial));
    }

    void nonZeroExitFailsEvenWithTheSuccessWord()
    {
        selectPhone();
        adb().on(installCommand(accept())).prints("Success\n").complains("adb: connection reset\n").exits(1);
        perform([this] { model->install(); });
        QCOMPARE(writes->take(), failure(u"Installing demo-debug.apk…"_s, u"adb: connection reset\n"_s));
    }

    /// A path through a link and back leads to the parent of the link's target.
    void installsTheFileThatWasChecked()
    {
        QVERIFY(QDir().mkpath(scratch(u"elsewhere/target"_s)));
        QVERIFY(QFile::link(scratch(u"elsewhere/target"_s), scratch(u"link"_s)));
        makeFile(u"elsewhere/demo.apk"_s);
        const QString path = accept(u"link/../demo.apk"_s);
        selectPhone();
        adb().on(installCommand(path)).prints("Success");
        perform([this] { model->install(); });
        QCOMPARE(adb().commandLines(), QList({installCommand(path)}));
    }

    void inputsAreThoseOfTheClick()
    {
        selectPhone();
        const QString path = accept();
        adb().on(installCommand(path)).waitsFor(u"go"_s).prints("Success");
        model->install();
        // Both before the action's first step and while it runs.
        model->devices = {device(serial), device(u"other"_s)};
        model->selectedID = u"other"_s;
        QVERIFY(called(adb(), installCommand(path)));
        model->acceptAPK(QUrl::fromLocalFile(makeFile(u"later.apk"_s)));
        letGo();
        QCOMPARE(model->status(), u"Installed demo-debug.apk on R58M42ABCDE. Existing app data was retained."_s);
        QCOMPARE(adb().commandLines(), QList({installCommand(path)}));
    }
};

QTEST_GUILESS_MAIN(BuildTest)
#include "BuildTest.moc"
