// The list of devices: what a row shows, and how one is selected by pointer and keyboard.
#include "Support/ViewFixture.h"
#include "Varda/View/DeviceRow.h"
#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/Theme.h"

#include <QPainter>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

/// A phone that adb found in the network, with the longest serial that makers give.
const AndroidDevice discoveredPhone{u"adb-ce0918294b3c5d2e0c-nQ8pLx._adb-tls-connect._tcp"_s, u"device"_s,
                                    u"SM G950F"_s};

QList<DeviceRow *> rowsOf(const ViewFixture &fixture)
{
    return fixture.view->findChildren<DeviceRow *>();
}

} // namespace

class DevicesTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheIconOfItsKind_data()
    {
        QTest::addColumn<AndroidDevice>("device");
        QTest::addColumn<Icon>("icon");
        QTest::newRow("USB") << readyPhone << Icon::Phone;
        QTest::newRow("Wi-Fi") << wirelessPhone << Icon::Phone;
        QTest::newRow("found in the network") << discoveredPhone << Icon::Phone;
        QTest::newRow("emulator") << anEmulator << Icon::Desktop;
    }
    void showsTheIconOfItsKind()
    {
        QFETCH(AndroidDevice, device);
        QFETCH(Icon, icon);
        fixture->model->devices = QList<AndroidDevice>{device};
        fixture->show();
        const QImage row = rowsOf(*fixture).first()->grab().toImage();
        QImage expected(row.size(), row.format());
        expected.fill(row.pixelColor(8, row.height() / 2));
        constexpr int size = 22;
        const QRect place(12, (row.height() - size) / 2, size, size);
        QPainter painter(&expected);
        paintIcon(painter, icon, place, theme::text);
        painter.end();
        QCOMPARE(row.copy(place), expected.copy(place));
    }

    void showsWhatTellsSerialsApart()
    {
        fixture->view->resize(980, 700);
        fixture->model->devices = QList<AndroidDevice>(11, discoveredPhone); // so many that the list has a scroll bar
        fixture->show();
        DeviceRow *row = rowsOf(*fixture).first();
        const QImage picture = row->grab().toImage();
        for (qsizetype i = 4; i < discoveredPhone.id.indexOf(u'.'); ++i) {
            if (discoveredPhone.id.at(i) == u'-')
                continue;
            AndroidDevice other = discoveredPhone;
            other.id[i] = u'W';
            row->setDevice(other, false);
            QVERIFY2(row->grab().toImage() != picture, qPrintable(other.id));
        }
    }

    void selectsTheDeviceOfAClickedRow()
    {
        fixture->model->devices = QList<AndroidDevice>{readyPhone, shyPhone, anEmulator};
        fixture->show();
        const auto rows = rowsOf(*fixture);
        QCOMPARE(rows.size(), 3);
        for (const DeviceRow *row : rows)
            QVERIFY(!row->isChecked());
        QTest::mouseClick(rows.at(2), Qt::LeftButton);
        QCOMPARE(fixture->model->selectedID(), anEmulator.id);
        QTRY_VERIFY(rows.at(2)->isChecked());
        QTest::mouseClick(rows.at(2), Qt::LeftButton); // again: stays selected
        fixture->settle();
        QVERIFY(rows.at(2)->isChecked());
        fixture->model->selectedID = std::nullopt;
        fixture->settle();
        QVERIFY(!rows.at(2)->isChecked());
    }

    void keepsTwoRowsOfOneSerialApart()
    {
        AndroidDevice twin = readyPhone;
        twin.name = u"Twin"_s;
        fixture->list({readyPhone, twin}, readyPhone.id);
        const auto rows = rowsOf(*fixture);
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows.at(0)->device().name, readyPhone.name);
        QCOMPARE(rows.at(1)->device().name, u"Twin"_s);
        QVERIFY(rows.at(0)->isChecked() && rows.at(1)->isChecked());
    }

    void selectsWithArrows()
    {
        fixture->list({readyPhone, shyPhone, anEmulator}, readyPhone.id);
        fixture->show();
        rowsOf(*fixture).first()->setFocus();
        const QList<std::pair<Qt::Key, AndroidDevice>> steps{{Qt::Key_Down, shyPhone},   {Qt::Key_Right, anEmulator},
                                                             {Qt::Key_Down, anEmulator}, {Qt::Key_Up, shyPhone},
                                                             {Qt::Key_Left, readyPhone}, {Qt::Key_Up, readyPhone}};
        for (const auto &[key, device] : steps) {
            QTest::keyClick(fixture->view->focusWidget(), key);
            fixture->settle();
            QCOMPARE(fixture->model->selectedID(), device.id);
            const auto *focused = qobject_cast<const DeviceRow *>(fixture->view->focusWidget());
            QVERIFY(focused && focused->isChecked());
            QCOMPARE(focused->device(), device);
        }
    }

    void isOneStopForTab()
    {
        fixture->model->devices = QList<AndroidDevice>{readyPhone, shyPhone, anEmulator};
        fixture->show();
        const auto rows = rowsOf(*fixture);
        const auto expectStop = [&](DeviceRow *stop) {
            fixture->find("refreshButton")->setFocus();
            QTest::keyClick(fixture->view->focusWidget(), Qt::Key_Tab);
            QCOMPARE(fixture->view->focusWidget(), stop);
            QTest::keyClick(stop, Qt::Key_Tab);
            QCOMPARE(fixture->view->focusWidget(), fixture->find("wirelessButton"));
            QTest::keyClick(fixture->view->focusWidget(), Qt::Key_Backtab);
            QCOMPARE(fixture->view->focusWidget(), stop);
        };
        expectStop(rows.at(0)); // nothing is selected, and looking selects nothing
        QVERIFY(!fixture->model->selectedID());
        for (const auto key : {Qt::Key_Space, Qt::Key_Return}) {
            fixture->model->selectedID = std::nullopt;
            QTest::keyClick(rows.at(0), key);
            QCOMPARE(fixture->model->selectedID(), readyPhone.id);
        }
        fixture->model->selectedID = anEmulator.id;
        fixture->settle();
        expectStop(rows.at(2));
    }

    void keepsTheFocusWhenItsDeviceGoes_data()
    {
        QTest::addColumn<bool>("behind");
        QTest::newRow("in front") << false;
        QTest::newRow("behind another window") << true;
    }
    void keepsTheFocusWhenItsDeviceGoes()
    {
        QFETCH(bool, behind);
        fixture->list({readyPhone, shyPhone, anEmulator}, readyPhone.id);
        fixture->activate();
        QWidget other;
        if (behind) {
            other.show();
            other.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&other));
        }
        const auto rows = rowsOf(*fixture);
        rows.at(0)->setFocus();
        fixture->list({shyPhone, anEmulator}, anEmulator.id);
        QCOMPARE(fixture->view->focusWidget(), rows.at(2));
    }
};

QTEST_MAIN(DevicesTest)
#include "DevicesTest.moc"
