// Thousands of random gestures in random order and timing, held against a plain second account of the rules.
//
// What a tool answers is decided by what it is asked: a phone, a package, a build or an endpoint named "fail…" fails.
// So the account knows how each gesture must end, whatever happens meanwhile.
#include "Support/ModelTest.h"
#include "Support/Seeds.h"

#include <QCoroTask>
#include <QRandomGenerator>
#include <QScopeGuard>

#include <functional>
#include <list>
#include <map>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::AndroidDevice;

namespace {

const QString good = u"good-phone"_s;
const QString bad = u"fail-phone"_s; // lists no apps, gives no picture and no log, and its mirror ends with exit 1
const QString emulator = u"emulator-5554"_s;
const QString wireless = u"good:1"_s;
const QStringList phones{good, bad, emulator, wireless};
const QStringList packages{u"com.good.app"_s, u"com.fail.app"_s, u" com.good.app\n"_s, QString(), u"nonsense"_s};
const QStringList endpoints{u"good:1"_s, u"fail:1"_s, u"nonsense"_s};
const QString notRunning = u"This app is not running. Launch it to see its logs."_s;
const QString live = u"Live phone opened. Use your Mac keyboard and mouse to test the app."_s;
const QString recordingText = u"Recording the real device in the live phone window."_s;
const QString stoppedText = u"Screen control stopped (exit 1). Check USB authorization and reconnect the phone."_s;
const QByteArray complaint = "the tool's complaint";
const QByteArray picture("\x89PNG\r\n\x1a\nrest", 12);

QString text(const std::optional<QString> &value)
{
    return value.value_or(u"absent"_s);
}

/// A write as the recorder tells it.
QString written(const QString &name, const QString &before, const QString &after)
{
    return before == after ? u"same"_s : name + u'=' + after;
}

QString written(const QString &name, bool before, bool after)
{
    return before == after ? u"same"_s : name + (after ? u"=true" : u"=false");
}

/// The action in flight, as the account knows it.
struct Action
{
    QString working;
    std::optional<QString> outcome; ///< absent if it must fail
    QString error;                  ///< if it must fail
    QString console;                ///< what it puts there on success, where it does
};

} // namespace

class RandomGesturesTest : public ModelTest
{
    Q_OBJECT

private:
    using Writes = QStringList;

    void answerEverything()
    {
        using std::chrono::milliseconds;
        for (const QString &phone : phones) {
            const bool works = phone != bad;
            const auto onPhone = [&](const QStringList &arguments) { return QStringList{u"-s"_s, phone} + arguments; };
            const auto shell = [&](const QStringList &arguments) {
                return onPhone(QStringList{u"shell"_s} + arguments);
            };
            const QStringList log{u"logcat"_s, u"-d"_s, u"-t"_s, u"350"_s, u"-v"_s, u"threadtime"_s};
            const auto pause = milliseconds(phone == good ? 0 : phone == bad ? 3 : 7);
            adb().on(onPhone({u"install"_s, u"-r"_s, scratch(u"good.apk"_s)})).takes(pause).prints("Success\n");
            adb().on(onPhone({u"install"_s, u"-r"_s, scratch(u"fail.apk"_s)})).takes(pause).prints("Failure\n");
            for (const QString &package : {u"com.good.app"_s, u"com.fail.app"_s}) {
                const bool known = package.contains(u"good");
                const QByteArray component = known ? package.toUtf8() + "/.Main\n" : QByteArray();
                adb()
                    .on(shell({u"cmd"_s, u"package"_s, u"resolve-activity"_s, u"--brief"_s, u"-a"_s,
                               u"android.intent.action.MAIN"_s, u"-c"_s, u"android.intent.category.LAUNCHER"_s, u"-p"_s,
                               package}))
                    .prints(component);
                adb().on(shell({u"am"_s, u"start"_s, u"-W"_s, u"-n"_s, package + u"/.Main"})).takes(pause);
                adb().on(shell({u"am"_s, u"force-stop"_s, package})).prints(known ? "" : "Error: unknown\n");
                adb().on(shell({u"pidof"_s, package})).takes(pause).prints(known ? "77\n" : "");
            }
            adb()
                .on(shell({u"pm"_s, u"list"_s, u"packages"_s, u"-3"_s}))
                .prints("package:apps of " + phone.toUtf8())
                .complains(works ? QByteArray() : complaint)
                .exits(works ? 0 : 1);
            adb()
                .on(onPhone({u"exec-out"_s, u"screencap"_s, u"-p"_s}))
                .takes(pause)
                .prints(works ? picture : "no picture");
            for (const QStringList &filter : {QStringList(), QStringList{u"--pid"_s, u"77"_s}})
                adb().on(onPhone(log + filter)).takes(pause).prints("log of " + phone.toUtf8()).exits(works ? 0 : 1);
        }
        for (const QString &endpoint : endpoints) {
            const bool works = endpoint.startsWith(u"good");
            adb().on({u"pair"_s, endpoint}).prints(works ? "Successfully paired\n" : "no 123456 here\n");
            adb()
                .on({u"connect"_s, endpoint})
                .takes(milliseconds(2))
                .prints(works ? "connected to good:1\n" : "refused\n");
        }
        answerListing();
        for (const QString &phone : phones) {
            for (const QStringList &recording : {QStringList(), QStringList{u"--record"_s, scratch(u"a.mp4"_s)}}) {
                const QStringList arguments{u"--serial"_s,         phone,           u"--window-title"_s,
                                            u"Varda · "_s + phone, u"--max-size"_s, u"1920"_s};
                if (phone == good)
                    scrcpy().on(arguments + recording).hangs().exitsOnTermination(3);
                else
                    scrcpy().on(arguments + recording).takes(milliseconds(15)).exits(phone == bad ? 1 : 0);
            }
        }
    }

