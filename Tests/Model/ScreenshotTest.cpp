// Screenshots: the proposed name, the image byte for byte, and what is not saved.
#include "Support/CommandLines.h"
#include "Support/ModelTest.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::SaveKind;

namespace {

const QStringList capture{u"-s"_s, u"R58M42ABCDE"_s, u"exec-out"_s, u"screencap"_s, u"-p"_s};
const QString capturing = u"Capturing phone screenshot…"_s;
const QByteArray pngSignature("\x89PNG\r\n\x1a\n", 8);

} // namespace

class ScreenshotTest : public ModelTest
{
    Q_OBJECT

private Q_SLOTS:
    void screenshotProposesANameOfTheSecond()
    {
        selectPhone();
        const qint64 before = QDateTime::currentSecsSinceEpoch();
        model->screenshot();
        model->screenshot();
        const qint64 after = QDateTime::currentSecsSinceEpoch();
        QCOMPARE(dialogs->saveQuestions.size(), 2);
        for (const DialogScript::SaveQuestion &question : dialogs->saveQuestions) {
            QVERIFY(question.kind == SaveKind::PngImage);
            QStringList possible;
            for (qint64 second = before; second <= after; ++second)
                possible << u"Varda-%1.png"_s.arg(second);
            QVERIFY2(possible.contains(question.proposedName), qUtf8Printable(question.proposedName));
        }
    }

    void cancelledScreenshotRunsNothing()
    {
        selectPhone();
        model->screenshot();
        settle();
        QCOMPARE(dialogs->saveQuestions.size(), 1);
        QCOMPARE(writes->take(), QStringList());
        QCOMPARE(adb().calls().size(), 0);
    }

    void screenshotIsSavedByteForByte_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("image");
        QByteArray everyByte = pngSignature;
        for (int i = 0; i < 70000; ++i)
            everyByte.append(static_cast<char>(i % 256)).append(static_cast<char>(i / 256));
        QTest::newRow("every byte value") << u"shot.png"_s << everyByte;
        QTest::newRow("the signature alone") << u"shot.png"_s << pngSignature;
        QTest::newRow("an odd name") << u"日本 'shot' ä.png"_s << pngSignature + "x";
        QTest::newRow("a name without extension") << u"shot"_s << pngSignature + "x";
    }
    void screenshotIsSavedByteForByte()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, image);
        selectPhone();
        dialogs->locations = {scratch(name)};
        adb().on(capture).prints(image).complains("a warning\n");
        perform([this] { model->screenshot(); });
        QCOMPARE(writes->take(), success(capturing, u"Screenshot saved to "_s + name + u'.'));
        QCOMPARE(contents(scratch(name)), image);
    }

    void outputThatIsNoPngIsNotSaved_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("nothing: the phone is gone") << QByteArray();
        QTest::newRow("a warning before the image") << "[Warning] Multiple displays\n" + pngSignature + "rest";
        QTest::newRow("seven bytes of the signature") << pngSignature.left(7);
        QTest::newRow("line ends rewritten on the way") << QByteArray("\x89PNG\r\r\n\x1a\r\n", 10);
        QTest::newRow("another image") << QByteArray("\xff\xd8\xff\xe0JFIF");
    }
    void outputThatIsNoPngIsNotSaved()
    {
        QFETCH(QByteArray, output);
        selectPhone();
        dialogs->locations = {scratch(u"shot.png"_s)};
        adb().on(capture).prints(output);
        perform([this] { model->screenshot(); });
        QCOMPARE(writes->take(), failure(capturing, u"The phone did not return a valid PNG screenshot."_s));
        QVERIFY(!QFile::exists(scratch(u"shot.png"_s)));
    }

    void failedCaptureKeepsAnExistingFile()
    {
        selectPhone();
        dialogs->locations = {makeFile(u"shot.png"_s, "old")};
        adb().on(capture).prints(pngSignature).complains("error: closed").exits(1);
        perform([this] { model->screenshot(); });
        QCOMPARE(writes->take(), failure(capturing, u"error: closed"_s));
        QCOMPARE(contents(scratch(u"shot.png"_s)), QByteArray("old"));
    }

    void actionStartedUnderTheOpenDialogDropsTheScreenshot()
    {
        model->packageName = u"com.example.myapp"_s;
        selectPhone();
        const QStringList forceStop = forceStopLine(serial, u"com.example.myapp"_s);
        dialogs->locations = {scratch(u"shot.png"_s)};
        adb().on(forceStop).waitsFor(u"go"_s);
        dialogs->whileOpen = [this] { model->appAction(false); };
        model->screenshot();
        QVERIFY(called(adb(), forceStop));
        letGo();
        settle();
        QCOMPARE(writes->take(), success(u"Stopping app…"_s, u"Stopped com.example.myapp on R58M42ABCDE."_s));
        QCOMPARE(adb().commandLines(), QList({forceStop}));
    }

    void screenshotIsTakenFromThePhoneOfTheClick()
    {
        selectPhone();
        dialogs->locations = {scratch(u"shot.png"_s)};
        dialogs->whileOpen = [this] {
            model->devices = {device(u"other"_s)};
            model->selectedID = u"other"_s;
        };
        adb().on(capture).prints(pngSignature);
        perform([this] { model->screenshot(); });
        QCOMPARE(adb().commandLines(), QList({capture}));
        QCOMPARE(model->status(), u"Screenshot saved to shot.png."_s);
    }
};

QTEST_GUILESS_MAIN(ScreenshotTest)
#include "ScreenshotTest.moc"
