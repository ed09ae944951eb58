// Every fault meets every command of every action: the user learns of it where the action reports, nothing is left
// behind, and the next action works. The tables of docs/tables/faults.md are what this test has seen: when they differ
// it fails, and with UPDATE_DOCS=1 in its environment it writes them.
#include "ModelFaults.h"
#include "FaultTable.h"
#include "Interposition.h"
#include "Steps.h"

#include <QDir>
#include <QRegularExpression>

#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda;
using namespace varda::test;

namespace {

const QString before = u"before"_s; ///< the status when an action starts
const QString notRunning = u"This app is not running. Launch it to see its logs."_s;
const QString noDevice = u"No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s;
const QString findProcess = u"app console: find process"_s;

/// A path that differs from run to run, as the documentation shows it.
QString shortened(QString text)
{
    static const QRegularExpression capture(u"[^ ]*/varda-[0-9A-F-]{36}"_s);
    static const QRegularExpression tool(u"[^ ]*/(?=adb: |adb$)"_s);
    return text.replace(capture, u"…"_s).replace(tool, u"…/"_s);
}

QString quoted(QString text)
{
    text.replace(QChar::Null, u'␀').replace(u'\n', u'⏎');
    return text.isEmpty() ? u"empty"_s : u"“"_s + text + u"”"_s;
}

Outcome shortened(const Outcome &outcome)
{
    return {outcome.error ? std::optional(shortened(*outcome.error)) : std::nullopt, shortened(outcome.status),
            outcome.logs, outcome.logging};
}

Outcome failedOutcome(const Step &step, const QString &sentence, const Outcome &good)
{
    switch (step.report) {
    case Report::Alert:
        return {sentence, step.working + u" failed."_s, {}, false};
    case Report::StatusLine:
        return {std::nullopt, sentence, {}, false};
    case Report::Console:
        return {sentence, before, {}, false};
    default:
        return good;
    }
}

Outcome expectedOutcome(const Step &step, const ModelFault &fault, const Outcome &good)
{
    if (fault.exitStatusOnly && step.name == findProcess)
        return {std::nullopt, before, notRunning, true};
    return fault.sentence ? failedOutcome(step, *fault.sentence, good) : good;
}

/// What was seen, in the words of the documentation.
QString cell(const Step &step, const Outcome &seen, const Outcome &good, const std::optional<QString> &sentence)
{
    if (seen == good)
        return u"✓"_s;
    if (sentence && seen == failedOutcome(step, *sentence, good))
        return step.report == Report::StatusLine ? u"status"_s
               : step.report == Report::Console  ? u"alert, console off"_s
                                                 : u"alert"_s;
    if (seen.error)
        return u"alert: "_s + quoted(*seen.error);
    return seen.logs.isEmpty() ? u"status: "_s + quoted(seen.status) : u"console: "_s + quoted(seen.logs);
}

/// For QCOMPARE, which then shows how two outcomes differ.
QString shown(const Outcome &outcome)
{
    return u"error: %1; status: %2; logs: %3; logging: %4"_s.arg(outcome.error.value_or(u"absent"_s), outcome.status,
                                                                 outcome.logs, outcome.logging ? u"on"_s : u"off"_s);
}

} // namespace

class ModelFaultsTest : public ModelTest
{
    Q_OBJECT

private:
    Outcome perform(const Step &step, const std::function<void()> &meanwhile)
    {
        model->status = before;
        selectPhone();
        step.start(*model, *dialogs);
        for (int turn = 0; turn < 20000 && !m_steps.ended(*model); ++turn) {
            QTest::qWait(2);
            meanwhile();
        }
        Outcome outcome = outcomeOf(*model);
        model->error = std::nullopt;
        model->logs = QString();
        model->logging = false;
        return outcome;
    }

    /// What the step comes to when nothing goes wrong.
    Outcome goodOutcome(const Step &step)
    {
        QDir().mkpath(scratch(u"saved"_s));
        for (const Command &command : step.commands)
            adb().on(command.arguments).prints(command.answer);
        Outcome outcome = perform(step, [] {});
        if (outcome.error)
            QTest::qFail(qPrintable(*outcome.error), __FILE__, __LINE__);
        adb().forgetCalls();
        return outcome;
    }

