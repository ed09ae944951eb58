// The poll loop in time that is skipped: how long its pause is, that no failure ends it, and that its timer is not
// destroyed inside the timer's own event.
#include "Interposition.h"
#include "Support/ModelTest.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <new>
#include <vector>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace varda::test;

namespace {

/// Remembers the timers that were destroyed inside their own events.
class WatchingApplication : public QCoreApplication
{
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        const bool timer = receiver->inherits("QTimer");
        const QPointer<QObject> watched = receiver;
        const bool handled = QCoreApplication::notify(receiver, event);
        timersDestroyed += timer && !watched ? 1 : 0;
        return handled;
    }

    int timersDestroyed = 0;
};

} // namespace

/// Without adb a tick is one write of the status, and takes no time of its own.
class PollLoopTest : public ModelTest
{
    Q_OBJECT

private:
    using Times = std::vector<std::chrono::steady_clock::time_point>;

    /// Waits for so many ticks from now on, a minute at most, and calls `inTick` in each; tells when they were.
    Times ticks(
        std::size_t count, const std::function<void()> &inTick = [] {})
    {
        Times times;
        QEventLoop loop;
        QObject::connect(model.get(), &varda::VardaModel::objectWillChange, &loop, [&] {
            times.push_back(std::chrono::steady_clock::now());
            if (times.size() == count)
                loop.quit();
            inTick();
        });
        QTimer::singleShot(1min, &loop, &QEventLoop::quit);
        QFile::remove(adb().path());
        loop.exec();
        return times;
    }

    /// In real time: until a worker has launched a child, this process seems to be idle.
    static void settleInRealTime()
    {
        skipIdleTime(false);
        settle();
        skipIdleTime(true);
    }

private Q_SLOTS:
    void initTestCase() { skipIdleTime(true); }

    void pauseIsNeverShorterThanTwoAndAHalfSeconds()
    {
        for (int i = 0; i < 20; ++i) {
            model->start();
            const Times times = ticks(2);
            model->stop();
            QCOMPARE(times.size(), std::size_t(2));
            const std::chrono::duration<double, std::milli> pause = times[1] - times[0];
            QVERIFY2(pause >= 2500ms, qPrintable(QString::number(pause.count()) + u" ms"));
            skipTime(83ms); // a timer that keeps to round times is early at some of them
        }
    }

    void failureInATickDoesNotEndTheLoop()
    {
        model->start();
        QCOMPARE(ticks(3, [] { throw std::bad_alloc(); }).size(), std::size_t(3));
    }

    void timerIsNotDestroyedInItsOwnEvent()
    {
        auto *application = static_cast<WatchingApplication *>(qApp);
        application->timersDestroyed = 0;
        model->start();
        ticks(1);
        model->stop(); // in the pause
        settleInRealTime();
        model->start();
        ticks(1, [this] { model->stop(); });
        settleInRealTime();
        QCOMPARE(application->timersDestroyed, 0);
    }
};

int main(int argc, char *argv[])
{
    WatchingApplication application(argc, argv);
    PollLoopTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "PollLoopTest.moc"
