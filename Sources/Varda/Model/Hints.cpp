// Hints: one table. What names its cause most exactly comes first: an answer may hold the words of several rows.
#include "Varda/Model/Hints.h"

#include "VardaCore/Text.h"

#include <algorithm>
#include <array>

namespace varda {

namespace {

// Sources of the advice.
constexpr QStringView packageManager = u"Android: PackageManager's INSTALL_* constants";
constexpr QStringView documentation = u"Android: developer documentation";
constexpr QStringView adbMessages = u"adb 34: its messages";
constexpr QStringView measured = u"measured with adb 34 and scrcpy 4.1";
constexpr QStringView reported = u"reported by users of some makes, hence \"may\"";
constexpr QStringView own = u"Varda itself";

constexpr auto hints = std::to_array<Hint>({
    // Installing
    {u"INSTALL_FAILED_UPDATE_INCOMPATIBLE",
     u"The app on the phone was signed with another key. Sign the build with that key, or uninstall the app on the "
     "phone first, which deletes its data.",
     packageManager},
    {u"INSTALL_FAILED_VERSION_DOWNGRADE",
     u"The phone has a newer version of this app. Raise versionCode, or uninstall the app on the phone first, which "
     "deletes its data.",
     packageManager},
    {u"INSTALL_FAILED_TEST_ONLY",
     u"The build is marked android:testOnly, as an IDE’s Run button does. Build the APK from the build menu or with "
     "assembleDebug.",
     documentation},
    {u"INSTALL_FAILED_USER_RESTRICTED",
     u"The phone does not allow this installation, or its question was not answered: unlock it and try again. Some "
     "makes may need “Install via USB” in the developer options.",
     reported},
    {u"INSTALL_FAILED_ABORTED",
     u"The installation was stopped on the phone. Look at its screen: a question may be waiting there.", reported},
    {u"INSTALL_FAILED_INSUFFICIENT_STORAGE", u"The phone has no room for this build. Free some storage on the phone.",
     packageManager},
    {u"INSTALL_FAILED_NO_MATCHING_ABIS|INSTALL_FAILED_CPU_ABI_INCOMPATIBLE",
     u"The build’s native code is for other processors. Add the phone’s ABI, nearly always arm64-v8a, to the build.",
     packageManager},
    {u"INSTALL_FAILED_OLDER_SDK",
     u"The phone’s Android is older than the build’s minSdk. Lower minSdk, or use a phone with a newer Android.",
     packageManager},
    {u"INSTALL_FAILED_DEPRECATED_SDK_VERSION",
     u"The phone’s Android refuses builds for such an old targetSdk. Raise targetSdk.", documentation},
    {u"INSTALL_FAILED_MISSING_SPLIT", u"This APK is one part of an app that was split. Build a universal APK.",
     packageManager},
    {u"INSTALL_FAILED_MISSING_SHARED_LIBRARY|INSTALL_FAILED_MISSING_FEATURE",
     u"The build requires something that this phone does not have. Make it optional in the manifest, or use another "
     "phone.",
     packageManager},
    {u"INSTALL_FAILED_CONFLICTING_PROVIDER",
     u"Another app on the phone has a content provider with the same authority. Derive the authority from the package "
     "ID.",
     packageManager},
    {u"INSTALL_FAILED_DUPLICATE_PERMISSION",
     u"Another app on the phone defines the same permission with another key. Rename the permission, or uninstall the "
     "other app, which deletes that app’s data.",
     packageManager},
    {u"INSTALL_FAILED_SHARED_USER_INCOMPATIBLE",
     u"The build shares a user ID with an app that was signed with another key. Sign it with that key.",
     packageManager},
    {u"INSTALL_FAILED_VERIFICATION_FAILURE|INSTALL_FAILED_VERIFICATION_TIMEOUT",
     u"The phone’s app verification refused the build or did not answer. See “Verify apps over USB” in the developer "
     "options.",
     documentation},
    {u"INSTALL_PARSE_FAILED_NO_CERTIFICATES",
     u"The build is not signed, or not in a way that this phone accepts. Sign it; a debug build is signed by itself.",
     packageManager},
    {u"INSTALL_PARSE_FAILED_INCONSISTENT_CERTIFICATES",
     u"The build’s parts are signed with different keys, or with another key than the installed app. Clean, build and "
     "sign it again.",
     packageManager},
    {u"INSTALL_PARSE_FAILED_MANIFEST_MALFORMED",
     u"The build’s manifest has an error; the reason stands behind that word.", packageManager},
    {u"INSTALL_FAILED_INVALID_APK|INSTALL_PARSE_FAILED_NOT_APK|INSTALL_PARSE_FAILED_BAD_MANIFEST|"
     "INSTALL_PARSE_FAILED_UNEXPECTED_EXCEPTION",
     u"The phone cannot read this file as an APK: it may be incomplete, or made for a newer Android. Build it again.",
     packageManager},
    // Reaching the phone
    {u"server version…doesn't match this client",
     u"Another program runs an adb of another version, and the two end each other’s server. Close that program, or "
     "have it use the same adb.",
     measured},
    {u"unknown host service",
     u"The adb server that is running is too old to pair. Close the program that started it, or run “adb kill-server”, "
     "and try again.",
     measured},
    {u"Address already in use|cannot connect to daemon|failed to start daemon",
     u"adb cannot start its server. Another program may hold port 5037 of this computer.", adbMessages},
    {u"device unauthorized|device still authorizing",
     u"Unlock the phone and allow USB debugging for this computer. If the phone does not ask, revoke the USB debugging "
     "authorizations in its developer options and plug it in again.",
     documentation},
    {u"device offline",
     u"The phone is listed but does not answer. Plug it in again, or switch USB debugging off and on; over Wi-Fi, "
     "connect again.",
     measured},
    {u"no permissions|insufficient permissions for device",
     u"This computer does not let you open the phone. Install android-sdk-platform-tools-common, which brings the udev "
     "rules, and plug the phone in again.",
     measured},
    {u"device '…' not found|no devices/emulators found|no devices found",
     u"The phone is no longer there. Plug it in again, or connect again over Wi-Fi.", adbMessages},
    {u"Failed: Wrong password",
     u"The code was wrong, or it is no longer shown. The phone shows a new code and a new address each time.",
     adbMessages},
    {u"protocol fault (couldn't read status",
     u"The code was wrong or old, or this is not the pairing address. Use the code and the address that the phone "
     u"shows "
     "together; both are new each time.",
     measured},
    {u"failed to authenticate to", u"The phone does not know this computer, or has forgotten it. Pair it again.",
     measured},
    {u"failed to resolve host", u"No such host is known on this network. Check the address.", adbMessages},
    {u"failed to connect to|Unable to start pairing client",
     u"Nothing answers at this address, or the phone does not know this computer: pair it first. Check that both are "
     u"in "
     "the same network and that Wireless debugging is still open on the phone, because its port changes.",
     measured},
    {u"error: closed|adb: closed|device disconnected",
     u"The connection to the phone broke off. Try again; if it happens often, try another cable or port.", adbMessages},
    {u"The Android command timed out.",
     u"The tool did not end in time. Plug the phone in again, and close other programs that use it.", own},
    // The tools and this computer
    {u"/scrcpy/scrcpy: No such file or directory",
     u"scrcpy is not installed with this Varda. In a build, run Scripts/stage-tools; for a package, see “man varda”.",
     own},
    {u"/platform-tools/adb: No such file or directory|Android tools are missing from this build.",
     u"adb is not installed with this Varda. In a build, run Scripts/stage-tools; otherwise install the package again.",
     own},
    {u"/platform-tools/adb: Permission denied|/platform-tools/adb: Exec format error|"
     "/scrcpy/scrcpy: Permission denied|/scrcpy/scrcpy: Exec format error",
     u"This file is not a program for this computer. In a build, run Scripts/stage-tools; otherwise install the "
     u"package "
     "again.",
     own},
    // scrcpy 4.1 also ends so about once in a hundred times that its window is closed on a busy machine.
    {u"Screen control stopped (exit 1)",
     u"If you have just closed its window, all is well. Otherwise unlock the phone and try again; some makes may need "
     "“USB debugging (Security settings)” in the developer options.",
     reported},
    {u"Screen control stopped (exit 2)", u"The phone went away while it was shown. Plug it in or connect it again.",
     measured},
    {u": No space left on device", u"There is no room left at this place. Free some space and try again.", own},
});

constexpr QStringView noReason = u"The tool gave no reason. Try again; if it happens again, plug the phone in anew.";

bool isWordCharacter(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

/// Where `piece` stands in `text` from `from` on, not as a part of a longer word; -1 if it does not.
qsizetype find(QStringView text, QStringView piece, qsizetype from)
{
    for (qsizetype at = text.indexOf(piece, from); at >= 0; at = text.indexOf(piece, at + 1)) {
        const qsizetype end = at + piece.size();
        const bool startsInside = at > 0 && isWordCharacter(piece.front()) && isWordCharacter(text[at - 1]);
        const bool endsInside = end < text.size() && isWordCharacter(piece.back()) && isWordCharacter(text[end]);
        if (!startsInside && !endsInside)
            return at;
    }
    return -1;
}

bool holdsInOrder(QStringView text, QStringView alternative)
{
    qsizetype from = 0;
    for (const QStringView piece : alternative.split(u'…')) {
        const qsizetype at = find(text, piece, from);
        if (at < 0)
            return false;
        from = at + piece.size();
    }
    return true;
}

} // namespace

std::span<const Hint> allHints()
{
    return hints;
}

std::optional<QString> hintFor(const QString &text)
{
    if (trimmed(text).isEmpty())
        return noReason.toString();
    const auto matches = [&](const Hint &hint) {
        const auto alternatives = hint.words.split(u'|');
        return std::any_of(alternatives.begin(), alternatives.end(),
                           [&](QStringView each) { return holdsInOrder(text, each); });
    };
    const auto found = std::find_if(hints.begin(), hints.end(), matches);
    return found == hints.end() ? std::nullopt : std::optional(found->advice.toString());
}

} // namespace varda
