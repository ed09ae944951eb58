// The threads for blocking work, and when they end.
#include "VardaCore/WorkerThreads.h"

#include <QCoreApplication>
#include <QTest>

#include <chrono>
#include <future>
#include <optional>
#include <thread>

using namespace std::chrono_literals;
using namespace varda;

class WorkerThreadsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endBeforeTheApplicationObjectDoes()
    {
        int argc = 0;
        std::optional<QCoreApplication> application(std::in_place, argc, nullptr);
        bool done = false;
        bool told = false;
        WorkerThreads threads(1, [&] { told = done; });
        std::promise<void> begun;
        threads.start([&] {
            begun.set_value();
            std::this_thread::sleep_for(200ms); // a slow disk
            done = QCoreApplication::instance() != nullptr;
        });
        begun.get_future().wait();
        application.reset();
        QVERIFY(told);
    }

    void doNothingAfterTheirEnd()
    {
        int ends = 0;
        bool done = false;
        {
            WorkerThreads threads(1, [&] { ++ends; });
            threads.end();
            threads.start([&] { done = true; });
        }
        QCOMPARE(ends, 1);
        QVERIFY(!done);
    }
};

QTEST_APPLESS_MAIN(WorkerThreadsTest)
#include "WorkerThreadsTest.moc"
