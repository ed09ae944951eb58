// The real scrcpy client against the simulated phone, on a virtual display: what it shows, sends and records.
#include "Support/AdbServer.h"
#include "Support/MirrorWindow.h"
#include "VirtualPhone.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::VirtualPhone;

namespace {

constexpr int guard = 10'000; // milliseconds
constexpr QSize windowSize(360, 800);

} // namespace

class ScrcpyClientTest : public QObject
{
    Q_OBJECT

private:
    void startMirror(const QStringList &arguments = {})
    {
        m_mirror = std::make_unique<QProcess>();
        QProcessEnvironment environment = m_adb->environment();
        environment.insert(u"ADB"_s, QStringLiteral(ADB_PROGRAM));
        environment.insert(u"SCRCPY_SERVER_PATH"_s, m_server);
        m_mirror->setProcessEnvironment(environment);
        m_mirror->setProcessChannelMode(QProcess::MergedChannels);
        m_mirror->start(QStringLiteral(SCRCPY_PROGRAM),
                        QStringList{u"--serial"_s, m_phone->serial(), u"--window-title"_s, m_title, u"--max-size"_s,
                                    u"1920"_s, u"--window-width"_s, QString::number(windowSize.width()),
                                    u"--window-height"_s, QString::number(windowSize.height())} +
                            arguments,
                        QIODevice::ReadOnly);
    }

    /// The decoded control messages of that type which the phone has got.
    QList<QJsonObject> controls(const QString &type)
    {
        QList<QJsonObject> result;
        for (const QJsonObject &record : m_phone->log()) {
            if (record.value(u"event"_s) == u"control"_s && record.value(u"type"_s) == type)
                result.append(record);
        }
        return result;
    }

    bool isShown() const { return m_mirror->state() != QProcess::NotRunning && mirrorShowsPhone(); }

    /// Whether scrcpy ends with the exit status `wanted` within the guard's time.
    bool endsWith(int wanted)
    {
        if (!m_mirror->waitForFinished(guard) || m_mirror->exitStatus() != QProcess::NormalExit)
            return false;
        const QByteArray messages = m_mirror->peek(m_mirror->bytesAvailable());
        return isScrcpyStatus(m_mirror->exitCode(), wanted, messages);
    }

    bool stops()
    {
        m_mirror->terminate();
        return endsWith(0);
    }

    /// What both sides know of a test that failed.
    void explain()
    {
        qInfo("scrcpy said: %s", m_mirror->readAll().constData());
        if (m_mirror->state() == QProcess::NotRunning)
            qInfo("scrcpy ended %s %d", m_mirror->exitStatus() == QProcess::CrashExit ? "by signal" : "with status",
                  m_mirror->exitCode());
        for (const QJsonObject &record : m_phone->log())
            qInfo("%s", QJsonDocument(record).toJson(QJsonDocument::Compact).constData());
    }

    std::optional<AdbServer> m_adb;
    std::optional<VirtualPhone> m_phone;
    std::unique_ptr<QProcess> m_mirror;
    QString m_server;
    const QString m_title = u"Varda · Pixel 8"_s;

private Q_SLOTS:
    void initTestCase()
    {
        m_adb.emplace(QStringLiteral(ADB_PROGRAM));
        if (!m_adb->isAvailable())
            QSKIP("there is no adb at " ADB_PROGRAM "; Scripts/stage-tools puts it there");
        if (!QFileInfo(QStringLiteral(SCRCPY_PROGRAM)).isExecutable())
            QSKIP("there is no scrcpy at " SCRCPY_PROGRAM "; Scripts/stage-tools puts it there");
        if (const QString tool = missingMirrorTool(); !tool.isEmpty())
            QSKIP(qPrintable(tool + u" is not installed"_s));
        // The simulated phone plays the server itself: what is pushed may be anything.
        m_server = m_adb->folder() + u"/scrcpy-server"_s;
        QFile server(m_server);
        QVERIFY(server.open(QIODevice::WriteOnly));
        server.write("in place of scrcpy's server");
    }

    void init()
    {
        m_phone.emplace();
        QCOMPARE(m_phone->errorString(), QString());
        QVERIFY(m_adb->run({u"connect"_s, m_phone->endpoint()}).output.contains("connected to"));
    }

    void cleanup()
    {
        if (QTest::currentTestFailed() && m_mirror)
            explain();
        if (m_mirror) {
            m_mirror->kill();
            m_mirror->waitForFinished();
        }
        m_mirror.reset();
        m_adb->run({u"disconnect"_s});
        m_phone.reset();
    }

