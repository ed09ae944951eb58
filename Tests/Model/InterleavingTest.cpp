// Several models and several pieces of work at once, and models that go away in the middle of it.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QCoroTask>
#include <QFile>

#include <memory>
#include <vector>

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

private:
    std::shared_ptr<VardaModel> another(const QString &phone);

private Q_SLOTS:
    void modelsShareNothing();
    void pollLoopsOfSeveralModelsDoNotHearEachOther();
    void modelReleasedDuringAReadEndsWithTheRead();
    void modelReleasedDuringARefreshEndsWithTheRefresh();
    void abandonedWorkStillLeavesNothing();
    void actionsOfManyModelsRunAtOnce();
    void refreshDuringAnActionLeavesItsTextsAlone();
    void readDuringAnActionLeavesItsTextsAlone();
    void listingDuringAConnectionMayEndInAnyOrder();
    void readsThatOverlapEachPublishTheirOwn();
    void removingTheToolMidwayFailsOnlyTheNextStep();
};

std::shared_ptr<VardaModel> InterleavingTest::another(const QString &phone)
{
    auto fresh = VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
    fresh->devices = {device(phone)};
    fresh->selectedID = phone;
    fresh->packageName = u"com.example.app"_s;
    return fresh;
}

void InterleavingTest::modelsShareNothing()
{
    const auto other = another(u"B"_s);
    selectPhone(device(u"A"_s));
    model->packageName = u"com.example.app"_s;
    writes->take();
    adb().on(forceStopOn(u"B"_s)).waitsFor(u"go"_s);
    adb().on(forceStopOn(u"A"_s)).complains("no").exits(1);
    other->appAction(false);
    QVERIFY(called(adb(), forceStopOn(u"B"_s)));
    QCOMPARE(writes->take(), QStringList());
    perform([this] { model->appAction(false); });
    QCOMPARE(model->error(), std::optional(u"no"_s));
    QVERIFY(other->busy());
    QCOMPARE(other->error(), std::nullopt);
    tools->open(u"go"_s);
    COMPARE_SOON(other->busy(), false);
    QCOMPARE(other->status(), u"Stopped com.example.app on B."_s);
}

void InterleavingTest::pollLoopsOfSeveralModelsDoNotHearEachOther()
{
    adb().on(listing).prints("List of devices attached\nA\tdevice\n");
    const auto other = VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
    model->start();
    other->start();
    COMPARE_SOON(model->devices().size(), 1);
    COMPARE_SOON(other->devices().size(), 1);
    other->stop();
    QVERIFY(called(adb(), listing, 3));
    turn();
    QCOMPARE(adb().count(listing), 3);
}

void InterleavingTest::modelReleasedDuringAReadEndsWithTheRead()
{
    adb().on(logLine(u"B"_s)).waitsFor(u"go"_s).prints("line\n");
    auto other = another(u"B"_s);
    other->packageName = QString();
    auto reading = other->readLogs();
    QVERIFY(called(adb(), logLine(u"B"_s)));
    const std::weak_ptr<VardaModel> watched = other;
    other.reset();
    QVERIFY(!watched.expired());
    tools->open(u"go"_s);
    QCoro::waitFor(reading);
    VERIFY_SOON(watched.expired());
}

void InterleavingTest::modelReleasedDuringARefreshEndsWithTheRefresh()
{
    adb().on(listing).waitsFor(u"go"_s).prints("List of devices attached\nA\tdevice\n");
    auto other = another(u"B"_s);
    auto refreshing = other->refresh();
    QVERIFY(called(adb(), listing));
    const std::weak_ptr<VardaModel> watched = other;
    other.reset();
    QVERIFY(!watched.expired());
    tools->open(u"go"_s);
    QCoro::waitFor(refreshing);
    VERIFY_SOON(watched.expired());
}

void InterleavingTest::abandonedWorkStillLeavesNothing()
{
    // The tasks are dropped as the poll loop of a program that ends would drop them.
    adb().on(listing).waitsFor(u"go"_s).complains("late").exits(1);
    adb().on(logLine(u"B"_s)).waitsFor(u"go"_s).complains("late").exits(1);
    const auto other = another(u"B"_s);
    other->packageName = QString();
    {
        const auto dropped = other->refresh();
        const auto droppedToo = other->readLogs();
    }
    QVERIFY(called(adb(), listing));
    QVERIFY(called(adb(), logLine(u"B"_s)));
    tools->open(u"go"_s);
    COMPARE_SOON(other->error(), std::optional(u"late"_s));
    COMPARE_SOON(other->status(), u"late"_s);
}

void InterleavingTest::actionsOfManyModelsRunAtOnce()
{
    constexpr int count = 25;
    std::vector<std::shared_ptr<VardaModel>> models;
    for (int i = 0; i < count; ++i) {
        const QString phone = u"phone-%1"_s.arg(i);
        adb().on(forceStopOn(phone)).waitsFor(u"go"_s);
        models.push_back(another(phone));
        models.back()->appAction(false);
    }
    COMPARE_SOON(adb().calls().size(), count);
    for (std::size_t i = 0; i < models.size(); i += 2)
        models[i].reset();
    tools->open(u"go"_s);
    for (std::size_t i = 1; i < models.size(); i += 2)
        COMPARE_SOON(models[i]->status(), u"Stopped com.example.app on phone-%1."_s.arg(i));
}

void InterleavingTest::refreshDuringAnActionLeavesItsTextsAlone()
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
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
}

void InterleavingTest::readDuringAnActionLeavesItsTextsAlone()
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
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
    QCOMPARE(model->logs(), u"late\n"_s);
}

void InterleavingTest::listingDuringAConnectionMayEndInAnyOrder()
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

void InterleavingTest::readsThatOverlapEachPublishTheirOwn()
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

void InterleavingTest::removingTheToolMidwayFailsOnlyTheNextStep()
{
    const QStringList resolve = resolveLine(serial, u"com.example.app"_s);
    selectPhone();
    model->packageName = u"com.example.app"_s;
    adb().on(resolve).waitsFor(u"go"_s).prints("com.example.app/.Main\n");
    model->appAction(true);
    QVERIFY(called(adb(), resolve));
    QVERIFY(QFile::rename(adb().path(), adb().path() + u".away"));
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
    QCOMPARE(model->error(), std::optional(adb().path() + u": No such file or directory"));
    QCOMPARE(model->status(), u"Launching app… failed."_s);
}

QTEST_GUILESS_MAIN(InterleavingTest)
#include "InterleavingTest.moc"
