// The one protocol of every action: busy, the working text, the outcome or the failure, and the order of these writes.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QFile>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>
#include <new>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QStringList forceStop = forceStopLine(u"R58M42ABCDE"_s, u"com.example.app"_s);
const QStringList connecting{u"connect"_s, u"10.0.0.7:5555"_s};
const QString stopping = u"Stopping app…"_s;

} // namespace

class ActionRunnerTest : public ModelTest
{
    Q_OBJECT

private:
    void selectPhoneAndApp()
    {
        model->packageName = u"com.example.app"_s;
        model->connectEndpoint = u"10.0.0.7:5555"_s;
        model->pairingEndpoint = u"10.0.0.7:37123"_s;
        model->pairingCode = u"123456"_s;
        model->apk = QUrl::fromLocalFile(makeFile(u"demo.apk"_s));
        dialogs->locations = {scratch(u"shot.png"_s)};
        selectPhone();
    }

    /// Everything that a user can do and that goes through the protocol, by the working text that it shows.
    std::map<QString, std::function<void()>> actions();

private Q_SLOTS:
    void showsTheWorkingTextAtOnceAndTheOutcomeAtTheEnd()
    {
        selectPhoneAndApp();
        adb().on(forceStop).waitsFor(u"go"_s);
        model->appAction(false);
        QCOMPARE(writes->take(), QStringList({u"busy=true"_s, u"status="_s + stopping}));
        QVERIFY(called(adb(), forceStop));
        settle();
        QCOMPARE(writes->take(), QStringList());
        letGo();
        QCOMPARE(writes->take(), QStringList({u"status=Stopped com.example.app on R58M42ABCDE."_s, u"busy=false"_s}));
    }

    void successKeepsAnEarlierError()
    {
        selectPhoneAndApp();
        adb().on(forceStop);
        adb().on(forceStop).complains("no").exits(1).once();
        perform([this] { model->appAction(false); });
        writes->take();
        perform([this] { model->appAction(false); });
        QCOMPARE(writes->take(), success(stopping, u"Stopped com.example.app on R58M42ABCDE."_s));
        QCOMPARE(model->error(), std::optional(u"no"_s));
    }

    void failureWithoutWordsIsStillAnError()
    {
        selectPhoneAndApp();
        adb().on(connecting).exits(1);
        perform([this] { model->connect(); });
        QCOMPARE(model->error(), std::optional(QString()));
        QCOMPARE(model->status(), u"Connecting over Wi-Fi… failed."_s);
    }

    void failureInsideAFailureLeavesTheModelFree_data()
    {
        QTest::addColumn<int>("write");
        QTest::newRow("no memory for the working text") << 2;
        QTest::newRow("no memory for the error") << 3;
        QTest::newRow("no memory for the status") << 4;
    }
    void failureInsideAFailureLeavesTheModelFree()
    {
        QFETCH(int, write);
        selectPhoneAndApp();
        adb().on(forceStop);
        adb().on(forceStop).exits(1).once();
        QObject context;
        QObject::connect(model.get(), &varda::VardaModel::objectWillChange, &context, [&write] {
            if (--write == 0)
                throw std::bad_alloc();
        });
        try {
            model->appAction(false);
        } catch (const std::bad_alloc &) {
            adb().on(forceStop); // the failing run was not reached
        }
        COMPARE_SOON(model->busy(), false);
        QVERIFY(write <= 0);
        perform([this] { model->appAction(false); });
        QCOMPARE(model->status(), u"Stopped com.example.app on R58M42ABCDE."_s);
    }

    void actionBodyStartsOnTheNextTurnOfTheLoop()
    {
        selectPhoneAndApp();
        QVERIFY(QFile::remove(adb().path()));
        model->appAction(false);
        QVERIFY(model->busy());
        QCOMPARE(model->error(), std::nullopt);
        COMPARE_SOON(model->busy(), false);
    }

    void secondRequestIsDroppedWithoutATrace()
    {
        selectPhoneAndApp();
        adb().on(connecting).waitsFor(u"go"_s).complains("refused").exits(1);
        model->connect();
        writes->take();
        model->connect();
        QCOMPARE(writes->take(), QStringList());
        letGo();
        settle();
        QCOMPARE(adb().calls().size(), 1);
    }

    void nothingElseStartsWhileBusy_data()
    {
        QTest::addColumn<QString>("working");
        QTest::addColumn<QStringList>("traces");
        for (const auto &[working, start] : actions()) {
            // The code does not stay on the screen, whatever becomes of the request.
            const bool pairs = working.startsWith(u"Pairing");
            QTest::newRow(qUtf8Printable(working))
                << working << (pairs ? QStringList{u"pairingCode="_s} : QStringList());
        }
    }
    void nothingElseStartsWhileBusy()
    {
        QFETCH(QString, working);
        QFETCH(QStringList, traces);
        selectPhoneAndApp();
        adb().on(forceStop).waitsFor(u"go"_s);
        model->appAction(false);
        writes->take();
        actions().at(working)();
        QCOMPARE(writes->take(), traces);
        QCOMPARE(dialogs->saveQuestions.size(), 0);
        letGo();
        settle();
        QCOMPARE(adb().commandLines(), QList({forceStop}));
    }

