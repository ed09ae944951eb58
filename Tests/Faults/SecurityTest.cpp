// What a user types stays what it is: the pairing code reaches adb and nothing else, no typed text becomes an option,
// and no text reaches a shell.
#include "Support/ModelTest.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda;
using namespace varda::test;

namespace {

const QString endpoint = u"192.168.1.50:37123"_s;
/// Not to be found anywhere by chance.
const QString secretCode = u"703914"_s;

QStringList messages;

void keepMessage(QtMsgType, const QMessageLogContext &, const QString &message)
{
    messages << message;
}

/// What anybody who may look at this process and its children can read of them.
QStringList processPlaces()
{
    QStringList places;
    for (const QString &pid : childProcesses() + QStringList(u"self"_s)) {
        for (const QString &file : {u"cmdline"_s, u"environ"_s, u"comm"_s, u"status"_s})
            places << u"/proc/"_s + pid + u'/' + file;
    }
    return places;
}

/// Every file below `folder`, but for what the stand-in keeps of its own input.
QStringList filesBelow(const QString &folder)
{
    QStringList files;
    QDirIterator iterator(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (iterator.hasNext()) {
        const QString path = iterator.next();
        if (!path.contains(u"/inputs/"_s))
            files << path;
    }
    return files;
}

/// The places that hold `secret`, by file and by name.
QStringList placesHolding(const QString &secret, const QStringList &places)
{
    QStringList holding;
    for (const QString &place : places) {
        if (place.contains(secret) || contents(place).contains(secret.toUtf8()))
            holding << place;
    }
    return holding;
}

} // namespace

class SecurityTest : public ModelTest
{
    Q_OBJECT

private:
    QStringList places() const
    {
        return processPlaces() + filesBelow(QDir::tempPath()) + filesBelow(StandInTools::directory());
    }
    void pairAndLook(const std::function<void(ToolAnswer &&)> &answer);

private Q_SLOTS:
    /// The search that the next test relies on.
    void searchFindsTheCodeWhereItIs()
    {
        QFile file(QDir::temp().filePath(u"leak"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("code " + secretCode.toUtf8());
        file.close();
        adb().onAnything().waitsFor(u"go"_s);
        model->connectEndpoint = u"host:1"_s;
        qputenv("LEAK", secretCode.toUtf8());
        model->connect();
        VERIFY_SOON(!adb().calls().isEmpty());
        const QStringList found = placesHolding(secretCode, places());
        qunsetenv("LEAK");
        QVERIFY(found.contains(file.fileName()));
        QVERIFY(found.contains(u"/proc/%1/environ"_s.arg(adb().calls().first().pid)));
        QVERIFY(file.remove());
        letGo();
    }

    void pairingCodeReachesAdbAndNothingElse_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("success") << "Successfully paired to 192.168.1.50:37123\n"_ba << 0;
        QTest::newRow("echoed by adb") << "Failed: 703914 is no good: 703914\n"_ba << 0;
        QTest::newRow("failure") << "error: protocol fault\n"_ba << 1;
        QTest::newRow("silence") << QByteArray() << 0;
    }
    void pairingCodeReachesAdbAndNothingElse()
    {
        QFETCH(QByteArray, output);
        QFETCH(int, exitCode);
        messages.clear();
        const QtMessageHandler previous = qInstallMessageHandler(keepMessage);
        // The answer is written only after the look at the pairing that is under way.
        adb().onAnything().waitsFor(u"go"_s).exits(exitCode);
        model->pairingEndpoint = endpoint;
        model->pairingCode = secretCode;
        model->pair();
        VERIFY_SOON(!adb().calls().isEmpty());
        QVERIFY(!childProcesses().isEmpty());
        const QStringList during = placesHolding(secretCode, places());
        QCOMPARE(model->pairingCode(), QString());
        const QByteArray input = adb().calls().first().input;
        letGo();

        model->pairingCode = secretCode;
        adb().onAnything().prints(output).exits(exitCode);
        perform([this] { model->pair(); });
        QStringList script = filesBelow(StandInTools::directory());
        script.removeIf([](const QString &path) { return path.endsWith(u"/stdout"_s); });
        const QStringList after = placesHolding(secretCode, processPlaces() + filesBelow(QDir::tempPath()) + script);
        qInstallMessageHandler(previous);

        QCOMPARE(input, secretCode.toUtf8() + '\n');
        QCOMPARE(during, QStringList());
        QCOMPARE(after, QStringList());
        for (const QString &write : writes->take() + messages)
            QVERIFY2(write == u"pairingCode="_s + secretCode || !write.contains(secretCode), qPrintable(write));
    }

    void typedTextNeverBecomesAnOption_data()
    {
        QTest::addColumn<QString>("typed");
        for (const char *text :
             {"-s", "--pid", "-p.x", " -com.example.app", "\n-host:1", "--host:1", "-1.2.3.4:5", "com.example.app -n",
              "com.example.app;reboot", "$(reboot).x", "`reboot`.x", "com.example.app\n-W", "host:1 -L tcp:0",
              "host:1\n", "\u2010host:1", "\u2013com.example.app", "com.example.app\u00A0-n"})
            QTest::newRow(text) << QString::fromUtf8(text);
    }
    void typedTextNeverBecomesAnOption()
    {
        QFETCH(QString, typed);
        adb().onAnything().prints("com.example.app/.Main\n");
        selectPhone();
        model->packageName = typed;
        model->pairingEndpoint = typed;
        model->connectEndpoint = typed;
        model->pairingCode = typed;
        perform([this] { model->appAction(true); });
        perform([this] { model->appAction(false); });
        perform([this] { model->pair(); });
        model->pairingCode = secretCode;
        perform([this] { model->pair(); });
        perform([this] { model->connect(); });
        // A valid text may be typed with white space around it; what then arrives is the text without.
        const QString kept = typed.trimmed();
        for (const ToolCall &call : adb().calls()) {
            for (const QString &argument : call.arguments()) {
                QVERIFY2(!argument.contains(kept) || argument == kept, qPrintable(argument));
                QVERIFY2(argument != kept || !kept.startsWith(u'-'), qPrintable(argument));
                QVERIFY2(argument != kept || kept == u"host:1"_s, qPrintable(argument));
            }
        }
    }

    void textsReachTheToolVerbatimAndNoShell_data()
    {
        QTest::addColumn<QString>("text");
        for (const char *text : {"$(touch planted)",
                                 "`touch planted`",
                                 "; touch planted",
                                 "| touch planted",
                                 "&& touch planted",
                                 "a b",
                                 "'",
                                 "\"",
                                 "\\",
                                 "*",
                                 "~",
                                 "-r",
                                 "--help",
                                 "%s%n",
                                 "\u00E9\u202E",
                                 " two  blanks ",
                                 "two\nlines\tand",
                                 "100%25#?&=+",
                                 "<>[]{}()!",
                                 "Gro\u0308\u00DFe",
                                 "日本 👍🏽"})
            QTest::newRow(text) << QString::fromUtf8(text);
    }
    void textsReachTheToolVerbatimAndNoShell()
    {
        QFETCH(QString, text);
        const QString build = makeFile(text + u".apk"_s);
        adb().onAnything().prints("Success\n");
        scrcpy().onAnything().exits(0);
        selectPhone(device(text, u"device"_s, text));
        model->acceptAPK(QUrl::fromLocalFile(build));
        perform([this] { model->install(); });
        QCOMPARE(adb().commandLines(), QList({QStringList{u"-s"_s, text, u"install"_s, u"-r"_s, build}}));
        QVERIFY(build.startsWith(u'/'));

        const QString recording = scratch(text + u".mp4"_s);
        dialogs->locations = {recording};
        model->mirrorPhone(true);
        VERIFY_SOON(!model->mirrorRunning());
        QCOMPARE(scrcpy().commandLines(),
                 QList({QStringList{u"--serial"_s, text, u"--window-title"_s, u"Varda · "_s + text, u"--max-size"_s,
                                    u"1920"_s, u"--record"_s, recording}}));
        QVERIFY(!QFile::exists(u"planted"_s));
        QVERIFY(!QFile::exists(scratch(u"planted"_s)));
    }
};

QTEST_GUILESS_MAIN(SecurityTest)
#include "SecurityTest.moc"