    Outcome faultyOutcome(const Step &step, const ModelFault &fault)
    {
        fault.arrange(step, *tools);
        Outcome outcome = perform(step, [&] { fault.meanwhile(step, *tools); });
        if (clearFault() == 0 && fault.injected)
            QTest::qFail("The fault was not met.", __FILE__, __LINE__);
        return outcome;
    }

    void showNextActionWorks()
    {
        tools.reset();
        tools.emplace();
        QCOMPARE(goodOutcome(m_steps.named(u"stop app"_s)).status, u"Stopped com.example.app on R58M42ABCDE."_s);
    }

    Steps m_steps{serial, scratch(u"saved"_s)};
    const QList<ModelFault> m_faults = modelFaults();
    FaultTable m_faultTable{u"Fault"_s};
    FaultTable m_answerTable{u"Command"_s};
    int m_rowsSeen = 0;

private Q_SLOTS:
    void everyFaultOfEveryCommandIsTold_data()
    {
        QTest::addColumn<int>("faultIndex");
        QTest::addColumn<QString>("stepName");
        for (int i = 0; i < m_faults.size(); ++i) {
            for (const Step &step : m_steps.all()) {
                if (m_faults[i].concerns(step))
                    QTest::addRow("%s: %s", qUtf8Printable(m_faults[i].name), qUtf8Printable(step.name))
                        << i << step.name;
            }
        }
    }
    void everyFaultOfEveryCommandIsTold()
    {
        QFETCH(int, faultIndex);
        QFETCH(QString, stepName);
        const ModelFault &fault = m_faults[faultIndex];
        const Step &step = m_steps.named(stepName);
        const Outcome good = goodOutcome(step);
        const Outcome seen = shortened(faultyOutcome(step, fault));
        QCOMPARE(shown(seen), shown(expectedOutcome(step, fault, good)));
        QVERIFY(!model->busy());
        showNextActionWorks();
        m_faultTable.record(fault.name, u"Told as"_s, fault.sentence ? quoted(*fault.sentence) : u"–"_s);
        m_faultTable.record(fault.name, step.name, cell(step, seen, good, fault.sentence));
        ++m_rowsSeen;
    }

