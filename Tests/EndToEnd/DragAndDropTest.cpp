// Builds dropped on the window from another program's window, by the pointer.
#include "Stage.h"
#include "VardaWindow.h"
#include "X11Input.h"

#include <QFile>
#include <QTest>
#include <QUrl>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

namespace {

const auto refusal = u"Choose a regular .apk file. Android App Bundles (.aab) need to be converted into APKs first."_s;

// Where the source's window stands, clear of Varda's, which stands in the upper left corner.
constexpr QPoint sourcePosition{1250, 950};

// A drag that no place takes tells nothing while it goes; so often the pointer moves before it is let go.
constexpr auto movesOverRefusal = 12;

} // namespace

class DragAndDropTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        stage = std::make_unique<Stage>(
            Programs{.varda = QStringLiteral(VARDA_PROGRAM), .adb = QStringLiteral(STAGED_ADB), .scrcpy = {}});
        QVERIFY2(stage->errorString().isEmpty(), qUtf8Printable(stage->errorString()));
        QVERIFY(stage->startVarda());
        window = std::make_unique<VardaWindow>(stage->varda().processId());
        QVERIFY(window->opens());
        QStringList windows;
        QVERIFY(eventually([&] {
            windows = visibleWindows(stage->varda().processId());
            return windows.size() == 1;
        }));
        xdotool({u"windowmove"_s, windows.first(), u"0"_s, u"0"_s});
    }

    void cleanup()
    {
        xdotool({u"mouseup"_s, u"1"_s});
        endSource();
        window.reset();
        stage.reset();
    }

    void takesADroppedBuild_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain name") << u"demo-debug.apk"_s;
        QTest::newRow("name that an address writes in percent codes") << u"Grüße aus Köln 100 %.apk"_s;
        QTest::newRow("name that looks like a part of an address") << u"build#2?x=1.APK"_s;
    }
    void takesADroppedBuild()
    {
        QFETCH(QString, name);
        QVERIFY(startSource(u"text/uri-list"_s, uri(makeFile(name)) + u"\\n"));
        QVERIFY(dragOntoZone(true));
        QVERIFY(window->shows(name));
        QVERIFY(!window->look(u"alert"_s, u"Varda"_s));
    }

    void refusesAFirstFileThatIsNoBuild()
    {
        const QString first = makeFile(u"notes.txt"_s);
        const QString second = makeFile(u"second.apk"_s);
        QVERIFY(startSource(u"text/uri-list"_s, uri(first) + u"\\n" + uri(second) + u"\\n"));
        QVERIFY(dragOntoZone(true));
        QCOMPARE(window->takeAlert(), refusal);
        QVERIFY(!window->showing(u"second.apk"_s));
    }

    void ignoresWhatIsNoFile_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("content");
        QTest::newRow("text") << u"text/plain"_s << u"file:///tmp/demo.apk"_s;
        QTest::newRow("address of a page") << u"text/uri-list"_s << u"http://127.0.0.1/demo.apk\\n"_s;
        QTest::newRow("no address") << u"text/uri-list"_s << u"demo.apk\\n"_s;
    }
    void ignoresWhatIsNoFile()
    {
        QFETCH(QString, type);
        QFETCH(QString, content);
        QVERIFY(startSource(type, content));
        QVERIFY(!dragOntoZone(false));
        // A drop that is taken comes after whatever the refused one might have caused.
        QVERIFY(startSource(u"text/uri-list"_s, uri(makeFile(u"good.apk"_s))));
        QVERIFY(dragOntoZone(true));
        QVERIFY(window->shows(u"good.apk"_s));
        QVERIFY(!window->showing(u"demo.apk"_s));
        QVERIFY(!window->look(u"alert"_s, u"Varda"_s));
    }

private:
    bool startSource(const QString &type, const QString &content)
    {
        endSource();
        source = std::make_unique<QProcess>();
        source->setProcessEnvironment(stage->environment());
        source->start(QStringLiteral(DRAG_SOURCE), {type, content});
        if (!source->waitForStarted() || !sourceSays(u"ready"_s))
            return false;
        QStringList windows;
        if (!eventually([&] {
                windows = visibleWindows(source->processId(), u"drag-source"_s);
                return !windows.isEmpty();
            }))
            return false;
        return eventually([&] {
            xdotool({u"windowmove"_s, windows.first(), QString::number(sourcePosition.x()),
                     QString::number(sourcePosition.y())});
            return (windowGeometry(windows.first()).topLeft() - sourcePosition).manhattanLength() < 100;
        });
    }

    void endSource()
    {
        said.clear();
        if (!source)
            return;
        source->kill();
        source->waitForFinished();
        source.reset();
    }

    /// Drags from the source's window onto the drop zone and lets go; true when the zone took it.
    bool dragOntoZone(bool expectTaken)
    {
        const QRect zone = window->await(u"label"_s, u"Drop your APK here"_s).extents();
        if (zone.isEmpty())
            return false;
        QPoint at = sourcePosition + QPoint{100, 60};
        movePointer(at);
        xdotool({u"mousedown"_s, u"1"_s});
        const bool begun = eventually([&] {
            movePointer(at += QPoint{3, 0});
            return sourceSays(u"dragging"_s, 0ms);
        });
        if (!begun)
            return false;
        int moves = 0;
        eventually([&] {
            movePointer(zone.center() + QPoint{++moves % 5, 0});
            return expectTaken ? sourceSays(u"accepted"_s, 0ms) : moves > movesOverRefusal;
        });
        xdotool({u"mouseup"_s, u"1"_s});
        eventually([&] { return sourceSays(u"dropped"_s, 0ms) || sourceSays(u"refused"_s, 0ms); });
        return said.contains(u"dropped"_s);
    }

    bool sourceSays(const QString &word, std::chrono::milliseconds guard = guardTime)
    {
        return eventually(
            [&] {
                while (source->canReadLine())
                    said << QString::fromUtf8(source->readLine()).trimmed();
                return said.contains(word);
            },
            guard);
    }

    QString makeFile(const QString &name)
    {
        QFile file{stage->home(name)};
        if (!file.open(QIODevice::WriteOnly) || file.write("PK\x03\x04") != 4)
            qWarning() << "cannot write" << file.fileName();
        return file.fileName();
    }

    static QString uri(const QString &path) { return QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded()); }

    std::unique_ptr<Stage> stage;
    std::unique_ptr<VardaWindow> window;
    std::unique_ptr<QProcess> source;
    QStringList said;
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::DragAndDropTest)
#include "DragAndDropTest.moc"