    void answerListing()
    {
        static const QList<QByteArray> listings{
            "good-phone device\nfail-phone device\nemulator-5554 device\ngood:1 device\n",
            "good:1 device\nemulator-5554 device\nfail-phone device\ngood-phone device\n",
            "emulator-5554 device\ngood-phone unauthorized\nfail-phone device\n",
            "emulator-5554 device\n",
            "",
        };
        if (++m_listings > 60)
            return; // each answer is one more rule to look through
        adb()
            .on({u"devices"_s, u"-l"_s})
            .takes(std::chrono::milliseconds(m_random.bounded(6)))
            .prints("List of devices attached\n" + listings[m_random.bounded(listings.size())]);
    }

    bool oneIn(int count) { return m_random.bounded(count) == 0; }
    QString anyOf(const QStringList &texts) { return texts[m_random.bounded(texts.size())]; }

    std::optional<QString> target() const
    {
        if (!model->selectedID() || model->busy())
            return std::nullopt;
        for (const AndroidDevice &each : model->devices()) {
            if (each.id == *model->selectedID())
                return each.state == u"device" ? std::optional(each.id) : std::nullopt;
        }
        return std::nullopt;
    }

    /// What an action of these texts writes when it begins.
    Writes begin(const QString &working, bool succeeds, const QString &outcome, const QString &error)
    {
        m_action = {working, succeeds ? std::optional(outcome) : std::nullopt, error, {}};
        return {u"busy=true"_s, written(u"status"_s, model->status(), working)};
    }

    Writes select()
    {
        const std::optional<QString> before = model->selectedID();
        const std::optional<QString> after = oneIn(6) ? std::nullopt : std::optional(anyOf(phones));
        Writes expected{written(u"selectedID"_s, text(before), text(after))};
        if (before != after)
            expected << written(u"logging"_s, model->logging(), false) << written(u"logs"_s, model->logs(), QString());
        model->selectedID = after;
        return expected;
    }

    Writes toggleConsole()
    {
        const bool on = !model->logging();
        model->logging = on;
        return {u"logging="_s + (on ? u"true" : u"false")};
    }

    Writes type()
    {
        const QString before = model->packageName();
        const QString after = anyOf(packages);
        model->packageName = after;
        return {written(u"packageName"_s, before, after)};
    }