    void answerWithoutTheSuccessWordIsNoSuccess_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QString>("stepName");
        QTest::addColumn<QString>("told");
        const QString nothing;
        const QString garbage = u"\uFFFD\uFFFDgarbage"_s;
        const QString noActivity = u"alert: “No launchable activity found for com.example.app. Check that the APK is "
                                   "installed and includes a launcher activity.”"_s;
        const QString noScreenshot = u"alert: “The phone did not return a valid PNG screenshot.”"_s;
        const QString alertGarbage = u"alert: "_s + quoted(garbage);
        const QString consoleGarbage = u"console: "_s + quoted(garbage);
        const auto row = [](const QString &step, const QString &toldOfNothing, const QString &toldOfGarbage) {
            QTest::addRow("nothing: %s", qUtf8Printable(step)) << QByteArray() << step << toldOfNothing;
            QTest::addRow("garbage: %s", qUtf8Printable(step)) << "\xff\xfegarbage"_ba << step << toldOfGarbage;
        };
        row(u"list devices"_s, u"status: "_s + quoted(noDevice), u"status: "_s + quoted(noDevice));
        row(u"install"_s, u"alert: empty"_s, alertGarbage);
        row(u"launch: find activity"_s, noActivity, noActivity);
        row(u"launch: start activity"_s, u"✓"_s, u"✓"_s);
        row(u"stop app"_s, u"✓"_s, u"✓"_s);
        row(u"list apps"_s, u"console: empty"_s, consoleGarbage);
        row(u"screenshot"_s, noScreenshot, noScreenshot);
        row(u"pair"_s, u"alert: empty"_s, alertGarbage);
        row(u"connect"_s, u"alert: empty"_s, alertGarbage);
        row(u"connect: list devices"_s, u"✓"_s, u"✓"_s);
        row(u"console"_s, u"console: empty"_s, consoleGarbage);
        row(findProcess, u"console: "_s + quoted(notRunning), u"console: "_s + quoted(notRunning));
        row(u"app console: read log"_s, u"console: empty"_s, consoleGarbage);
    }
    void answerWithoutTheSuccessWordIsNoSuccess()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QString, stepName);
        QFETCH(QString, told);
        const Step &step = m_steps.named(stepName);
        const Outcome good = goodOutcome(step);
        const Outcome seen = faultyOutcome(step, answering(QString(), answer));
        QString shownCell = cell(step, seen, good, std::nullopt);
        if (!seen.error && seen.logs.isEmpty() && !good.logs.isEmpty())
            shownCell = u"console: empty"_s;
        QCOMPARE(shownCell, told);
        QCOMPARE(seen.status, seen.error ? step.working + u" failed."_s : seen.status);
        showNextActionWorks();
        m_answerTable.record(step.name, answer.isEmpty() ? u"Nothing, exit 0"_s : u"Garbage, exit 0"_s, told);
        ++m_rowsSeen;
    }

    void diskThatFillsUpWhileSavingIsTold_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("error");
        QTest::newRow("no descriptor") << Call::Open << EMFILE;
        QTest::newRow("no space") << Call::Write << ENOSPC;
        QTest::newRow("disk error") << Call::Write << EIO;
    }
    void diskThatFillsUpWhileSavingIsTold()
    {
        QFETCH(Call, call);
        QFETCH(int, error);
        const QString reason = QString::fromUtf8(strerror(error));
        QDir().mkpath(scratch(u"saved"_s));
        const QString path = scratch(u"saved/saved.txt"_s);
        dialogs->locations = {path};
        model->logs = u"text"_s;
        injectFault(call, error, 0, 100);
        model->exportLogs();
        QVERIFY(clearFault() > 0);
        QCOMPARE(model->error(), path + u": "_s + reason);
        QVERIFY(!QFile::exists(path));
        model->error = std::nullopt;

        const Step &step = m_steps.named(u"screenshot"_s);
        adb().on(step.command().arguments).prints(step.command().answer);
        // The command's own files come first: four are opened.
        injectFault(call, error, call == Call::Open ? 4 : 0, 100);
        const Outcome seen = perform(step, [] {});
        QVERIFY(clearFault() > 0);
        QCOMPARE(shown(seen), shown(failedOutcome(step, scratch(u"saved/saved.png"_s) + u": "_s + reason, Outcome())));
        QVERIFY(!QFile::exists(scratch(u"saved/saved.png"_s)));
        showNextActionWorks();
    }

    void mirrorThatCannotBeLaunchedIsTold()
    {
        selectPhone();
        const QString status = model->status();
        injectFault(Call::Spawn, EAGAIN);
        model->mirrorPhone(false);
        QCOMPARE(clearFault(), 1);
        QCOMPARE(model->error(), scrcpy().path() + u": Resource temporarily unavailable"_s);
        QVERIFY(!model->mirrorRunning());
        QCOMPARE(model->status(), status);
        scrcpy().onAnything().exits(0);
        injectFault(Call::OpenPidfd, ENOSYS);
        model->mirrorPhone(false);
        QCOMPARE(clearFault(), 1);
        QVERIFY(model->mirrorRunning());
        VERIFY_SOON(!model->mirrorRunning());
    }

    void documentationShowsWhatWasSeen()
    {
        const QString path = QStringLiteral(DOCUMENTATION);
        if (m_rowsSeen < 300)
            QSKIP("Only a complete run can tell.");
        if (qEnvironmentVariableIsSet("UPDATE_DOCS")) {
            document(path, u"table of faults"_s, m_faultTable.markdown());
            document(path, u"table of answers"_s, m_answerTable.markdown());
        }
        QCOMPARE(documented(path, u"table of faults"_s), m_faultTable.markdown());
        QCOMPARE(documented(path, u"table of answers"_s), m_answerTable.markdown());
    }
};

QTEST_GUILESS_MAIN(ModelFaultsTest)
#include "ModelFaultsTest.moc"