    void showsAMovingPicture()
    {
        startMirror();
        QTRY_VERIFY_WITH_TIMEOUT(isShown(), guard);
        const QImage first = pictureOf(mirrorWindow());
        QCOMPARE(first.size(), windowSize);
        QTRY_VERIFY_WITH_TIMEOUT(pictureOf(mirrorWindow()) != first, guard);
        QVERIFY(stops());
        QTRY_VERIFY(!m_phone->closed(u"app_process"_s).isEmpty());
    }

    void showsWhereThePersonClicked()
    {
        startMirror();
        QTRY_VERIFY_WITH_TIMEOUT(isShown(), guard);
        // The middle of the left half, where nothing else is painted in red.
        QVERIFY(outputOf(u"xdotool"_s,
                         {u"mousemove"_s, u"--window"_s, mirrorWindow(), u"90"_s, u"200"_s, u"click"_s, u"1"_s}));
        QTRY_VERIFY_WITH_TIMEOUT(controls(u"touch"_s).size() >= 2, guard);
        const QJsonObject release = controls(u"touch"_s).last();
        QCOMPARE(release.value(u"action"_s).toInt(), 1);
        QVERIFY(qAbs(release.value(u"x"_s).toInt() - 180) <= 4);
        QVERIFY(qAbs(release.value(u"y"_s).toInt() - 400) <= 4);
        const auto isDot = [&] {
            const QColor colour = pictureOf(mirrorWindow()).pixelColor(90, 200);
            return colour.red() > 120 && colour.green() < 100 && colour.blue() < 100;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isDot(), guard);
    }

    void forwardsTheKeyboard()
    {
        startMirror();
        QTRY_VERIFY_WITH_TIMEOUT(isShown(), guard);
        QVERIFY(outputOf(u"xdotool"_s, {u"windowfocus"_s, u"--sync"_s, mirrorWindow(), u"type"_s, u"hallo 7"_s}));
        QTRY_VERIFY_WITH_TIMEOUT(m_phone->command(u"status"_s).contains(u"\"typed\":\"hallo 7\""_s), guard);
    }

    void leavesAPlayableRecording()
    {
        const QString path = m_adb->folder() + u"/Aufnahme ü.mp4"_s;
        startMirror({u"--record"_s, path});
        QTRY_VERIFY_WITH_TIMEOUT(isShown(), guard);
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY_WITH_TIMEOUT(clock.elapsed() >= 2'000, guard); // the length to be recorded
        QVERIFY(stops());
        const QJsonObject report = probeRecording(path);
        const QJsonObject stream = report.value(u"streams"_s).toArray().first().toObject();
        QCOMPARE(stream.value(u"codec_name"_s), QJsonValue(u"h264"_s));
        QCOMPARE(stream.value(u"width"_s).toInt(), 720);
        QCOMPARE(stream.value(u"height"_s).toInt(), 1600);
        const double duration = report.value(u"format"_s).toObject().value(u"duration"_s).toString().toDouble();
        QVERIFY2(duration >= 1.8, qPrintable(QString::number(duration)));
        QVERIFY(stream.value(u"nb_read_frames"_s).toString().toInt() > 5);
    }

    void endsWithStatus2WhenThePhoneVanishes()
    {
        startMirror();
        QTRY_VERIFY_WITH_TIMEOUT(isShown(), guard);
        QCOMPARE(m_phone->command(u"drop"_s), u"ok 1"_s);
        QVERIFY(endsWith(2));
    }

    void worksThroughAForwardTunnel()
    {
        startMirror({u"--force-adb-forward"_s});
        QTRY_VERIFY_WITH_TIMEOUT(isShown(), guard);
        QVERIFY(stops());
    }

    void waitsForAServerThatNeverConnects()
    {
        QCOMPARE(m_phone->command(u"on app_process hang"_s), u"ok"_s);
        startMirror();
        QTRY_VERIFY_WITH_TIMEOUT(m_phone->log().last().value(u"service"_s).toString().contains(u"app_process"_s),
                                 guard);
        QVERIFY(stops());
    }

    void failsWhenTheServerDoesNotStart()
    {
        QCOMPARE(m_phone->command(u"on app_process exit 1"_s), u"ok"_s);
        startMirror();
        QVERIFY(endsWith(1));
    }
};

QTEST_GUILESS_MAIN(ScrcpyClientTest)

#include "ScrcpyClientTest.moc"
