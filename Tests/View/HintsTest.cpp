// What helps, and where: below the alert's message, under the device card and under the status line.
#include "Varda/Model/Hints.h"
#include "Support/ViewFixture.h"
#include "Varda/View/Widgets/Labels.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QClipboard>
#include <QGuiApplication>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

const auto otherKey = u"adb: failed to install demo.apk: Failure [INSTALL_FAILED_UPDATE_INCOMPATIBLE: signatures]"_s;

/// The hint that is seen at the place `name`, or nothing.
std::optional<QString> shown(const ViewFixture &fixture, const char *name)
{
    const auto *block = fixture.view->findChild<TextBlock *>(QString::fromLatin1(name));
    return block && block->isVisible() ? std::optional(block->toPlainText()) : std::nullopt;
}

} // namespace

class ViewHintsTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void saysWhatHelpsBelowTheMessage_data()
    {
        QTest::addColumn<QString>("error");
        QTest::newRow("known") << otherKey;
        QTest::newRow("long") << otherKey + u"\nand a line of its complaint"_s.repeated(90);
        QTest::newRow("no reason") << QString();
    }
    void saysWhatHelpsBelowTheMessage()
    {
        QFETCH(QString, error);
        fixture->show();
        fixture->model->error = error;
        QTRY_COMPARE(shown(*fixture, "alertHint"), hintFor(error));
        const auto *message = fixture->find<TextBlock>("alertText");
        const auto *hint = fixture->find<TextBlock>("alertHint");
        fixture->settle();
        QCOMPARE(message->isVisible(), !error.isEmpty());
        QCOMPARE(message->toPlainText(), error);
        const auto top = [](const QWidget *widget) { return widget->mapTo(widget->window(), QPoint(0, 0)).y(); };
        if (message->isVisible())
            QVERIFY(top(message) + message->height() < top(hint));
        QVERIFY(top(hint) + hint->height() < top(fixture->find("alertButton")));
        QVERIFY(hint->document()->size().height() <= hint->height()); // seen whole
        QCOMPARE(fixture->find("alert")->findChildren<QAbstractButton *>().size(), 1);
    }

    void saysNothingAboutAFailureItDoesNotKnow()
    {
        fixture->show();
        fixture->model->error = otherKey;
        QTRY_VERIFY(shown(*fixture, "alertHint"));
        fixture->model->error = u"Enter an Android package ID such as com.example.myapp."_s;
        QTRY_VERIFY(!shown(*fixture, "alertHint"));
        QVERIFY(fixture->find("alert")->isVisible());
    }

    void letsBothTextsBeCopiedAndRead()
    {
        fixture->show();
        fixture->model->error = otherKey;
        QTRY_VERIFY(shown(*fixture, "alertHint"));
        for (const char *name : {"alertText", "alertHint"}) {
            auto *block = fixture->find<TextBlock>(name);
            QVERIFY(block->focusPolicy() & Qt::TabFocus);
            block->selectAll();
            QTest::keyClick(block, Qt::Key_C, Qt::ControlModifier);
            QCOMPARE(QGuiApplication::clipboard()->text(), block->toPlainText());
            QAccessibleInterface *node = QAccessible::queryAccessibleInterface(block);
            QCOMPARE(node->role(), QAccessible::StaticText);
            QCOMPARE(node->text(QAccessible::Name), block->toPlainText());
        }
    }

    void saysWhatHelpsUnderTheDeviceCard_data()
    {
        QTest::addColumn<QString>("state");
        QTest::addColumn<bool>("helps");
        QTest::newRow("no permissions") << u"no permissions"_s << true;
        QTest::newRow("offline") << u"offline"_s << true;
        QTest::newRow("ready") << u"device"_s << false;
        QTest::newRow("has a warning already") << u"unauthorized"_s << false;
        QTest::newRow("unknown") << u"recovery"_s << false;
    }
    void saysWhatHelpsUnderTheDeviceCard()
    {
        QFETCH(QString, state);
        QFETCH(bool, helps);
        fixture->show();
        fixture->attach({u"R58M42ABCDE"_s, state, u"Pixel 8"_s});
        QCOMPARE(shown(*fixture, "deviceHint"), helps ? hintFor(u"device "_s + state) : std::nullopt);
        if (helps)
            QVERIFY(shown(*fixture, "deviceHint"));
        fixture->model->devices = QList<AndroidDevice>();
        fixture->settle();
        QVERIFY(!shown(*fixture, "deviceHint"));
    }

    void saysWhatHelpsUnderAFailedListing()
    {
        fixture->view->resize(980, 700);
        fixture->show();
        for (const auto &status :
             {u"error: cannot connect to daemon"_s, u"Android tools are missing from this build."_s,
              u"The Android command timed out. Check the phone connection and try again."_s}) {
            fixture->model->status = status;
            fixture->settle();
            QVERIFY2(shown(*fixture, "statusHint"), qPrintable(status));
            QCOMPARE(shown(*fixture, "statusHint"), hintFor(status));
            const QWidget *line = fixture->find("statusLine");
            const auto *hint = fixture->find<TextBlock>("statusHint");
            QVERIFY(line->rect().contains(hint->geometry()));
            QVERIFY(fixture->find("statusText")->geometry().top() < hint->geometry().top());
            QVERIFY(hint->document()->size().height() <= hint->height());
        }
        fixture->model->status = u"No device detected. Enable USB debugging, unlock the phone and approve this Mac."_s;
        fixture->settle();
        QVERIFY(!shown(*fixture, "statusHint"));
    }

    void saysNothingUnderAnActionsStatus_data()
    {
        QTest::addColumn<QString>("status");
        QTest::addColumn<bool>("busy");
        QTest::newRow("in flight") << u"Installing device offline.apk…"_s << true;
        QTest::newRow("failed") << u"Installing device offline.apk… failed."_s << false;
        QTest::newRow("done") << u"Installed device offline.apk on R58M42ABCDE. Existing app data was retained."_s
                              << false;
        QTest::newRow("saved") << u"Screenshot saved to no permissions.png."_s << false;
    }
    void saysNothingUnderAnActionsStatus()
    {
        QFETCH(QString, status);
        QFETCH(bool, busy);
        QVERIFY(hintFor(status)); // by the words of its file's name
        fixture->show();
        fixture->model->status = status;
        fixture->model->busy = busy;
        fixture->settle();
        QVERIFY(!shown(*fixture, "statusHint"));
    }
};

QTEST_MAIN(ViewHintsTest)
#include "HintsTest.moc"
