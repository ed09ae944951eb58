// Pairing with a phone over Wi-Fi: the code that nobody else may learn.
#include "Support/ModelTest.h"

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

const QString code = u"493817"_s;
const QString endpoint = u"192.168.1.50:37123"_s;
const QStringList pairing{u"pair"_s, endpoint};
const QString working = u"Pairing with your Android phone…"_s;
const QString paired = u"Paired. Now enter the connection IP:port from the main Wireless debugging screen."_s;
const QString badInput =
    u"Use the pairing IP:port and six-digit code shown in Android Wireless debugging → Pair with pairing code."_s;

} // namespace

class PairingTest : public ModelTest
{
    Q_OBJECT

private:
    void type(const QString &address = endpoint, const QString &typedCode = code)
    {
        model->pairingEndpoint = address;
        model->pairingCode = typedCode;
        writes->take();
    }

private Q_SLOTS:
    void badPairingInputIsRefusedAndKept_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("typedCode");
        const auto row = [](const char *name, const QString &address, const QString &typed) {
            QTest::newRow(name) << address << typed;
        };
        row("nothing typed", {}, {});
        row("no address", {}, code);
        row("no code", endpoint, {});
        row("no port", u"192.168.1.50"_s, code);
        row("a user in the address", u"me@192.168.1.50:37123"_s, code);
        row("a blank inside", u"192.168.1.50 :37123"_s, code);
        row("five digits", endpoint, u"49381"_s);
        row("a trailing blank", endpoint, u"493817 "_s);
    }
    void badPairingInputIsRefusedAndKept()
    {
        QFETCH(QString, address);
        QFETCH(QString, typedCode);
        type(address, typedCode);
        model->pair();
        settle();
        QCOMPARE(writes->take(), QStringList({u"error="_s + badInput}));
        QCOMPARE(model->pairingCode(), typedCode);
        QCOMPARE(adb().calls().size(), 0);
    }

    void codeIsClearedBeforeTheActionStarts()
    {
        type();
        adb().on(pairing).waitsFor(u"go"_s).prints("Successfully paired to it\n");
        model->pair();
        QCOMPARE(writes->take(), QStringList({u"pairingCode="_s, u"busy=true"_s, u"status="_s + working}));
        letGo();
        QCOMPARE(writes->take(), QStringList({u"status="_s + paired, u"busy=false"_s}));
        QCOMPARE(model->pairingCode(), QString());
        QCOMPARE(model->pairingEndpoint(), endpoint);
    }

    void pairingSucceedsInAnyLetterCase_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::newRow("as the tool writes it")
            << QByteArray("Enter pairing code: Successfully paired to it [guid=adb-1]\n");
        QTest::newRow("in capitals") << QByteArray("SUCCESSFULLY PAIRED\n");
        QTest::newRow("in small letters") << QByteArray("xsuccessfully pairedx");
        QTest::newRow("with a complaint beside it") << QByteArray("Successfully Paired");
    }
    void pairingSucceedsInAnyLetterCase()
    {
        QFETCH(QByteArray, output);
        type();
        adb().on(pairing).prints(output).complains("a warning\n");
        perform([this] { model->pair(); });
        QCOMPARE(model->status(), paired);
        QCOMPARE(model->error(), std::nullopt);
    }

    void failedPairingMasksTheCodeEverywhere_data()
    {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("complaint");
        QTest::addColumn<QString>("error");
        QTest::newRow("echoed twice") << QByteArray("code 493817 and 493817 again\n") << QByteArray()
                                      << u"code [redacted] and [redacted] again\n"_s;
        QTest::newRow("on both streams, joined as they are")
            << QByteArray("Failed: 493817") << QByteArray(" bad 493817.\n")
            << u"Failed: [redacted] bad [redacted].\n"_s;
        QTest::newRow("across the seam of the streams") << QByteArray("493") << QByteArray("817") << u"[redacted]"_s;
        QTest::newRow("within a longer number") << QByteArray("14938172") << QByteArray() << u"1[redacted]2"_s;
        QTest::newRow("no echo") << QByteArray("Failed: Wrong password\n") << QByteArray()
                                 << u"Failed: Wrong password\n"_s;
        QTest::newRow("silence") << QByteArray() << QByteArray() << QString();
        QTest::newRow("the words on standard error only")
            << QByteArray() << QByteArray("Successfully paired\n") << u"Successfully paired\n"_s;
    }
    void failedPairingMasksTheCodeEverywhere()
    {
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, complaint);
        QFETCH(QString, error);
        type();
        adb().on(pairing).prints(output).complains(complaint);
        perform([this] { model->pair(); });
        QCOMPARE(writes->take(), QStringList({u"pairingCode="_s}) + failure(working, error));
    }

    void nonZeroExitOfPairingIsNotMasked()
    {
        type();
        adb().on(pairing).prints("out").complains("error: protocol fault with 493817\n").exits(1);
        perform([this] { model->pair(); });
        QCOMPARE(writes->take(),
                 QStringList({u"pairingCode="_s}) + failure(working, u"error: protocol fault with 493817\n"_s));
    }

    void pairingKeepsTheSheetAndTheSelection()
    {
        selectPhone();
        model->wireless = true;
        model->logging = true;
        model->logs = u"lines"_s;
        type();
        adb().on(pairing).prints("Successfully paired\n");
        perform([this] { model->pair(); });
        QVERIFY(model->wireless());
        QVERIFY(model->logging());
        QCOMPARE(model->selectedID(), std::optional(serial));
        QCOMPARE(adb().commandLines(), QList({pairing}));
    }
};

QTEST_GUILESS_MAIN(PairingTest)
#include "PairingTest.moc"