    Writes acceptBuild()
    {
        const QString name = anyOf({u"good.apk"_s, u"fail.apk"_s, u"bundle.aab"_s});
        const QUrl location = QUrl::fromLocalFile(scratch(name));
        const QString before = model->apk() ? model->apk()->toString() : u"absent"_s;
        const QString refusal =
            u"Choose a regular .apk file. Android App Bundles (.aab) need to be converted into APKs first."_s;
        const Writes expected{name.endsWith(u".apk") ? written(u"apk"_s, before, location.toString())
                                                     : written(u"error"_s, text(model->error()), refusal)};
        model->acceptAPK(location);
        return expected;
    }

    Writes install()
    {
        Writes expected;
        if (const auto phone = target(); phone && model->apk()) {
            const QString name = model->apk()->fileName();
            expected =
                begin(u"Installing "_s + name + u"…", name == u"good.apk",
                      u"Installed good.apk on "_s + *phone + u". Existing app data was retained.", u"Failure\n"_s);
        }
        model->install();
        return expected;
    }

    Writes appAction()
    {
        const bool launches = oneIn(2);
        const QString package = model->packageName().trimmed();
        Writes expected;
        if (const auto phone = target()) {
            const QString noActivity = u"No launchable activity found for "_s + package +
                                       u". Check that the APK is installed and includes a launcher activity.";
            if (package.isEmpty() || package == u"nonsense")
                expected = {written(u"error"_s, text(model->error()),
                                    u"Enter an Android package ID such as com.example.myapp."_s)};
            else
                expected = begin(launches ? u"Launching app…"_s : u"Stopping app…"_s, package == u"com.good.app",
                                 (launches ? u"Launched "_s : u"Stopped "_s) + package + u" on " + *phone + u'.',
                                 launches ? noActivity : u"Error: unknown\n"_s);
        }
        model->appAction(launches);
        return expected;
    }

    Writes listApps()
    {
        Writes expected;
        if (const auto phone = target()) {
            expected = begin(u"Reading installed apps…"_s, *phone != bad,
                             u"User-installed package IDs are shown in the console."_s, QString::fromUtf8(complaint));
            m_action->console = u"apps of "_s + *phone;
        }
        model->listApps();
        return expected;
    }

    Writes screenshot()
    {
        const bool cancels = oneIn(3);
        dialogs->locations = {cancels ? std::nullopt : std::optional(scratch(u"shot.png"_s))};
        Writes expected;
        if (const auto phone = target(); phone && !cancels) {
            expected = begin(u"Capturing phone screenshot…"_s, *phone != bad, u"Screenshot saved to shot.png."_s,
                             u"The phone did not return a valid PNG screenshot."_s);
        }
        model->screenshot();
        return expected;
    }

    Writes pair()
    {
        const QString endpoint = anyOf(endpoints);
        model->pairingEndpoint = endpoint;
        model->pairingCode = oneIn(5) ? u"12345"_s : u"123456"_s;
        writes->take();
        Writes expected;
        if (endpoint == u"nonsense" || model->pairingCode().size() != 6) {
            expected = {
                written(u"error"_s, text(model->error()),
                        u"Use the pairing IP:port and six-digit code shown in Android Wireless debugging → Pair with "
                        "pairing code."_s)};
        } else {
            expected = {u"pairingCode="_s};
            if (!model->busy())
                expected +=
                    begin(u"Pairing with your Android phone…"_s, endpoint.startsWith(u"good"),
                          u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s,
                          u"no [redacted] here\n"_s);
        }
        model->pair();
        return expected;
    }

    Writes connectPhone()
    {
        const QString endpoint = anyOf(endpoints);
        model->connectEndpoint = endpoint;
        writes->take();
        Writes expected;
        if (endpoint == u"nonsense") {
            expected = {written(u"error"_s, text(model->error()),
                                u"Enter the phone’s wireless connection address in host:port format."_s)};
        } else if (!model->busy()) {
            expected = begin(u"Connecting over Wi-Fi…"_s, endpoint.startsWith(u"good"), u"connected to good:1"_s,
                             u"refused\n"_s);
        }
        model->connect();
        return expected;
    }

    Writes mirrorPhone()
    {
        const bool records = oneIn(2);
        const bool cancels = oneIn(3);
        dialogs->locations = {cancels ? std::nullopt : std::optional(scratch(u"a.mp4"_s))};
        Writes expected;
        if (m_mirrored) {
            m_mirrorAsked = true;
        } else if (const auto phone = target(); phone && !(records && cancels)) {
            m_mirrored = phone;
            expected = {u"mirrorRunning=true"_s, written(u"status"_s, model->status(), records ? recordingText : live)};
        }
        model->mirrorPhone(records);
        return expected;
    }

