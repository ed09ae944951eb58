// The phone on the wire: handshake, authorisation, streams and flow control, and hosts that break the rules.
#include "VirtualPhone.h"
#include "WireHost.h"

#include <QRandomGenerator>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace varda::phone;
using varda::PhoneOptions;
using varda::VirtualPhone;

namespace {

auto isFor(quint32 stream, PacketCommand command)
{
    return [=](const Packet &packet) { return packet.second == stream && packet.command == command; };
}

Packet open(quint32 stream, const QByteArray &service)
{
    return {PacketCommand::Open, stream, 0, service + '\0'};
}

qsizetype count(const QList<Packet> &packets, PacketCommand command, quint32 stream)
{
    return std::count_if(packets.begin(), packets.end(), isFor(stream, command));
}

} // namespace

class ConnectionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void greetsWithItsBanner()
    {
        VirtualPhone phone;
        WireHost host(phone.port());
        const std::optional<Packet> answer = host.greet();
        QVERIFY(answer);
        QCOMPARE(answer->command, PacketCommand::Connect);
        QCOMPARE(answer->first, protocolVersion);
        QCOMPARE(answer->payload, QByteArray("device::ro.product.name=pixel_8;ro.product.model=Pixel 8;"
                                             "ro.product.device=pixel_8;features=shell_v2,cmd"));
    }

    void olderHostGetsChecksums()
    {
        VirtualPhone phone;
        WireHost host(phone.port());
        QVERIFY(host.greet(protocolVersionWithChecksum));
        host.send(open(1, "exec:echo x"), true);
        QCOMPARE(host.receiveUntil(isFor(1, PacketCommand::Write)).last().payload, QByteArray("x\n"));
        host.send(open(2, "exec:echo x"), false);
        QVERIFY2(host.isDisconnected(), "a wrong checksum ends the connection");
    }

    void servesSeveralStreamsAtOnce()
    {
        VirtualPhone phone;
        WireHost host(phone.port());
        QVERIFY(host.greet());
        host.send(open(10, "exec:cat"));
        const quint32 first = host.receiveUntil(isFor(10, PacketCommand::Okay)).last().first;
        host.send(open(20, "exec:cat"));
        const quint32 second = host.receiveUntil(isFor(20, PacketCommand::Okay)).last().first;
        QVERIFY(first != second);
        host.send({PacketCommand::Write, 20, second, "two"});
        QCOMPARE(host.receiveUntil(isFor(20, PacketCommand::Write)).last().payload, QByteArray("two"));
        host.send({PacketCommand::Write, 10, first, "one"});
        QCOMPARE(host.receiveUntil(isFor(10, PacketCommand::Write)).last().payload, QByteArray("one"));
        host.send({PacketCommand::Close, 10, first, {}});
        host.send({PacketCommand::Okay, 20, second, {}});
        host.send({PacketCommand::Write, 20, second, "still here"});
        QCOMPARE(host.receiveUntil(isFor(20, PacketCommand::Write)).last().payload, QByteArray("still here"));
    }

    void waitsForEachAcknowledgement()
    {
        PhoneOptions options;
        options.commands = {u"on flooding flood 200000"_s};
        VirtualPhone phone(options);
        WireHost host(phone.port());
        QVERIFY(host.greet());
        host.send(open(1, "exec:flooding"));
        QList<Packet> packets = host.receiveUntil(isFor(1, PacketCommand::Write));
        const quint32 flood = packets.last().first;
        host.send(open(2, "exec:echo meanwhile"));
        packets = host.receiveUntil(isFor(2, PacketCommand::Write));
        QCOMPARE(count(packets, PacketCommand::Write, 1), 0);
        host.send({PacketCommand::Okay, 1, flood, {}});
        QVERIFY(!host.receiveUntil(isFor(1, PacketCommand::Write)).isEmpty());
    }

    void holdsItsAcknowledgementBackWhileAServiceDoesNotRead()
    {
        PhoneOptions options;
        options.commands = {u"on cat hang"_s};
        VirtualPhone phone(options);
        WireHost host(phone.port());
        QVERIFY(host.greet());
        host.send(open(1, "exec:cat"));
        const quint32 hanging = host.receiveUntil(isFor(1, PacketCommand::Okay)).last().first;
        host.send({PacketCommand::Write, 1, hanging, "unread"});
        host.send(open(2, "exec:echo meanwhile"));
        const QList<Packet> packets = host.receiveUntil(isFor(2, PacketCommand::Write));
        QCOMPARE(packets.last().payload, QByteArray("meanwhile\n"));
        QCOMPARE(count(packets, PacketCommand::Okay, 1), 0);
    }

    void keepsToTheHostsPayloadLimit()
    {
        PhoneOptions options;
        options.commands = {u"on flooding flood 10000"_s};
        VirtualPhone phone(options);
        WireHost host(phone.port());
        QVERIFY(host.greet(protocolVersion, 4096));
        host.send(open(1, "exec:flooding"));
        QList<qsizetype> sizes;
        while (const std::optional<Packet> packet = host.receive()) {
            if (packet->command == PacketCommand::Close)
                break;
            if (packet->command != PacketCommand::Write)
                continue;
            sizes.append(packet->payload.size());
            host.send({PacketCommand::Okay, 1, packet->first, {}});
        }
        QCOMPARE(sizes, (QList<qsizetype>{4096, 4096, 1808}));
    }

    void refusesUnknownServices()
    {
        VirtualPhone phone;
        WireHost host(phone.port());
        QVERIFY(host.greet());
        host.send(open(7, "jdwp:12"));
        const std::optional<Packet> answer = host.receive();
        QVERIFY(answer);
        QCOMPARE(*answer, (Packet{PacketCommand::Close, 0, 7, {}}));
        QCOMPARE(phone.log().last().value(u"event"_s), QJsonValue(u"refused"_s));
    }

    void challengesUntilItIsAuthorized()
    {
        PhoneOptions options;
        options.state = u"unauthorized"_s;
        VirtualPhone phone(options);
        WireHost host(phone.port());
        const auto token = static_cast<quint32>(AuthenticationKind::Token);
        std::optional<Packet> first = host.greet();
        QVERIFY(first);
        QCOMPARE(first->command, PacketCommand::Authenticate);
        QCOMPARE(first->first, token);
        QCOMPARE(first->payload.size(), 20);
        host.send({PacketCommand::Authenticate, static_cast<quint32>(AuthenticationKind::Signature), 0,
                   QByteArray(256, 's')});
        const std::optional<Packet> second = host.receive();
        QVERIFY(second);
        QCOMPARE(second->first, token);
        QVERIFY(second->payload != first->payload);
        host.send(open(1, "exec:echo x")); // without effect
        host.send({PacketCommand::Authenticate, static_cast<quint32>(AuthenticationKind::PublicKey), 0,
                   QByteArray("KEY me@here\0", 12)});
        QTRY_COMPARE(phone.log().last().value(u"key"_s), QJsonValue(u"KEY me@here"_s));
        QCOMPARE(phone.command(u"authorize"_s), u"ok"_s);
        const std::optional<Packet> banner = host.receive();
        QVERIFY(banner);
        QCOMPARE(banner->command, PacketCommand::Connect);
        QVERIFY(phone.closed(u"echo"_s).isEmpty());
    }

    void malformedInputEndsTheConnectionOnly_data()
    {
        QTest::addColumn<bool>("greets");
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("text") << false << QByteArray("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n");
        QTest::newRow("zeros") << true << QByteArray(64, '\0');
        QTest::newRow("stream 0") << true << encode(open(0, "exec:echo x"), false);
        QByteArray huge = encode({PacketCommand::Write, 1, 1, {}}, false);
        huge.replace(12, 4, "\xff\xff\xff\x7f");
        QTest::newRow("payload of 2 GiB") << true << huge;
    }

    void malformedInputEndsTheConnectionOnly()
    {
        QFETCH(bool, greets);
        QFETCH(QByteArray, bytes);
        VirtualPhone phone;
        {
            WireHost host(phone.port());
            if (greets)
                QVERIFY(host.greet());
            host.sendBytes(bytes);
            QVERIFY(host.isDisconnected());
        }
        WireHost next(phone.port());
        QVERIFY2(next.greet(), "the phone serves the next host");
    }

    void strangePacketsAreHarmless()
    {
        VirtualPhone phone;
        WireHost host(phone.port());
        host.send(open(1, "exec:echo too early"));
        QVERIFY(host.greet());
        host.send({PacketCommand::Okay, 99, 99, {}});
        host.send({PacketCommand::Close, 99, 99, {}});
        host.send({PacketCommand::Write, 99, 99, "to nobody"});
        host.send({PacketCommand::Authenticate, 77, 0, "x"});
        host.send(open(2, QByteArray()));
        host.send(open(3, "exec:echo alive"));
        QCOMPARE(host.receiveUntil(isFor(3, PacketCommand::Write)).last().payload, QByteArray("alive\n"));
    }

    void anyPacketsInAnyOrderAreSurvived_data()
    {
        QTest::addColumn<quint32>("seed");
        for (const quint32 seed : {1U, 2U, 3U, 4U, 5U})
            QTest::addRow("seed %u", seed) << seed;
    }

    void anyPacketsInAnyOrderAreSurvived()
    {
        QFETCH(quint32, seed);
        constexpr int packets = 2'000;
        const QList<PacketCommand> commands = {PacketCommand::Open,  PacketCommand::Open,  PacketCommand::Okay,
                                               PacketCommand::Write, PacketCommand::Write, PacketCommand::Close};
        const QByteArrayList services = {"exec:cat",
                                         "sync:",
                                         "shell,v2,raw:cat",
                                         "exec:logcat",
                                         "exec:pidof x",
                                         "exec:cmd package install -S 9",
                                         "reverse:forward:localabstract:a;tcp:1",
                                         "exec:'"};
        const QByteArrayList pieces = {"SEND\4\0\0\0/x,6", "DATA", "\0\4\0\0\0", "\1\0\0\0\0", "x", QByteArray()};
        QRandomGenerator random(seed);
        const auto upTo = [&](qsizetype count) {
            return static_cast<quint32>(random.bounded(static_cast<int>(count)));
        };
        VirtualPhone phone;
        {
            WireHost host(phone.port());
            QVERIFY(host.greet());
            for (int index = 0; index < packets; ++index) {
                const PacketCommand command = commands.at(upTo(commands.size()));
                const QByteArray &payload = command == PacketCommand::Open ? services.at(upTo(services.size()))
                                                                           : pieces.at(upTo(pieces.size()));
                host.send({command, upTo(20) + 1, upTo(40), payload});
            }
            host.send(open(99, "exec:echo end"));
            QVERIFY(!host.receiveUntil(isFor(99, PacketCommand::Write)).isEmpty());
        }
        QVERIFY(WireHost(phone.port()).greet());
    }

    void secondGreetingEndsAllStreams()
    {
        VirtualPhone phone;
        WireHost host(phone.port());
        QVERIFY(host.greet());
        host.send(open(1, "exec:cat"));
        host.receiveUntil(isFor(1, PacketCommand::Okay));
        QVERIFY(host.greet());
        QTRY_COMPARE(phone.closed(u"cat"_s).size(), 1);
    }

    void breaksOffAfterSoManyBytes()
    {
        PhoneOptions options;
        options.commands = {u"on flooding flood 10000"_s, u"on flooding drop 1000"_s};
        VirtualPhone phone(options);
        WireHost host(phone.port());
        QVERIFY(host.greet());
        host.send(open(1, "exec:flooding"));
        QCOMPARE(host.receiveUntil(isFor(1, PacketCommand::Write)).last().payload.size(), 1000);
        QVERIFY(host.isDisconnected());
    }

    void silentPhoneAnswersNothing()
    {
        PhoneOptions options;
        options.state = u"offline"_s;
        VirtualPhone phone(options);
        WireHost host(phone.port());
        host.send({PacketCommand::Connect, protocolVersion, maximumPayload, QByteArray("host::\0", 7)});
        QTRY_VERIFY(phone.command(u"status"_s).contains(u"\"connections\":1"_s));
        QCOMPARE(phone.command(u"drop"_s), u"ok 1"_s);
        QVERIFY2(!host.receive(), "nothing came before the connection ended");
    }
};

QTEST_GUILESS_MAIN(ConnectionTest)

#include "ConnectionTest.moc"
