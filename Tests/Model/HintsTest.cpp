// What helps is said for the failures that are known, as the tools word them, and for nothing else.
#include "Varda/Model/Hints.h"

#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace varda;

namespace {

struct Transcript
{
    const char *hint; ///< a part of the looked-for words of the row that is to match
    QString text;     ///< as the tool prints it
};

QString failedInstall(const QString &reason)
{
    return u"adb: failed to install /home/me/shop.apk: Failure ["_s + reason + u"]\n"_s;
}

QList<Transcript> transcripts()
{
    return {
        {"UPDATE_INCOMPATIBLE",
         failedInstall(u"INSTALL_FAILED_UPDATE_INCOMPATIBLE: Existing package com.example.shop signatures do not match "
                       "newer version; ignoring!"_s)},
        {"VERSION_DOWNGRADE",
         failedInstall(u"INSTALL_FAILED_VERSION_DOWNGRADE: Downgrade detected: Update version code 3 is older than "
                       "current 7"_s)},
        {"TEST_ONLY", failedInstall(u"INSTALL_FAILED_TEST_ONLY: installPackageLI"_s)},
        {"USER_RESTRICTED", failedInstall(u"INSTALL_FAILED_USER_RESTRICTED: Install canceled by user"_s)},
        {"ABORTED", failedInstall(u"INSTALL_FAILED_ABORTED: User rejected permissions"_s)},
        {"INSUFFICIENT_STORAGE", failedInstall(u"INSTALL_FAILED_INSUFFICIENT_STORAGE"_s)},
        {"NO_MATCHING_ABIS",
         failedInstall(u"INSTALL_FAILED_NO_MATCHING_ABIS: Failed to extract native libraries, res=-113"_s)},
        {"NO_MATCHING_ABIS", failedInstall(u"INSTALL_FAILED_CPU_ABI_INCOMPATIBLE"_s)},
        {"OLDER_SDK", u"Failure [INSTALL_FAILED_OLDER_SDK]\n"_s},
        {"DEPRECATED_SDK_VERSION",
         failedInstall(u"INSTALL_FAILED_DEPRECATED_SDK_VERSION: App package must target at least SDK version 23"_s)},
        {"MISSING_SPLIT", failedInstall(u"INSTALL_FAILED_MISSING_SPLIT: Missing split for com.example.shop"_s)},
        {"MISSING_SHARED_LIBRARY",
         failedInstall(u"INSTALL_FAILED_MISSING_SHARED_LIBRARY: Package requires unavailable shared library"_s)},
        {"MISSING_SHARED_LIBRARY", failedInstall(u"INSTALL_FAILED_MISSING_FEATURE"_s)},
        {"CONFLICTING_PROVIDER", failedInstall(u"INSTALL_FAILED_CONFLICTING_PROVIDER: Can't install because provider "
                                               "name com.example.files is already used by com.example.other"_s)},
        {"DUPLICATE_PERMISSION", failedInstall(u"INSTALL_FAILED_DUPLICATE_PERMISSION: perm=com.example.P"_s)},
        {"SHARED_USER_INCOMPATIBLE", failedInstall(u"INSTALL_FAILED_SHARED_USER_INCOMPATIBLE"_s)},
        {"VERIFICATION_FAILURE", failedInstall(u"INSTALL_FAILED_VERIFICATION_FAILURE"_s)},
        {"VERIFICATION_FAILURE", failedInstall(u"INSTALL_FAILED_VERIFICATION_TIMEOUT"_s)},
        {"NO_CERTIFICATES", failedInstall(u"INSTALL_PARSE_FAILED_NO_CERTIFICATES: Failed collecting certificates for "
                                          "/data/app/vmdl1.tmp/base.apk"_s)},
        {"INCONSISTENT_CERTIFICATES", failedInstall(u"INSTALL_PARSE_FAILED_INCONSISTENT_CERTIFICATES"_s)},
        {"MANIFEST_MALFORMED", failedInstall(u"INSTALL_PARSE_FAILED_MANIFEST_MALFORMED: Failed parse during "
                                             "installPackageLI: Targeting S+ requires android:exported"_s)},
        {"INVALID_APK", failedInstall(u"INSTALL_FAILED_INVALID_APK: Package couldn't be installed"_s)},
        {"INVALID_APK", failedInstall(u"INSTALL_PARSE_FAILED_NOT_APK: Failed to parse base.apk"_s)},
        {"INVALID_APK", failedInstall(u"INSTALL_PARSE_FAILED_BAD_MANIFEST"_s)},
        {"INVALID_APK", failedInstall(u"INSTALL_PARSE_FAILED_UNEXPECTED_EXCEPTION"_s)},
        {"server version", u"adb server version (29) doesn't match this client (41); killing...\nerror: device "
                           "offline\n"_s},
        {"unknown host service", u"error: unknown host service\n"_s},
        {"Address already in use",
         u"* daemon not running; starting now at tcp:5037\nADB server didn't ACK\n* failed to start daemon\nerror: "
         "cannot connect to daemon\n"_s},
        {"device unauthorized", u"error: device unauthorized.\nThis adb server's $ADB_VENDOR_KEYS is not set\n"_s},
        {"device unauthorized", u"error: device still authorizing\n"_s},
        {"device offline", u"adb: device offline\n"_s},
        {"no permissions", u"device no permissions"_s},
        {"no permissions", u"error: insufficient permissions for device: user in plugdev group; are your udev rules "
                           "wrong?\n"_s},
        {"not found", u"adb: device 'R58M42ABCDE' not found\n"_s},
        {"not found", u"error: no devices/emulators found\n"_s},
        {"Wrong password", u"Enter pairing code: Failed: Wrong password or connection was dropped.\n"_s},
        {"protocol fault", u"error: protocol fault (couldn't read status message): Success\n"_s},
        {"authenticate", u"failed to authenticate to 192.168.1.50:41111\n"_s},
        {"resolve host", u"failed to resolve host: 'phone.local'\n"_s},
        {"failed to connect", u"failed to connect to '192.168.1.50:41111': Connection refused\n"_s},
        {"failed to connect", u"failed to connect to 192.168.1.50:41111\n"_s},
        {"closed", u"error: closed\n"_s},
        {"timed out", u"The Android command timed out. Check the phone connection and try again."_s},
        {"/scrcpy: No such", u"/opt/varda/lib/varda/Tools/scrcpy/scrcpy: No such file or directory"_s},
        {"/adb: No such", u"/opt/varda/lib/varda/Tools/platform-tools/adb: No such file or directory"_s},
        {"/adb: No such", u"Android tools are missing from this build."_s},
        {"Exec format error", u"/opt/varda/lib/varda/Tools/platform-tools/adb: Exec format error"_s},
        {"exit 1", u"Screen control stopped (exit 1). Check USB authorization and reconnect the phone."_s},
        {"exit 2", u"Screen control stopped (exit 2). Check USB authorization and reconnect the phone."_s},
        {"No space", u"/tmp/varda-0F/stdout: No space left on device"_s},
    };
}

} // namespace

class HintsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void knowsWhatHelps_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("words");
        for (const Transcript &each : transcripts())
            QTest::newRow(qPrintable(each.text.simplified())) << each.text << QString::fromLatin1(each.hint);
    }
    void knowsWhatHelps()
    {
        QFETCH(QString, text);
        QFETCH(QString, words);
        const auto hints = allHints();
        const auto expected =
            std::find_if(hints.begin(), hints.end(), [&](const Hint &hint) { return hint.words.contains(words); });
        QVERIFY(expected != hints.end());
        QCOMPARE(hintFor(text), expected->advice.toString());
    }

    void hasATranscriptForEachHint()
    {
        QStringList advice;
        for (const Transcript &each : transcripts())
            advice << hintFor(each.text).value_or(QString());
        for (const Hint &hint : allHints())
            QVERIFY2(advice.contains(hint.advice), qPrintable(hint.words.toString()));
    }

    void saysThatThereIsNoReason()
    {
        QVERIFY(hintFor(QString())->startsWith(u"The tool gave no reason."_s));
        QCOMPARE(hintFor(u" \n"_s), hintFor(QString()));
    }

    void saysNothingOfWhatItDoesNotKnow_data()
    {
        QTest::addColumn<QString>("text");
        for (const QString &text :
             {u"Success\n"_s, u"offline"_s, u"closed"_s, u"unauthorized"_s, failedInstall(u"INSTALL_FAILED_OLDER"_s),
              failedInstall(u"INSTALL_FAILED_OLDER_SDK_2"_s), failedInstall(u"MY_INSTALL_FAILED_TEST_ONLY"_s),
              u"Screen control stopped (exit 11)."_s, u"Screen control stopped (exit 139)."_s,
              u"' not found, device 'x'"_s, u"install_failed_test_only"_s, u"��garbage"_s,
              u"Error type 3\nError: Activity class {com.example/.Main} does not exist.\n"_s,
              u"Command output was too large to display safely."_s,
              u"The phone did not return a valid PNG screenshot."_s})
            QTest::newRow(qPrintable(text.simplified())) << text;
    }
    void saysNothingOfWhatItDoesNotKnow()
    {
        QFETCH(QString, text);
        QCOMPARE(hintFor(text), std::nullopt);
    }

    void advisesWithCare()
    {
        for (const Hint &hint : allHints()) {
            const QString advice = hint.advice.toString();
            const QByteArray words = advice.toUtf8();
            QVERIFY2(advice.endsWith(u'.') && advice.count(u". "_s) <= 1, words.constData());
            QVERIFY2(!advice.contains(u"root"_s) && !advice.contains(u"sudo"_s), words.constData());
            QVERIFY2(!advice.contains(u"uninstall"_s) || advice.contains(u"deletes"_s), words.constData());
            QVERIFY2(!hint.source.contains(u"users"_s) || advice.contains(u" may "_s), words.constData());
            QVERIFY2(!hint.source.isEmpty(), words.constData());
        }
    }
};

QTEST_GUILESS_MAIN(HintsTest)
#include "HintsTest.moc"
