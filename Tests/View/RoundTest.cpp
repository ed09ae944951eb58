// The daily round: its keys, the build that is about to be installed, and the call for attention when something ends.
#include "Support/ViewFixture.h"
#include "Varda/View/Attention.h"

#include <QAbstractButton>
#include <QAction>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace varda;
using namespace std::chrono_literals;

namespace {

/// Writes `bytes` bytes to `path`, as if `age` ago.
void build(const QString &path, int bytes, std::chrono::seconds age)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(bytes, 'x')) != bytes || !file.flush() ||
        !file.setFileTime(QDateTime::currentDateTime().addDuration(-age), QFileDevice::FileModificationTime))
        qFatal("cannot write %s", qUtf8Printable(path));
}

bool asksForAttention(const QWidget &window)
{
    QProcess xprop;
    xprop.start(u"xprop"_s, {u"-id"_s, QString::number(window.winId()), u"_NET_WM_STATE"_s});
    return xprop.waitForFinished() && xprop.readAll().contains("_NET_WM_STATE_DEMANDS_ATTENTION");
}

} // namespace

class RoundTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void startsEachActionByItsKey_data()
    {
        QTest::addColumn<QKeySequence>("key");
        QTest::addColumn<QString>("status");
        const auto row = [](const char *button, const char *key, const QString &status = {}) {
            QTest::newRow(button) << QKeySequence(QString::fromLatin1(key)) << status;
        };
        row("installButton", "Ctrl+I", u"Installing demo.apk…"_s);
        row("mirrorButton", "Ctrl+M");
        row("recordButton", "Ctrl+Shift+M");
        row("launchButton", "Ctrl+L", u"Launching app…"_s);
        row("stopButton", "Ctrl+Shift+L", u"Stopping app…"_s);
        row("listButton", "Ctrl+Shift+A", u"Reading installed apps…"_s);
        row("screenshotButton", "Ctrl+P", u"Capturing phone screenshot…"_s);
        row("logsButton", "Ctrl+T");
    }
    void startsEachActionByItsKey()
    {
        QFETCH(QKeySequence, key);
        QFETCH(QString, status);
        fixture->model->apk = QUrl(u"file:///tmp/demo.apk"_s);
        fixture->model->packageName = u"com.example.app"_s;
        fixture->dialogs->locations = {u"/tmp/unused.png"_s, u"/tmp/unused.png"_s};
        fixture->activate();
        auto *button = fixture->find<QAbstractButton>(QTest::currentDataTag());
        QVERIFY(button->toolTip().contains(u'(' + key.toString() + u')'));
        const auto press = [&] { QTest::keySequence(fixture->find("packageField"), key); };
        const QString before = fixture->model->status();

        press(); // no phone: neither the button nor the key
        QVERIFY(!button->isEnabled());
        QCOMPARE(fixture->model->status(), before);
        QVERIFY(!fixture->model->error() && !fixture->model->logging());

        fixture->attach(readyPhone);
        QVERIFY(button->isEnabled());
        press();
        if (!status.isEmpty())
            QCOMPARE(fixture->model->status(), status);
        else if (button->objectName() == u"logsButton")
            QVERIFY(fixture->model->logging());
        else
            QVERIFY(fixture->model->error()); // there is no scrcpy beside this test
    }

    void takesNoKeyThatTextNeeds()
    {
        for (const QAction *action : fixture->view->actions()) {
            const QKeySequence key = action->shortcut(); // a second one may be of use elsewhere only
            for (const char *name : {"packageField", "pairingCodeField", "consoleText", "statusText"}) {
                QKeyEvent asked(QEvent::ShortcutOverride, key[0].key(), key[0].keyboardModifiers());
                asked.ignore();
                QCoreApplication::sendEvent(fixture->find(name), &asked);
                QVERIFY2(!asked.isAccepted(), qPrintable(key.toString() + u" in "_s + QLatin1StringView(name)));
            }
        }
    }

    void startsNothingOnAHeldKey()
    {
        for (const QAction *action : fixture->view->actions())
            QVERIFY2(!action->autoRepeat(), qPrintable(action->objectName()));
    }

    void submitsFieldsOnReturn_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("status");
        QTest::newRow("launches") << "packageField"_ba << u"Launching app…"_s;
        QTest::newRow("pairs") << "pairingCodeField"_ba << u"Pairing with your Android phone…"_s;
        QTest::newRow("connects") << "connectEndpointField"_ba << u"Connecting over Wi-Fi…"_s;
    }
    void submitsFieldsOnReturn()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, status);
        fixture->attach(readyPhone);
        fixture->model->packageName = u"com.example.app"_s;
        fixture->model->pairingEndpoint = u"192.168.1.50:37123"_s;
        fixture->model->pairingCode = u"482913"_s;
        fixture->model->connectEndpoint = u"192.168.1.50:42137"_s;
        fixture->model->wireless = field != "packageField";
        fixture->model->busy = true;
        fixture->show();
        auto *line = fixture->find<QLineEdit>(field.constData());
        QTRY_VERIFY(line->isVisible());
        const QString before = fixture->model->status();
        QTest::keyClick(line, Qt::Key_Return); // as disabled as its button
        QCOMPARE(fixture->model->status(), before);
        fixture->model->busy = false;
        fixture->settle();
        QTest::keyClick(line, Qt::Key_Return);
        QCOMPARE(fixture->model->status(), status);
    }

    void tellsSizeAndAgeOfTheBuild()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"demo.apk"_s);
        build(path, 24'300'000, 3min + 20s);
        fixture->show();
        fixture->model->apk = QUrl::fromLocalFile(path);
        const auto *facts = fixture->find<QLabel>("apkFacts");
        QTRY_COMPARE(facts->text(), u"24 MB · 3 minutes ago"_s);
        QVERIFY(facts->isVisible());
        const auto *name = fixture->find("apkName");
        QVERIFY(name->geometry().right() < facts->geometry().left());

        fixture->model->apk =
            QUrl::fromLocalFile(folder.filePath(u"other.apk"_s)); // never the one's facts beside the other
        QCoreApplication::sendPostedEvents(fixture->view.get());  // the render alone, before the disk has answered
        QCOMPARE(facts->text(), QString());
        QTRY_COMPARE(facts->text(), u"no longer there"_s);
    }

    void tellsThatTheBuildHasChangedOrGone()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"demo.apk"_s);
        build(path, 2'000'000, 2h + 5min);
        fixture->attach(readyPhone);
        fixture->show();
        fixture->model->apk = QUrl::fromLocalFile(path);
        const auto *facts = fixture->find<QLabel>("apkFacts");
        QTRY_COMPARE(facts->text(), u"2.0 MB · 2 hours ago"_s);

        build(path, 2'000'000, 0s);
        fixture->model->devices = QList<AndroidDevice>{readyPhone}; // as every tick does
        QTRY_COMPARE(facts->text(), u"2.0 MB · just now · changed since it was chosen"_s);

        QFile::remove(path);
        fixture->model->devices = QList<AndroidDevice>{readyPhone};
        QTRY_COMPARE(facts->text(), u"no longer there"_s);
    }

    void takesAChangedBuildAsNewWhenChosenAgain()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"demo.apk"_s);
        build(path, 999, 2h + 5min);
        fixture->show();
        fixture->model->acceptAPK(QUrl::fromLocalFile(path));
        const auto *facts = fixture->find<QLabel>("apkFacts");
        QTRY_COMPARE(facts->text(), u"999 bytes · 2 hours ago"_s);
        build(path, 1000, 0s);
        fixture->model->acceptAPK(QUrl::fromLocalFile(path));
        QTRY_COMPARE(facts->text(), u"1.0 kB · just now"_s);
    }

    void asksForAttentionAfterALongActionOnly_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<bool>("focused");
        QTest::addColumn<bool>("asks");
        QTest::newRow("long") << 6 << false << true;
        QTest::newRow("short") << 4 << false << false;
        QTest::newRow("long, with the focus") << 6 << true << false;
    }
    void asksForAttentionAfterALongActionOnly()
    {
        QFETCH(int, seconds);
        QFETCH(bool, focused);
        QFETCH(bool, asks);
        QWidget window;
        QWidget later; // asks for attention after all else: once the window manager knows of it, it knows of all
        QWidget dialog;
        for (QWidget *each : {&window, &later}) {
            each->setAttribute(Qt::WA_ShowWithoutActivating);
            each->show();
            QVERIFY(QTest::qWaitForWindowExposed(each));
        }
        if (focused) {
            dialog.show();
            dialog.activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(&dialog));
        }
        QCOMPARE(QApplication::activeWindow(), focused ? &dialog : nullptr);
        Attention attention(&window);
        const Attention::Clock::time_point start{};
        attention.render(false, start);
        attention.render(true, start);
        attention.render(true, start + std::chrono::seconds(seconds) / 2);
        attention.render(false, start + std::chrono::seconds(seconds));
        QApplication::alert(&later);
        QTRY_VERIFY(asksForAttention(later));
        QCOMPARE(asksForAttention(window), asks);
    }
};

QTEST_MAIN(RoundTest)
#include "RoundTest.moc"
