// The reader of `adb devices -l`.
#include "VardaCore/AndroidDevice.h"

#include <QTest>

using namespace varda;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(QList<varda::AndroidDevice>)

namespace varda {

/// How a failed comparison shows a list.
char *toString(const QList<AndroidDevice> &devices)
{
    QStringList rows;
    for (const AndroidDevice &device : devices)
        rows << u"<%1|%2|%3>"_s.arg(device.id, device.state, device.name);
    return QTest::toString(rows.join(u' '));
}

} // namespace varda

class AndroidDeviceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parsesListing_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QList<AndroidDevice>>("devices");
        using Devices = QList<AndroidDevice>;
        const auto device = [](const QString &name) { return Devices{{u"S1"_s, u"device"_s, name}}; };

        QTest::newRow("nothing") << QString() << Devices{};
        QTest::newRow("header only") << u"List of devices attached\n\n"_s << Devices{};
        QTest::newRow("start-up messages of the server")
            << u"* daemon not running; starting now at tcp:5037\n* daemon started successfully\nList of devices attached\n"_s
            << Devices{};
        QTest::newRow("real listing")
            << u"List of devices attached\n"
               "R58M123ABC             device usb:1-4 product:y2sxeea model:SM_G986B device:y2s transport_id:3\n"
               "emulator-5554          offline transport_id:1\n"
               "192.168.1.50:37123     device product:redfin model:Pixel_5 device:redfin transport_id:7\n"
               "0123456789ABCDEF       no permissions (missing udev rules? user is in the plugdev group); see "
               "[http://developer.android.com/tools/device.html] usb:1-2 transport_id:9\n\n"_s
            << Devices{{u"R58M123ABC"_s, u"device"_s, u"SM G986B"_s},
                       {u"emulator-5554"_s, u"offline"_s, u"emulator-5554"_s},
                       {u"192.168.1.50:37123"_s, u"device"_s, u"Pixel 5"_s},
                       {u"0123456789ABCDEF"_s, u"no permissions"_s, u"0123456789ABCDEF"_s}};
        QTest::newRow("CR LF") << u"List of devices attached\r\nS1 device model:A_B\r\nS2 offline\r\n\r\n"_s
                               << Devices{{u"S1"_s, u"device"_s, u"A B"_s}, {u"S2"_s, u"offline"_s, u"S2"_s}};
        QTest::newRow("no details") << u"S1\tdevice"_s << device(u"S1"_s);
        QTest::newRow("underscore for each space") << u"S1 device model:__A__b_"_s << device(u"  A  b "_s);
        QTest::newRow("empty model") << u"S1 device model:"_s << device(QString());
        QTest::newRow("first model counts") << u"S1 device model:A model:B"_s << device(u"A"_s);
        QTest::newRow("model in other case") << u"S1 device Model:A"_s << device(u"S1"_s);
        QTest::newRow("model inside a field") << u"S1 device xmodel:A"_s << device(u"S1"_s);
        QTest::newRow("serial may be the model")
            << u"model:A_B device"_s << Devices{{u"model:A_B"_s, u"device"_s, u"A B"_s}};
        QTest::newRow("model with a colon") << u"S1 device model:A:B"_s << device(u"A:B"_s);
        QTest::newRow("surrounding and repeated white space")
            << u" \t S1 \u00A0\u3000 device  model:A  "_s << device(u"A"_s);
        QTest::newRow("other line ends") << u"S1 device model:A\u2028S2 device\vS3 device\u0085S4 device"_s
                                         << Devices{{u"S1"_s, u"device"_s, u"A"_s},
                                                    {u"S2"_s, u"device"_s, u"S2"_s},
                                                    {u"S3"_s, u"device"_s, u"S3"_s},
                                                    {u"S4"_s, u"device"_s, u"S4"_s}};
        QTest::newRow("same serial twice")
            << u"S1 device\nS1 offline"_s << Devices{{u"S1"_s, u"device"_s, u"S1"_s}, {u"S1"_s, u"offline"_s, u"S1"_s}};
        QTest::newRow("unsorted") << u"b device\na device"_s
                                  << Devices{{u"b"_s, u"device"_s, u"b"_s}, {u"a"_s, u"device"_s, u"a"_s}};
        QTest::newRow("serial alone") << u"S1"_s << Devices{};
    }
    void parsesListing()
    {
        QFETCH(QString, output);
        QFETCH(QList<AndroidDevice>, devices);
        QCOMPARE(AndroidDevice::parse(output), devices);
    }

    void acceptsSevenStateWords_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<QString>("state");
        for (const char *word : {"device", "unauthorized", "offline", "recovery", "sideload", "bootloader"})
            QTest::newRow(word) << QString::fromLatin1(word) << QString::fromLatin1(word);
        QTest::newRow("no") << u"no"_s << u"no permissions"_s;
        for (const char *word : {"authorizing", "connecting", "host", "rescue", "unknown", "Device", "devices", "NO"})
            QTest::newRow(word) << QString::fromLatin1(word) << QString();
    }
    void acceptsSevenStateWords()
    {
        QFETCH(QString, word);
        QFETCH(QString, state);
        const QList<AndroidDevice> devices = AndroidDevice::parse(u"S1 "_s + word + u" model:A"_s);
        QCOMPARE(devices.size(), state.isEmpty() ? 0 : 1);
        QCOMPARE(devices.value(0).state, state);
        QCOMPARE(devices.value(0).ready(), word == u"device");
    }

    void tellsHowADeviceIsAttached_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("transport");
        QTest::newRow("emulator") << u"emulator-5554"_s << u"Emulator"_s;
        QTest::newRow("emulator comes first") << u"emulator-5554:1"_s << u"Emulator"_s;
        QTest::newRow("capital E") << u"Emulator-5554"_s << u"USB"_s;
        QTest::newRow("capital E with a colon") << u"Emulator-5554:1"_s << u"Wi-Fi"_s;
        QTest::newRow("address") << u"192.168.1.50:37123"_s << u"Wi-Fi"_s;
        QTest::newRow("service") << u"adb-R58M123ABC-x1Y2z3._adb-tls-connect._tcp"_s << u"Wi-Fi"_s;
        QTest::newRow("USB") << u"R58M123ABC"_s << u"USB"_s;
        QTest::newRow("prefix inside") << u"my-emulator-1"_s << u"USB"_s;
        QTest::newRow("none") << QString() << u"USB"_s;
    }
    void tellsHowADeviceIsAttached()
    {
        QFETCH(QString, id);
        QFETCH(QString, transport);
        const AndroidDevice device{id, u"device"_s, id};
        QCOMPARE(device.transport(), transport);
        QCOMPARE(device.emulator(), transport == u"Emulator");
    }

    void isEqualOnlyWhenAllThreeTextsAre()
    {
        const AndroidDevice device{u"S1"_s, u"device"_s, u"A"_s};
        QVERIFY(device == (AndroidDevice{u"S1"_s, u"device"_s, u"A"_s}));
        QVERIFY(device != (AndroidDevice{u"S2"_s, u"device"_s, u"A"_s}));
        QVERIFY(device != (AndroidDevice{u"S1"_s, u"unauthorized"_s, u"A"_s}));
        QVERIFY(device != (AndroidDevice{u"S1"_s, u"device"_s, u"a"_s}));
    }
};

QTEST_GUILESS_MAIN(AndroidDeviceTest)
#include "AndroidDeviceTest.moc"
