// Listing the devices and choosing one where none is chosen.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QCoroTask>
#include <QDir>
#include <QFile>
#include <QTimer>

#include <chrono>
#include <list>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QStringList listing = listingLine();
const QString noDevice = u"No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s;
const QString toolsMissing = u"Android tools are missing from this build."_s;

} // namespace

class RefreshTest : public ModelTest
{
    Q_OBJECT

private:
    void refresh() { QCoro::waitFor(model->refresh()); }

    QStringList serials() const
    {
        QStringList all;
        for (const varda::AndroidDevice &each : model->devices())
            all << each.id;
        return all;
    }

private Q_SLOTS:
    void publishesTheListInTheToolsOrder()
    {
        adb().on(listing).prints(listingOf("zz\tdevice model:Pixel_7\naa\toffline\nemulator-5554\tdevice model:sdk\n"));
        refresh();
        QCOMPARE(model->devices(),
                 QList({device(u"zz"_s, u"device"_s, u"Pixel 7"_s), device(u"aa"_s, u"offline"_s, u"aa"_s),
                        device(u"emulator-5554"_s, u"device"_s, u"sdk"_s)}));
        QCOMPARE(writes->take(), QStringList({u"devices=[zz:device aa:offline emulator-5554:device]"_s,
                                              u"selectedID=zz"_s, u"same"_s, u"same"_s}));
        QCOMPARE(model->status(), u"Connect an Android phone with a USB data cable."_s);
    }

    void republishesAnUnchangedList()
    {
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        refresh();
        writes->take();
        refresh();
        QCOMPARE(writes->take(), QStringList({u"same"_s}));
    }

    void startedOneNeedsNobodyToAwaitIt()
    {
        adb().on(listing).once().prints(listingOf("A\tdevice\n"));
        model->startRefresh();
        QTRY_COMPARE(serials(), QStringList({u"A"_s}));
        adb().on(listing).complains("adb: no luck").exits(1);
        model->startRefresh();
        QTRY_COMPARE(model->status(), u"adb: no luck"_s);
    }

