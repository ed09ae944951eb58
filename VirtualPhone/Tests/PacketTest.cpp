// The wire protocol's frames, compared with bytes written out by hand.
#include "Adb/Packet.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace varda::phone;

namespace {

const QByteArray connectFrame = QByteArray::fromHex("434e584e" // "CNXN"
                                                    "01000001" // version, little endian
                                                    "00001000" // 1 MiB
                                                    "07000000" // length of "host::\0"
                                                    "32020000" // sum of its bytes
                                                    "bcb1a7b1" // "CNXN" with all bits inverted
                                                    "686f73743a3a00");

const Packet connectPacket{PacketCommand::Connect, protocolVersion, maximumPayload, QByteArray("host::\0", 7)};

/// The frame of a WRTE packet with the length word replaced.
QByteArray frameOfLength(quint32 length)
{
    QByteArray frame = encode({PacketCommand::Write, 1, 2, {}}, false);
    for (int index = 0; index < 4; ++index)
        frame[12 + index] = static_cast<char>(length >> (8 * index));
    return frame;
}

} // namespace

class PacketTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void encodesTheFrame()
    {
        QCOMPARE(encode(connectPacket, true).toHex(), connectFrame.toHex());
        QCOMPARE(encode(connectPacket, false).mid(16, 4), QByteArray(4, '\0'));
    }

    void decodesTheFrame()
    {
        PacketReader reader;
        reader.append(connectFrame);
        QCOMPARE(reader.next(), std::optional(connectPacket));
        QCOMPARE(reader.next(), std::optional<Packet>());
        QCOMPARE(reader.error(), QString());
    }

    void decodesByteByByte()
    {
        PacketReader reader;
        for (qsizetype index = 0; index < connectFrame.size() - 1; ++index) {
            reader.append(connectFrame.mid(index, 1));
            QVERIFY(!reader.next());
        }
        reader.append(connectFrame.right(1));
        QCOMPARE(reader.next(), std::optional(connectPacket));
    }

    void decodesSeveralPacketsAtOnce()
    {
        const Packet write{PacketCommand::Write, 3, 4, "data"};
        const Packet okay{PacketCommand::Okay, 5, 6, {}};
        PacketReader reader;
        reader.append(encode(write, false) + encode(okay, false) + connectFrame.left(10));
        QCOMPARE(reader.next(), std::optional(write));
        QCOMPARE(reader.next(), std::optional(okay));
        QVERIFY(!reader.next());
        QCOMPARE(reader.error(), QString());
    }

    void largestPayloadIsAccepted()
    {
        const Packet write{PacketCommand::Write, 3, 4, QByteArray(maximumPayload, 'x')};
        PacketReader reader;
        reader.append(encode(write, false));
        QCOMPARE(reader.next(), std::optional(write));
    }

    void malformedFrameBreaksTheStream_data()
    {
        QTest::addColumn<QByteArray>("frame");
        QByteArray magic = connectFrame;
        magic[20] = '\0';
        QTest::newRow("magic") << magic;
        QTest::newRow("payload one byte too long") << frameOfLength(maximumPayload + 1);
        QTest::newRow("payload of 4 GiB") << frameOfLength(0xffffffff);
        QTest::newRow("unknown command") << QByteArray::fromHex("58585858") + QByteArray(16, '\0') +
                                                QByteArray::fromHex("a7a7a7a7");
        QTest::newRow("text") << QByteArray("GET / HTTP/1.1\r\nHost: localhost\r\n\r\n");
    }

    void malformedFrameBreaksTheStream()
    {
        QFETCH(QByteArray, frame);
        PacketReader reader;
        reader.append(frame);
        QVERIFY(!reader.next());
        QVERIFY(!reader.error().isEmpty());
        reader.append(connectFrame);
        QVERIFY2(!reader.next(), "a broken stream stays broken");
    }

    void checksumCountsOnlyForTheOlderVersion()
    {
        QByteArray write = encode({PacketCommand::Write, 3, 4, "data"}, true);
        write[16] = static_cast<char>(write.at(16) + 1);
        PacketReader newer;
        newer.append(write);
        QVERIFY(newer.next());

        PacketReader older;
        older.setChecksumRequired(true);
        older.append(encode({PacketCommand::Write, 3, 4, "data"}, true));
        QVERIFY(older.next());
        older.append(write);
        QVERIFY(!older.next());
        QVERIFY(!older.error().isEmpty());
    }

    void connectPacketIsCheckedByItsOwnVersion()
    {
        Packet packet = connectPacket;
        PacketReader newer;
        newer.append(encode(packet, false));
        QVERIFY(newer.next());
        packet.first = protocolVersionWithChecksum;
        PacketReader older;
        older.append(encode(packet, false));
        QVERIFY(!older.next());
        QVERIFY(!older.error().isEmpty());
    }
};

QTEST_GUILESS_MAIN(PacketTest)

#include "PacketTest.moc"
