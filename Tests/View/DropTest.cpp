// Dropping a build: the first item only, files only, and never inside the drop itself.
#include "Support/ViewFixture.h"
#include "Varda/View/DropZone.h"

#include <QDragEnterEvent>
#include <QFile>
#include <QLabel>
#include <QMimeData>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

constexpr QStringView refusal =
    u"Choose a regular .apk file. Android App Bundles (.aab) need to be converted into APKs first.";

/// Drags `data` over the zone and lets it go; answers whether each step was accepted.
std::pair<bool, bool> drop(QWidget *zone, const QMimeData &data)
{
    const QPoint place = zone->rect().center();
    QDragEnterEvent enter(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(zone, &enter);
    QDropEvent event(place, Qt::CopyAction, &data, Qt::LeftButton, {});
    event.ignore();
    QApplication::sendEvent(zone, &event);
    return {enter.isAccepted(), event.isAccepted()};
}

} // namespace

class DropTest final : public ViewTest
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheFirstItem_data()
    {
        QTest::addColumn<QByteArray>("list");
        QTest::addColumn<QUrl>("first");
        QTest::newRow("one") << "file:///tmp/a.apk\r\n"_ba << QUrl(u"file:///tmp/a.apk"_s);
        QTest::newRow("several") << "file:///tmp/a.apk\r\nfile:///tmp/b.apk\r\n"_ba << QUrl(u"file:///tmp/a.apk"_s);
        QTest::newRow("a comment first") << "# from a file manager\r\nfile:///tmp/a.apk\r\n"_ba
                                         << QUrl(u"file:///tmp/a.apk"_s);
        QTest::newRow("LF only, no end") << "file:///tmp/a.apk\nfile:///tmp/b.apk"_ba << QUrl(u"file:///tmp/a.apk"_s);
        QTest::newRow("percent-encoded") << "file:///tmp/My%20b%C3%BCild%20%25.apk"_ba
                                         << QUrl::fromLocalFile(u"/tmp/My büild %.apk"_s);
        QTest::newRow("not encoded") << "file:///tmp/My build.apk"_ba << QUrl::fromLocalFile(u"/tmp/My build.apk"_s);
        QTest::newRow("of this computer by its name")
            << "file://LOCALHOST/tmp/a.apk"_ba << QUrl(u"file://localhost/tmp/a.apk"_s);
        QTest::newRow("of another computer") << "file://otherhost/tmp/a.apk\r\nfile:///tmp/b.apk"_ba << QUrl();
        QTest::newRow("a page first") << "https://example.com/a.apk\r\nfile:///tmp/b.apk\r\n"_ba << QUrl();
        QTest::newRow("no address") << "a.apk\r\n"_ba << QUrl();
        QTest::newRow("empty") << ""_ba << QUrl();
    }
    void readsTheFirstItem()
    {
        QFETCH(QByteArray, list);
        QFETCH(QUrl, first);
        QMimeData data;
        data.setData(u"text/uri-list"_s, list);
        QCOMPARE(firstFile(data).value_or(QUrl()), first);
    }

    void acceptsABuildOnTheNextTurn()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"My büild %.APK"_s);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path), QUrl(u"file:///tmp/other.apk"_s)});
        QCOMPARE(drop(fixture->find("dropZone"), data), std::pair(true, true));
        QVERIFY(!fixture->model->apk());
        fixture->settle();
        QVERIFY(fixture->model->apk());
        QCOMPARE(fixture->model->apk()->toLocalFile(), path);
        QVERIFY(!fixture->model->error());
    }

    void reportsAFileThatIsNoBuild()
    {
        QMimeData data;
        data.setUrls({QUrl(u"file:///tmp/bundle.aab"_s)});
        QCOMPARE(drop(fixture->find("dropZone"), data), std::pair(true, true));
        fixture->settle();
        QCOMPARE(fixture->model->error(), refusal.toString());
        QVERIFY(!fixture->model->apk());
    }

    void ignoresWhatIsNoFile_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QString() << QByteArray();
        QTest::newRow("text") << u"text/plain"_s << "file:///tmp/a.apk"_ba;
        QTest::newRow("a page") << u"text/uri-list"_s << "https://example.com/a.apk\r\n"_ba;
        QTest::newRow("nonsense") << u"text/uri-list"_s << "\xff\xfe\x00\x01"_ba;
    }
    void ignoresWhatIsNoFile()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, bytes);
        QMimeData data;
        if (!format.isEmpty())
            data.setData(format, bytes);
        QCOMPARE(drop(fixture->find("dropZone"), data), std::pair(false, false));
        fixture->settle();
        QVERIFY(!fixture->model->apk());
        QVERIFY(!fixture->model->error());
    }

    void copiesWhatASourceWouldMove()
    {
        QWidget *zone = fixture->find("dropZone");
        QMimeData data;
        data.setUrls({QUrl(u"file:///tmp/a.apk"_s)});
        constexpr auto offered = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
        QDragEnterEvent enter({}, offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        QDropEvent event({}, offered, &data, Qt::LeftButton, Qt::ShiftModifier);
        for (QDropEvent *each : std::initializer_list<QDropEvent *>{&enter, &event}) {
            QCOMPARE(each->proposedAction(), Qt::MoveAction);
            QApplication::sendEvent(zone, each);
            QVERIFY(each->isAccepted());
            QCOMPARE(each->dropAction(), Qt::CopyAction);
        }
    }

    void takesDropsOnTheZoneOnly()
    {
        QMimeData data;
        data.setUrls({QUrl(u"file:///tmp/a.apk"_s)});
        data.setText(u"file:///tmp/a.apk"_s);
        QStringList takers;
        for (QWidget *widget : fixture->view->findChildren<QWidget *>()) {
            if (widget->acceptDrops() && drop(widget, data).first)
                takers << widget->objectName();
        }
        QCOMPARE(takers, QStringList{u"dropZone"_s});
    }

    void showsNoSignWhileADragHovers()
    {
        fixture->show();
        QWidget *zone = fixture->find("dropZone");
        const QImage before = zone->grab().toImage();
        QMimeData data;
        data.setUrls({QUrl(u"file:///tmp/a.apk"_s)});
        QDragEnterEvent enter(zone->rect().center(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(zone, &enter);
        QCOMPARE(zone->grab().toImage(), before);
    }

    void namesTheChosenBuild()
    {
        fixture->show();
        QVERIFY(!fixture->find("apkName")->isVisible());
        fixture->model->apk = QUrl(u"file://localhost/home/sam/a folder/demo-debug.apk"_s);
        fixture->settle();
        auto *name = fixture->find<QLabel>("apkName");
        QVERIFY(name->isVisible());
        QCOMPARE(name->text(), u"demo-debug.apk"_s);
        QVERIFY(name->toolTip().contains(u"/home/sam/a folder/demo-debug.apk"));
        QVERIFY2(!name->toolTip().contains(u"localhost"), qUtf8Printable(name->toolTip()));
        QCOMPARE(fixture->find<QLabel>("dropHeading")->text(), u"Drop your APK here"_s);
    }
};

QTEST_MAIN(DropTest)
#include "DropTest.moc"