    void choosesFirst_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<QString>("chosen");
        QTest::newRow("the phone after an emulator")
            << QByteArray("emulator-5554\tdevice\nR5\tdevice\nR6\tdevice\n") << u"R5"_s;
        QTest::newRow("the first emulator of several")
            << QByteArray("emulator-5556\tdevice\nemulator-5554\tdevice\n") << u"emulator-5556"_s;
        QTest::newRow("an unready phone before a ready emulator")
            << QByteArray("emulator-5554\tdevice\nR5\tunauthorized\n") << u"R5"_s;
        QTest::newRow("an unready phone before a ready phone") << QByteArray("R5\toffline\nR6\tdevice\n") << u"R5"_s;
        QTest::newRow("a Wi-Fi phone like any other")
            << QByteArray("10.0.0.7:5555\tdevice\nR6\tdevice\n") << u"10.0.0.7:5555"_s;
        QTest::newRow("a phone whose serial only looks like an emulator's")
            << QByteArray("emulator-5554\tdevice\nEmulator-5556\tdevice\n") << u"Emulator-5556"_s;
    }
    void choosesFirst()
    {
        QFETCH(QByteArray, rows);
        QFETCH(QString, chosen);
        adb().on(listing).prints(listingOf(rows));
        refresh();
        QCOMPARE(model->selectedID(), std::optional(chosen));
        QCOMPARE(model->selected()->id, chosen);
    }

    void choosingTurnsTheConsoleOffAndEmptiesIt()
    {
        model->logs = u"old"_s;
        model->logging = true;
        writes->take();
        adb().on(listing).prints(listingOf("A\tdevice\n"));
        refresh();
        QCOMPARE(writes->take(),
                 QStringList({u"devices=[A:device]"_s, u"selectedID=A"_s, u"logging=false"_s, u"logs="_s}));
    }

    void keepsAPresentSelectionWhateverIsListed_data()
    {
        QTest::addColumn<QByteArray>("rows");
        QTest::addColumn<bool>("present");
        QTest::newRow("among others") << QByteArray("R5\tdevice\nemulator-5554\tdevice\n") << true;
        QTest::newRow("not listed") << QByteArray("R5\tdevice\n") << false;
    }
    void keepsAPresentSelectionWhateverIsListed()
    {
        QFETCH(QByteArray, rows);
        QFETCH(bool, present);
        model->selectedID = u"emulator-5554"_s;
        model->logging = true;
        model->logs = u"kept"_s;
        adb().on(listing).prints(listingOf(rows));
        writes->take();
        refresh();
        QCOMPARE(model->selectedID(), std::optional(u"emulator-5554"_s));
        QCOMPARE(model->selected().has_value(), present);
        QCOMPARE(writes->take().size(), 1);
        QCOMPARE(model->logs(), u"kept"_s);
        QVERIFY(model->logging());
    }

    void respectsASelectionMadeWhileTheToolRan()
    {
        adb().on(listing).waitsFor(u"go"_s).prints(listingOf("A\tdevice\nB\tdevice\n"));
        auto listed = model->refresh();
        QVERIFY(called(adb(), listing));
        model->selectedID = u"B"_s;
        tools->open(u"go"_s);
        QCoro::waitFor(listed);
        QCOMPARE(model->selectedID(), std::optional(u"B"_s));
    }

    void emptyListSaysSoAndKeepsTheSelection()
    {
        selectPhone();
        adb().on(listing).prints(listingOf(""));
        refresh();
        QCOMPARE(writes->take(), QStringList({u"devices=[]"_s, u"status="_s + noDevice}));
        QCOMPARE(model->selectedID(), std::optional(serial));
        QCOMPARE(model->selected(), std::nullopt);

        model->selectedID = std::nullopt;
        refresh();
        QCOMPARE(model->selectedID(), std::nullopt);
        QCOMPARE(model->status(), noDevice);
    }

    void returnedPhoneIsSelectedAgainAndTheNoDeviceTextStays()
    {
        selectPhone();
        adb().on(listing).prints(listingOf(serial.toUtf8() + "\tdevice model:Pixel_7\n"));
        adb().on(listing).prints(listingOf("")).once();
        refresh();
        QCOMPARE(model->selected(), std::nullopt);
        refresh();
        QCOMPARE(model->selected(), std::optional(device(serial)));
        QCOMPARE(model->status(), noDevice);
    }

    void anUnauthorizedPhoneIsSelectedWithoutAWord()
    {
        adb().on(listing).prints(listingOf("R5\tunauthorized usb:1-2 transport_id:1\n"));
        const QString before = model->status();
        refresh();
        QCOMPARE(model->selectedID(), std::optional(u"R5"_s));
        QVERIFY(!model->selected()->ready());
        QCOMPARE(model->status(), before);
        QVERIFY(writes->take().filter(u"status"_s).isEmpty());
    }

    void unreadableOutputListsNothing()
    {
        selectPhone();
        static constexpr char garbage[] = "\xff\xfe\x00\x01garbage \x80 device\x00\n\n\n<html>502</html>";
        adb().on(listing).prints(QByteArray(garbage, sizeof garbage - 1));
        refresh();
        QCOMPARE(model->devices(), QList<varda::AndroidDevice>());
        QCOMPARE(model->status(), noDevice);
        QCOMPARE(model->error(), std::nullopt);
    }

    void nonZeroExitShowsTheToolsWords_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<QString>("status");
        QTest::newRow("standard error") << QByteArray("out\n") << QByteArray("adb: cannot start the daemon\n")
                                        << u"adb: cannot start the daemon\n"_s;
        QTest::newRow("standard output where standard error is empty")
            << QByteArray("out\n") << QByteArray() << u"out\n"_s;
        QTest::newRow("nothing at all") << QByteArray() << QByteArray() << QString();
        QTest::newRow("a listing with a failed exit") << listingOf("A\tdevice\n") << QByteArray("oh") << u"oh"_s;
    }
    void nonZeroExitShowsTheToolsWords()
    {
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, complaint);
        QFETCH(QString, status);
        selectPhone();
        adb().on(listing).prints(output).complains(complaint).exits(1);
        refresh();
        QCOMPARE(writes->take(), QStringList({u"status="_s + status}));
    }

    void missingToolIsNamedAndNothingElseChanges_data()
    {
        QTest::addColumn<QString>("trouble");
        QTest::newRow("no file") << u"absent"_s;
        QTest::newRow("not executable") << u"plain"_s;
        QTest::newRow("a directory") << u"directory"_s;
        QTest::newRow("a dangling link") << u"dangling"_s;
        QTest::newRow("the whole tree is gone") << u"tree"_s;
    }
    void missingToolIsNamedAndNothingElseChanges()
    {
        QFETCH(QString, trouble);
        selectPhone();
        if (trouble == u"tree")
            QDir(StandInTools::directory()).removeRecursively();
        else
            QVERIFY(QFile::remove(adb().path()));
        if (trouble == u"plain") {
            QFile file(adb().path());
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        }
        if (trouble == u"directory")
            QVERIFY(QDir().mkdir(adb().path()));
        if (trouble == u"dangling")
            QVERIFY(QFile::link(u"nowhere"_s, adb().path()));
        refresh();
        QCOMPARE(writes->take(), QStringList({u"status="_s + toolsMissing}));
    }

    void unlaunchableToolIsReportedInStatus()
    {
        selectPhone();
        QVERIFY(QFile::remove(adb().path()));
        QFile file(adb().path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/no/such/interpreter\n");
        file.close();
        QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        refresh();
        QCOMPARE(writes->take(), QStringList({u"status="_s + adb().path() + u": No such file or directory"_s}));
    }

    void hangingToolTimesOutAfterEightSecondsAndThePreviousListStays()
    {
        selectPhone();
        adb().on(listing).prints(listingOf("B\tdevice\n")).hangs();
        const auto begin = std::chrono::steady_clock::now();
        refresh();
        const auto taken = std::chrono::steady_clock::now() - begin;
        QVERIFY(taken >= std::chrono::seconds(8));
        QCOMPARE(writes->take(),
                 QStringList({u"status=The Android command timed out. Check the phone connection and try again."_s}));
        QCOMPARE(serials(), QStringList({serial}));
    }

    void laterFinisherOfTwoWins()
    {
        adb().on(listing).waitsFor(u"second"_s).prints(listingOf("B\tdevice\n"));
        adb().on(listing).waitsFor(u"first"_s).prints(listingOf("A\tdevice\n")).once();
        auto first = model->refresh();
        QVERIFY(called(adb(), listing, 1));
        auto second = model->refresh();
        QVERIFY(called(adb(), listing, 2));
        tools->open(u"second"_s);
        QCoro::waitFor(second);
        QCOMPARE(serials(), QStringList({u"B"_s}));
        tools->open(u"first"_s);
        QCoro::waitFor(first);
        QCOMPARE(serials(), QStringList({u"A"_s}));
        QCOMPARE(model->selectedID(), std::optional(u"B"_s));
    }

    void leavesBusyAndErrorAlone()
    {
        selectPhone();
        model->error = u"earlier"_s;
        model->busy = true;
        writes->take();
        adb().on(listing).exits(3);
        refresh();
        QCOMPARE(writes->take(), QStringList({u"status="_s}));
        QVERIFY(model->busy());
        QCOMPARE(model->error(), std::optional(u"earlier"_s));
        model->busy = false;
    }
};

QTEST_GUILESS_MAIN(RefreshTest)
#include "RefreshTest.moc"
