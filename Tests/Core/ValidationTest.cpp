// The checks on typed input and the picking of a component.
#include "VardaCore/Validation.h"

#include <QTest>

#include <initializer_list>

using namespace varda;
using namespace Qt::StringLiterals;

namespace {

void addRows(std::initializer_list<QString> values, bool valid)
{
    for (const QString &value : values)
        QTest::addRow("%s %s", valid ? "accepts" : "refuses", qPrintable(value.left(60))) << value << valid;
}

} // namespace

class ValidationTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void judgesPackages_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("valid");
        addRows({u"com.example.myapp"_s, u"a.b"_s, u"_._"_s, u"Com.Example_1.a2"_s, u"a1.b2.c3.d4"_s,
                 u"a."_s + QString(1'000'000, u'b'), u"a"_s + u".b"_s.repeated(200'000)},
                true);
        // Segments: two at least, none empty, none that begins with a digit.
        addRows({QString(), u"com"_s, u"com.1example"_s, u"1com.example"_s, u"com..example"_s, u".com.example"_s,
                 u"com.example."_s},
                false);
        // Space and line ends, wherever they stand.
        addRows({u"com.exam ple"_s, u" com.example"_s, u"com.example "_s, u"com.example\n"_s, u"com.example\r"_s,
                 u"com.example\r\n"_s, u"com.example\u2028"_s, u"\ncom.example"_s, u"x\ncom.example"_s,
                 u"com.example\nx"_s},
                false);
        addRows({u"com.ex-ample"_s, u"com.exämple"_s, u"-com.example"_s, u"com.example;ls"_s, u"com.example/.A"_s,
                 u"com.exa$mple"_s, QStringView(u"com.example\0", 12).toString()},
                false);
    }
    void judgesPackages()
    {
        QFETCH(QString, value);
        QFETCH(bool, valid);
        QCOMPARE(Validation::package(value), valid);
    }

    void judgesEndpoints_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("valid");
        addRows({u"192.168.1.50:37123"_s, u"192.168.1.50:1"_s, u"192.168.1.50:65535"_s, u"phone:5555"_s,
                 u"phone.local:5555"_s, u"Phone-2.Home.ARPA:5555"_s, u"my_phone:5555"_s, u"phone.:5555"_s, u"1:5555"_s,
                 u"[::1]:5555"_s, u"[fe80::1]:5555"_s, u"[FE80::AbCd:0001]:5555"_s, u"[2001:db8:0:0:0:0:0:1]:37123"_s,
                 u"[::ffff:192.168.1.50]:5555"_s, u"192.168.1.50:005555"_s},
                true);
        // The port: there, and between 1 and 65535.
        addRows({QString(), u"192.168.1.50"_s, u"192.168.1.50:"_s, u":5555"_s, u"192.168.1.50:0"_s,
                 u"192.168.1.50:65536"_s, u"192.168.1.50:99999999999"_s, u"192.168.1.50:-1"_s, u"192.168.1.50:+1"_s,
                 u"phone:٥٥٥٥"_s, u"phone:5555:5555"_s, u"[fe80::1]"_s},
                false);
        // Space and line ends.
        addRows({u"192.168.1.50:5555 "_s, u" 192.168.1.50:5555"_s, u"192.168.1.50:5555\n"_s, u"192.168.1.50:5555\r\n"_s,
                 u"192.168.1.50:\n5555"_s, u"pho ne:5555"_s},
                false);
        // What else an address on the web may have.
        addRows({u"user@phone:5555"_s, u"user:password@phone:5555"_s, u"phone:5555/"_s, u"phone/x:5555"_s,
                 u"phone?x:5555"_s, u"phone:5555?x"_s, u"phone:5555#x"_s, u"phone#x:5555"_s, u"tcp://phone:5555"_s},
                false);
        // Host names.
        addRows({u"phone%20:5555"_s, u"-phone:5555"_s, u"phone-:5555"_s, u"_phone:5555"_s, u".phone:5555"_s,
                 u"phöne:5555"_s},
                false);
        // Brackets.
        addRows({u"fe80::1:5555"_s, u"[fe80::1:5555"_s, u"fe80::1]:5555"_s, u"[]:5555"_s, u"[phone]:5555"_s,
                 u"[fe80::1%eth0]:5555"_s, u"[fe80::1]x:5555"_s, u"[[fe80::1]]:5555"_s},
                false);
    }
    void judgesEndpoints()
    {
        QFETCH(QString, value);
        QFETCH(bool, valid);
        QCOMPARE(Validation::endpoint(value), valid);
    }

    void judgesPairingCodes_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("valid");
        addRows({u"123456"_s, u"000000"_s}, true);
        addRows({QString(), u"12345"_s, u"1234567"_s, u"123 456"_s, u" 123456"_s, u"123456 "_s, u"123456\n"_s,
                 u"12345a"_s, u"-12345"_s, u"12345٦"_s, u"１２３４５６"_s, u"1234.6"_s},
                false);
    }
    void judgesPairingCodes()
    {
        QFETCH(QString, value);
        QFETCH(bool, valid);
        QCOMPARE(Validation::pairingCode(value), valid);
    }

    void picksTheFirstComponentOfThePackage_data()
    {
        QTest::addColumn<QString>("output");
        QTest::addColumn<std::optional<QString>>("component");
        using Component = std::optional<QString>;
        const QString details = u"priority=0 preferredOrder=0 match=0x108000 specificIndex=-1 isDefault=true\n"_s;
        QTest::newRow("empty") << QString() << Component();
        QTest::newRow("not found") << u"No activity found\n"_s << Component();
        QTest::newRow("relative name") << details + u"com.example.app/.MainActivity\n"_s
                                       << Component(u"com.example.app/.MainActivity"_s);
        QTest::newRow("full name") << details + u"com.example.app/com.other.Main\n"_s
                                   << Component(u"com.example.app/com.other.Main"_s);
        QTest::newRow("nested class") << u"com.example.app/.Main$Inner"_s
                                      << Component(u"com.example.app/.Main$Inner"_s);
        QTest::newRow("CR LF") << details + u"com.example.app/.Main\r\n"_s << Component(u"com.example.app/.Main"_s);
        QTest::newRow("other line ends") << u"x\u2028com.example.app/.Main\u0085y"_s
                                         << Component(u"com.example.app/.Main"_s);
        QTest::newRow("first of two") << u"com.example.app/.A\ncom.example.app/.B\n"_s
                                      << Component(u"com.example.app/.A"_s);
        QTest::newRow("longer package") << u"com.example.app2/.Main\n"_s << Component();
        QTest::newRow("longer package first")
            << u"com.example.apple/.Main\ncom.example.app/.Main\n"_s << Component(u"com.example.app/.Main"_s);
        QTest::newRow("other case") << u"com.example.App/.Main\n"_s << Component();
        QTest::newRow("skips a space") << u"com.example.app/.Ma in\ncom.example.app/.B\n"_s
                                       << Component(u"com.example.app/.B"_s);
        QTest::newRow("skips trailing space") << u"com.example.app/.A \n"_s << Component();
        QTest::newRow("skips leading space") << u" com.example.app/.A\n"_s << Component();
        QTest::newRow("skips two slashes")
            << u"com.example.app/.A/B\ncom.example.app/.B\n"_s << Component(u"com.example.app/.B"_s);
        QTest::newRow("skips no name") << u"com.example.app/\n"_s << Component();
        QTest::newRow("skips other characters") << u"com.example.app/.Ä\ncom.example.app/.A-B\n"_s << Component();
    }
    void picksTheFirstComponentOfThePackage()
    {
        QFETCH(QString, output);
        QFETCH(std::optional<QString>, component);
        QCOMPARE(Validation::component(output, u"com.example.app"_s), component);
    }
};

QTEST_GUILESS_MAIN(ValidationTest)
#include "ValidationTest.moc"
