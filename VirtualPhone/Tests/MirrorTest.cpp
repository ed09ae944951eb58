// The mirror's formats, in bytes written out by hand: stream heads, packets, control messages, server options.
#include "Device/Device.h"
#include "Device/Screen.h"
#include "Mirror/ControlMessages.h"
#include "Mirror/MirrorFormat.h"
#include "Mirror/ServerOptions.h"
#include "Mirror/VideoEncoder.h"
#include "Mirror/YuvPicture.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace varda::phone;

class MirrorTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesTheDeviceIn64Bytes()
    {
        QCOMPARE(deviceNameField(u"Pixel 8"_s), QByteArray("Pixel 8") + QByteArray(57, '\0'));
        QCOMPARE(deviceNameField(QString(100, u'x')), QByteArray(63, 'x') + '\0');
    }

    void tellsTheSizeInASession()
    {
        QCOMPARE(MirrorFormat(true).streamHead({720, 1600}).toHex(), QByteArray("6832363480000000000002d000000640"));
        QCOMPARE(MirrorFormat(false).streamHead({720, 1600}).toHex(), QByteArray("68323634000002d000000640"));
    }

    void flagsStandInTheHighestBits()
    {
        const MirrorFormat newer(true);
        const MirrorFormat older(false);
        QCOMPARE(newer.configPacket("ab").toHex(), QByteArray("4000000000000000000000026162"));
        QCOMPARE(older.configPacket("ab").toHex(), QByteArray("8000000000000000000000026162"));
        QCOMPARE(newer.picturePacket(258, true, "ab").toHex(), QByteArray("2000000000000102000000026162"));
        QCOMPARE(older.picturePacket(258, true, "ab").toHex(), QByteArray("4000000000000102000000026162"));
        QCOMPARE(newer.picturePacket(258, false, "ab").toHex(), QByteArray("0000000000000102000000026162"));
    }

    void parsesServerOptions()
    {
        const ServerOptions options = parseServerOptions(
            {u"4.1"_s, u"scid=1a2b3c4d"_s, u"log_level=info"_s, u"max_size=800"_s, u"audio=false"_s});
        QCOMPARE(options.error, QString());
        QCOMPARE(options.socketName(), QByteArray("localabstract:scrcpy_1a2b3c4d"));
        QVERIFY(options.hasSessions());
        QVERIFY(options.video && options.control && !options.audio && !options.tunnelForward);
        QCOMPARE(options.videoSize({720, 1600}), QSize(360, 800));
        QCOMPARE(options.videoSize({540, 720}), QSize(536, 720));
        QVERIFY(!parseServerOptions({u"3.3.4"_s}).hasSessions());
    }

    void refusesWhatItCannotServe()
    {
        QVERIFY(!parseServerOptions({}).error.isEmpty());
        QVERIFY(!parseServerOptions({u"4.1"_s, u"video_codec=av1"_s}).error.isEmpty());
    }

    void decodesATouch()
    {
        ControlMessageReader reader;
        reader.append(QByteArray::fromHex("02"               // touch
                                          "00"               // down
                                          "ffffffffffffffff" // the mouse
                                          "0000010200000206" // x, y
                                          "02d00640"         // of 720 x 1600
                                          "ffff"             // pressure
                                          "0000000100000001" // buttons
                                          ));
        const std::optional<ControlMessage> message = reader.next();
        QVERIFY(message);
        QCOMPARE(message->type, u"touch"_s);
        QCOMPARE(message->action, 0);
        QCOMPARE(message->position, QPoint(258, 518));
        QCOMPARE(message->frame, QSize(720, 1600));
        QCOMPARE(message->details.value(u"pointer"_s).toInteger(), -1);
        QVERIFY(!reader.next());
    }

    void decodesMessagesInPieces()
    {
        const QByteArray key = QByteArray::fromHex("0000000000240000000000000000");
        const QByteArray text = QByteArray::fromHex("01000000044772c3bc"); // "Grü"
        const QByteArray back = QByteArray::fromHex("0401");
        const QByteArray clipboard = QByteArray::fromHex("0900000000000000050100000002") + "hi";
        ControlMessageReader reader;
        QStringList types;
        const QByteArray all = key + text + back + clipboard;
        for (const char byte : all) {
            reader.append(QByteArray(1, byte));
            while (const std::optional<ControlMessage> message = reader.next())
                types.append(message->type + u' ' + message->text + u' ' + QString::number(message->keycode));
        }
        QCOMPARE(types, (QStringList{u"key  36"_s, u"text Grü 0"_s, u"back  0"_s, u"set-clipboard hi 0"_s}));
        QVERIFY(!reader.unknownKind());
    }

    void stopsAtAnUnknownMessage()
    {
        ControlMessageReader reader;
        reader.append(QByteArray::fromHex("0400ee0400"));
        QVERIFY(reader.next());
        QVERIFY(!reader.next());
        QCOMPARE(reader.unknownKind(), std::optional<quint8>(0xee));
        reader.append(QByteArray::fromHex("0400"));
        QVERIFY(!reader.next());
    }

    void convertsColours()
    {
        QImage image(4, 2, QImage::Format_RGB32);
        image.fill(Qt::white);
        const YuvPicture white(image);
        QCOMPARE(white.luma, QByteArray(8, static_cast<char>(235)));
        QCOMPARE(white.blue, QByteArray(2, static_cast<char>(128)));
        image.fill(Qt::red);
        const YuvPicture red(image);
        QCOMPARE(red.luma, QByteArray(8, 82));
        QCOMPARE(red.red, QByteArray(2, static_cast<char>(240)));
    }

    void encodesPictures()
    {
        Device device(u"Pixel 8"_s, {360, 800}, nullptr);
        VideoEncoder encoder({360, 800}, 20);
        if (!encoder.isValid())
            QSKIP("built without a video encoder");
        const QByteArray sets = encoder.parameterSets();
        QVERIFY(sets.startsWith(QByteArray::fromHex("0000000167"))); // a sequence parameter set
        QVERIFY(sets.contains(QByteArray::fromHex("0000000168")));   // a picture parameter set
        const EncodedPicture first = encoder.encode(paintScreen(device, 0), 0);
        QVERIFY(first.isKey);
        QVERIFY(first.data.startsWith(QByteArray::fromHex("0000000165"))); // nothing but the key picture
        const EncodedPicture second = encoder.encode(paintScreen(device, 1), 50'000);
        QVERIFY(!second.isKey);
        QVERIFY(!second.data.isEmpty() && second.data.size() < first.data.size());
        encoder.requestKey();
        QVERIFY(encoder.encode(paintScreen(device, 2), 100'000).isKey);
        QVERIFY(encoder.encode(QImage(2, 2, QImage::Format_RGB32), 150'000).data.isEmpty());
    }

    void pictureMovesAndShowsTouchesAndApps()
    {
        Device device(u"Pixel 8"_s, {360, 800}, nullptr);
        const QImage home = paintScreen(device, 0);
        QVERIFY(home != paintScreen(device, 1));
        device.setTouch({{100, 200}, true, true});
        const QImage touched = paintScreen(device, 0);
        QVERIFY(touched.pixelColor(100, 200).red() > 200 && touched.pixelColor(100, 200).green() < 100);
        device.install(u"com.example.app"_s);
        QVERIFY(device.launch(u"com.example.app"_s));
        QVERIFY(paintScreen(device, 0) != touched);
    }
};

QTEST_GUILESS_MAIN(MirrorTest)

#include "MirrorTest.moc"