    Writes dismissError()
    {
        const Writes expected{written(u"error"_s, text(model->error()), u"absent"_s)};
        model->error = std::nullopt;
        return expected;
    }

    Writes refreshNow()
    {
        m_inFlight.push_back(model->refresh());
        return {};
    }

    /// As a tick would, only more often.
    Writes readNow()
    {
        Writes expected;
        if (model->busy() || !model->logging())
            return expected;
        const QString package = model->packageName().trimmed();
        if (!target())
            expected = {u"logging=false"_s};
        else if (package == u"nonsense")
            expected = {u"logging=false"_s,
                        written(u"error"_s, text(model->error()),
                                u"Enter a valid package ID or leave it blank for device-wide logs."_s)};
        m_inFlight.push_back(model->readLogs());
        return expected;
    }

    /// Looks at what happened by itself since the last gesture.
    void followUp()
    {
        const QStringList happened = writes->take();
        m_history += happened;
        const QString trouble = judge(happened);
        QVERIFY2(trouble.isEmpty(),
                 qUtf8Printable(trouble + u"\n  " + m_history.mid(m_history.size() - 40).join(u"\n  ")));
        QCOMPARE(model->busy(), m_action.has_value());
        QCOMPARE(model->mirrorRunning(), m_mirrored.has_value());
        // A console never shows another phone's log.
        if (model->logs().startsWith(u"log of "))
            QCOMPARE(model->logs(), u"log of "_s + text(model->selectedID()));
        m_inFlight.remove_if([](const QCoro::Task<> &task) { return task.isReady(); });
    }

    QString judge(const QStringList &happened)
    {
        for (qsizetype i = 0; i < happened.size(); ++i) {
            const QString &write = happened[i];
            if (write == u"busy=true" || write == u"logging=true" || write == u"mirrorRunning=true")
                return u"nobody asked for this: "_s + write;
            if (write == u"busy=false") {
                if (const QString trouble = judgeEnd(happened, i); !trouble.isEmpty())
                    return trouble;
            } else if (write.startsWith(u"selectedID=")) {
                const bool off = happened.value(i + 1) == u"same" || happened.value(i + 1) == u"logging=false";
                const bool emptied = happened.value(i + 2) == u"same" || happened.value(i + 2) == u"logs=";
                if (!off || !emptied)
                    return u"a changed selection kept its console"_s;
            } else if (write == u"mirrorRunning=false") {
                const bool reported = happened.value(i + 1).startsWith(u"error=Screen control stopped (exit ");
                const bool again = happened.value(i + 1) == u"same";
                const bool due = m_mirrored == bad && !m_mirrorAsked;
                const bool exact = !reported || happened.value(i + 1) == u"error="_s + stoppedText;
                if (!m_mirrored || !exact || (due && !reported && !again) || (!due && reported))
                    return u"wrong end of the mirror of "_s + text(m_mirrored);
                ++m_ended[u"mirror of "_s + text(m_mirrored) + (m_mirrorAsked ? u", asked" : u"")];
                m_mirrored.reset();
                m_mirrorAsked = false;
            } else if (write.startsWith(u"error=Screen control stopped") &&
                       happened.value(i - 1) != u"mirrorRunning=false") {
                return u"the mirror's end was reported at another time"_s;
            } else if (write.startsWith(u"UNANNOUNCED") || write.contains(u" AND ")) {
                return u"an unannounced write: "_s + write;
            }
        }
        return {};
    }

    /// The action's end must be written as one piece: outcome and busy, or error, status and busy.
    QString judgeEnd(const QStringList &happened, qsizetype end)
    {
        if (!m_action)
            return u"busy was released without an action"_s;
        const Action action = *std::exchange(m_action, std::nullopt);
        ++m_ended[action.working + (action.outcome ? u" succeeds" : u" fails")];
        if (action.outcome) {
            if (happened.value(end - 1) != u"status="_s + *action.outcome)
                return u"expected the outcome "_s + *action.outcome;
            if (!action.console.isEmpty() && happened.value(end - 3) != u"logs="_s + action.console &&
                happened.value(end - 3) != u"same")
                return u"expected the console "_s + action.console;
            return {};
        }
        if (happened.value(end - 1) != u"status="_s + action.working + u" failed.")
            return u"expected the failure of "_s + action.working;
        const QString error = happened.value(end - 2);
        return error == u"error="_s + action.error || error == u"same" ? QString()
                                                                       : u"expected the error "_s + action.error;
    }

