// Several pieces of work at once, and a model that goes away in the middle of it.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QCoroTask>
#include <QFile>

#include <memory>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::VardaModel;

namespace {

const QStringList listing = listingLine();

QStringList forceStopOn(const QString &serial)
{
    return forceStopLine(serial, u"com.example.app"_s);
}

} // namespace

class InterleavingTest : public ModelTest
{
    Q_OBJECT

private Q_SLOTS:
    void modelReleasedDuringAReadOrARefreshEndsWithIt_data()
    {
        QTest::addColumn<QStringList>("command");
        QTest::newRow("read") << logLine(serial);
        QTest::newRow("refresh") << listing;
    }
    void modelReleasedDuringAReadOrARefreshEndsWithIt()
    {
        QFETCH(QStringList, command);
        selectPhone();
        adb().on(command).waitsFor(u"go"_s).prints("List of devices attached\nA\tdevice\n");
        auto working = command == listing ? model->refresh() : model->readLogs();
        QVERIFY(called(adb(), command));
        const std::weak_ptr<VardaModel> watched = model;
        writes.reset();
        model.reset();
        QVERIFY(!watched.expired());
        tools->open(u"go"_s);
        QCoro::waitFor(working);
        VERIFY_SOON(watched.expired());
    }

    void abandonedWorkStillLeavesNothing()
    {
        // The tasks are dropped as the poll loop of a program that ends would drop them.
        adb().on(listing).waitsFor(u"go"_s).complains("late").exits(1);
        adb().on(logLine(serial)).waitsFor(u"go"_s).complains("late").exits(1);
        selectPhone();
        {
            const auto dropped = model->refresh();
            const auto droppedToo = model->readLogs();
        }
        QVERIFY(called(adb(), listing));
        QVERIFY(called(adb(), logLine(serial)));
        tools->open(u"go"_s);
        COMPARE_SOON(model->error(), std::optional(u"late"_s));
        COMPARE_SOON(model->status(), u"late"_s);
    }

    void refreshDuringAnActionLeavesItsTextsAlone()
    {
        selectPhone();
        model->packageName = u"com.example.app"_s;
        adb().on(forceStopOn(serial)).waitsFor(u"go"_s);
        adb().on(listing).prints("List of devices attached\n" + serial.toUtf8() + "\tdevice model:Pixel_7\n");
        model->appAction(false);
        QVERIFY(called(adb(), forceStopOn(serial)));
        writes->take();
        QCoro::waitFor(model->refresh());
        QCOMPARE(writes->take(), QStringList({u"same"_s}));
        QCOMPARE(model->status(), u"Stopping app…"_s);
        QVERIFY(model->busy());
        letGo();
    }

    void readDuringAnActionLeavesItsTextsAlone()
    {
        selectPhone();
        model->packageName = u"com.example.app"_s;
        adb().on(forceStopOn(serial)).waitsFor(u"go"_s);
        adb().on(logLine(serial)).waitsFor(u"log"_s).prints("late\n");
        model->logging = true;
        model->packageName = QString();
        auto reading = model->readLogs(); // begun by a tick before the action
        QVERIFY(called(adb(), logLine(serial)));
        model->packageName = u"com.example.app"_s;
        model->appAction(false);
        writes->take();
        tools->open(u"log"_s);
        QCoro::waitFor(reading);
        QCOMPARE(writes->take(), QStringList({u"logs=late\n"_s}));
        letGo();
        QCOMPARE(model->logs(), u"late\n"_s);
    }

    void listingDuringAConnectionMayEndInAnyOrder()
    {
        const QString endpoint = u"10.0.0.7:5555"_s;
        selectPhone();
        adb().on({u"connect"_s, endpoint}).prints("connected to 10.0.0.7:5555\n");
        adb().on(listing).prints("List of devices attached\n10.0.0.7:5555\tdevice\n");
        adb().on(listing).waitsFor(u"stale"_s).prints("List of devices attached\nR58M42ABCDE\tdevice\n").once();
        auto stale = model->refresh();
        QVERIFY(called(adb(), listing));
        model->connectEndpoint = endpoint;
        perform([this] { model->connect(); });
        QCOMPARE(model->selectedID(), std::optional(endpoint));
        QVERIFY(model->selected());
        tools->open(u"stale"_s);
        QCoro::waitFor(stale);
        // The later finisher's list stands until the next tick; the selection survives it.
        QCOMPARE(model->selectedID(), std::optional(endpoint));
        QCOMPARE(model->selected(), std::nullopt);
    }

    void readsThatOverlapEachPublishTheirOwn()
    {
        selectPhone();
        adb().on(logLine(serial)).prints("second\n");
        adb().on(logLine(serial)).waitsFor(u"first"_s).prints("first\n").once();
        auto first = model->readLogs();
        QVERIFY(called(adb(), logLine(serial)));
        QCoro::waitFor(model->readLogs());
        QCOMPARE(model->logs(), u"second\n"_s);
        tools->open(u"first"_s);
        QCoro::waitFor(first);
        QCOMPARE(model->logs(), u"first\n"_s);
    }
};

QTEST_GUILESS_MAIN(InterleavingTest)
#include "InterleavingTest.moc"
