// Saving what the log console shows.
#include "Support/ModelTest.h"

using namespace Qt::StringLiterals;
using namespace varda::test;
using varda::SaveKind;

class ConsoleExportTest : public ModelTest
{
    Q_OBJECT

private Q_SLOTS:
    void exportsTheShownTextAsUtf8_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QByteArray>("saved");
        QTest::newRow("nothing") << QString() << QByteArray();
        QTest::newRow("lines as they are") << u"a\r\nb\n"_s << QByteArray("a\r\nb\n");
        QTest::newRow("non-ASCII") << u"größer 日本 👍 \ufffd"_s << QByteArray("größer 日本 👍 \xef\xbf\xbd");
        QTest::newRow("a byte-order mark and a NUL") << u"\ufeffa\0b"_s
                                                     << QByteArray("\xef\xbb\xbf"
                                                                   "a\0b",
                                                                   6);
    }
    void exportsTheShownTextAsUtf8()
    {
        QFETCH(QString, shown);
        model->logs = shown;
        writes->take();
        dialogs->locations = {scratch(u"log.txt"_s)};
        model->exportLogs();
        QCOMPARE(writes->take(), QStringList());
        QTEST(contents(scratch(u"log.txt"_s)), "saved");
        QCOMPARE(dialogs->saveQuestions.size(), 1);
        QVERIFY(dialogs->saveQuestions.first().kind == SaveKind::PlainText);
        QCOMPARE(dialogs->saveQuestions.first().proposedName, u"Varda-logcat.txt"_s);
    }

    void cancelledExportChangesNothing()
    {
        model->logs = u"lines"_s;
        writes->take();
        model->exportLogs();
        QCOMPARE(dialogs->saveQuestions.size(), 1);
        QCOMPARE(writes->take(), QStringList());
    }

    void unwritableExportIsAnErrorAndNothingElse()
    {
        model->logs = u"lines"_s;
        model->logging = true;
        writes->take();
        const QString path = scratch(u"no such folder/log.txt"_s);
        dialogs->locations = {path};
        model->exportLogs();
        QVERIFY(model->error());
        QCOMPARE(writes->take(), QStringList({u"error="_s + *model->error()}));
        QVERIFY2(model->error()->contains(u"No such file or directory"), qUtf8Printable(*model->error()));
        QVERIFY(model->logging());
    }

    void exportsWhatIsShownWhenTheDialogCloses()
    {
        model->logs = u"before"_s;
        dialogs->locations = {scratch(u"log.txt"_s)};
        dialogs->whileOpen = [this] { model->logs = u"after"_s; };
        model->exportLogs();
        QCOMPARE(contents(scratch(u"log.txt"_s)), QByteArray("after"));
    }

    void exportsWhileBusy()
    {
        model->logs = u"lines"_s;
        model->busy = true;
        dialogs->locations = {scratch(u"log.txt"_s)};
        model->exportLogs();
        QCOMPARE(contents(scratch(u"log.txt"_s)), QByteArray("lines"));
        model->busy = false;
    }
};

QTEST_GUILESS_MAIN(ConsoleExportTest)
#include "ConsoleExportTest.moc"