    QRandomGenerator m_random;
    std::optional<Action> m_action;
    std::optional<QString> m_mirrored;
    bool m_mirrorAsked = false;
    std::list<QCoro::Task<>> m_inFlight;
    int m_listings = 0;
    QStringList m_history;
    std::map<QString, int> m_ended;

private Q_SLOTS:
    void modelFollowsTheRules_data() { addSeedRows(seedsFor(u"RandomGesturesTest"_s, 2)); }
    void modelFollowsTheRules()
    {
        QFETCH(quint32, seed);
        const auto atEnd = qScopeGuard([] { tellHowToReplay(u"RandomGesturesTest"_s); });
        m_random.seed(seed);
        m_listings = 0;
        m_history.clear();
        for (const QString &name : {u"good.apk"_s, u"fail.apk"_s, u"bundle.aab"_s})
            makeFile(name);
        answerEverything();
        model->devices = {device(good, u"device"_s, good), device(bad, u"device"_s, bad),
                          device(emulator, u"device"_s, emulator)};
        model->start();
        writes->take();

        using Gesture = Writes (RandomGesturesTest::*)();
        const std::vector<std::pair<QString, Gesture>> gestures{
            {u"select"_s, &RandomGesturesTest::select},
            {u"toggle the console"_s, &RandomGesturesTest::toggleConsole},
            {u"type"_s, &RandomGesturesTest::type},
            {u"accept a build"_s, &RandomGesturesTest::acceptBuild},
            {u"install"_s, &RandomGesturesTest::install},
            {u"launch or stop"_s, &RandomGesturesTest::appAction},
            {u"list"_s, &RandomGesturesTest::listApps},
            {u"screenshot"_s, &RandomGesturesTest::screenshot},
            {u"pair"_s, &RandomGesturesTest::pair},
            {u"connect"_s, &RandomGesturesTest::connectPhone},
            {u"mirror"_s, &RandomGesturesTest::mirrorPhone},
            {u"dismiss"_s, &RandomGesturesTest::dismissError},
            {u"refresh"_s, &RandomGesturesTest::refreshNow},
            {u"read"_s, &RandomGesturesTest::readNow},
            {u"read"_s, &RandomGesturesTest::readNow},
        };
        constexpr int count = 500;
        for (int i = 0; i < count && !QTest::currentTestFailed(); ++i) {
            const auto &[name, gesture] = gestures[static_cast<std::size_t>(m_random.bounded(int(gestures.size())))];
            const QStringList expected = (this->*gesture)();
            const QStringList happened = writes->take();
            m_history += u"-- "_s + name;
            m_history += happened;
            QVERIFY2(happened == expected, qUtf8Printable(u"expected "_s + expected.join(u", ") + u"\n  " +
                                                          m_history.mid(m_history.size() - 40).join(u"\n  ")));
            if (oneIn(20))
                answerListing();
            if (oneIn(2))
                QTest::qWait(m_random.bounded(12));
            if (oneIn(8)) // or most gestures would find the model busy
                VERIFY_SOON(!model->busy());
            followUp();
        }
        if (QTest::currentTestFailed())
            return;
        if (m_mirrored)
            QCOMPARE(mirrorPhone(), Writes());
        VERIFY_SOON(!model->busy() && !model->mirrorRunning());
        for (QCoro::Task<> &task : m_inFlight)
            QCoro::waitFor(task);
        m_inFlight.clear();
        followUp();
        QString summary;
        for (const auto &[what, times] : std::exchange(m_ended, {}))
            summary += u"\n  "_s + what + u": " + QString::number(times);
        qInfo().noquote() << count << "gestures; ended:" << summary;
    }
};

QTEST_GUILESS_MAIN(RandomGesturesTest)
#include "RandomGesturesTest.moc"