    void everyActionShowsItsOwnTexts_data()
    {
        QTest::addColumn<QString>("working");
        for (const auto &[working, start] : actions())
            QTest::newRow(qUtf8Printable(working)) << working;
    }
    void everyActionShowsItsOwnTexts()
    {
        QFETCH(QString, working);
        selectPhoneAndApp();
        model->error = u"an earlier failure"_s;
        writes->take();
        adb().onAnything().complains("words of the tool\n").exits(7);
        perform(actions().at(working));
        QStringList expected = failure(working, u"words of the tool\n"_s);
        if (working.startsWith(u"Pairing"))
            expected.prepend(u"pairingCode="_s);
        QCOMPARE(writes->take(), expected);
    }

    void garbageIsNeverTakenForSuccess_data()
    {
        QTest::addColumn<QString>("working");
        for (const auto &[working, start] : actions()) {
            // A stop and a list have no word of success that garbage could lack.
            if (!working.startsWith(u"Stopping") && !working.startsWith(u"Reading"))
                QTest::newRow(qUtf8Printable(working)) << working;
        }
    }
    void garbageIsNeverTakenForSuccess()
    {
        QFETCH(QString, working);
        selectPhoneAndApp();
        QByteArray garbage;
        for (int i = 0; i < 100'000; ++i)
            garbage.append(static_cast<char>(i * 37 + i / 251));
        adb().onAnything().prints(garbage).complains(garbage);
        perform(actions().at(working));
        QCOMPARE(model->status(), working + u" failed.");
        QVERIFY(model->error());
        QVERIFY(model->error()->size() <= 6000);
        QVERIFY(!QFile::exists(scratch(u"shot.png"_s)));
    }

    void longComplaintIsCutToThreeThousandCharacters()
    {
        selectPhoneAndApp();
        adb().on(forceStop).complains(QByteArray("é").repeated(3001)).exits(1);
        perform([this] { model->appAction(false); });
        QCOMPARE(model->error(), std::optional(QString(u"é"_s).repeated(3000)));
    }

    void loopKeepsTurningWhileAnActionRuns()
    {
        selectPhoneAndApp();
        adb().on(forceStop).waitsFor(u"go"_s);
        model->appAction(false);
        QVERIFY(called(adb(), forceStop));
        int turns = 0;
        QTimer clock;
        QObject::connect(&clock, &QTimer::timeout, this, [&] { ++turns; });
        clock.start(1);
        VERIFY_SOON(turns > 20);
        QVERIFY(model->busy());
        letGo();
    }

    void stopLeavesTheActionRunning()
    {
        selectPhoneAndApp();
        adb().on(forceStop).waitsFor(u"go"_s);
        model->appAction(false);
        QVERIFY(called(adb(), forceStop));
        model->stop();
        QVERIFY(model->busy());
        tools->open(u"go"_s);
        COMPARE_SOON(model->status(), u"Stopped com.example.app on R58M42ABCDE."_s);
        QCOMPARE(model->busy(), false);
    }

    void modelOutlivesItsOwnersUntilTheActionEnds()
    {
        selectPhoneAndApp();
        adb().on(forceStop).waitsFor(u"go"_s);
        model->appAction(false);
        QVERIFY(called(adb(), forceStop));
        writes.reset();
        const std::weak_ptr<varda::VardaModel> watched = model;
        model.reset();
        QVERIFY(!watched.expired());
        tools->open(u"go"_s);
        VERIFY_SOON(watched.expired());
        QVERIFY(adb().calls().first().ended);
    }
};

std::map<QString, std::function<void()>> ActionRunnerTest::actions()
{
    return {
        {u"Installing demo.apk…"_s, [this] { model->install(); }},
        {u"Launching app…"_s, [this] { model->appAction(true); }},
        {u"Stopping app…"_s, [this] { model->appAction(false); }},
        {u"Capturing phone screenshot…"_s, [this] { model->screenshot(); }},
        {u"Reading installed apps…"_s, [this] { model->listApps(); }},
        {u"Pairing with your Android phone…"_s, [this] { model->pair(); }},
        {u"Connecting over Wi-Fi…"_s, [this] { model->connect(); }},
    };
}

QTEST_GUILESS_MAIN(ActionRunnerTest)
#include "ActionRunnerTest.moc"
