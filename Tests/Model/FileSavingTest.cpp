// What Varda writes, a console export and a screenshot: the whole of it or nothing, whatever the target is.
//
// A full disk and an unwritable folder are small file systems mounted in a mount namespace of this test's own.
#include "Support/ModelTest.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string>
#include <thread>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace varda::test;

namespace {

/// The thread that last waited for a disk.
std::thread::id waitedForDisk;

} // namespace

/// Before the C library's, for all libraries.
extern "C" int fsync(int descriptor)
{
    waitedForDisk = std::this_thread::get_id();
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace {

const QByteArray pngSignature("\x89PNG\r\n\x1a\n", 8);

/// Why this process cannot mount anything; empty where it can.
std::string mountTrouble;

/// Gives this process, while it has one thread, a mount namespace of its own.
void enterOwnMountNamespace()
{
    const std::string user = "0 " + std::to_string(geteuid()) + " 1";
    const std::string group = "0 " + std::to_string(getegid()) + " 1";
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        mountTrouble = std::strerror(errno);
        return;
    }
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << user;
    std::ofstream("/proc/self/gid_map") << group;
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        mountTrouble = std::strerror(errno);
}

/// A file system of 64 KiB mounted on a folder.
class SmallDisk
{
public:
    explicit SmallDisk(const QString &folder)
        : m_folder(QFile::encodeName(folder))
    {
        QDir().mkpath(folder);
        m_mounted = mount("none", m_folder.constData(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk() { umount2(m_folder.constData(), MNT_DETACH); }
    Q_DISABLE_COPY_MOVE(SmallDisk)

    bool mounted() const { return m_mounted; }
    bool makeReadOnly() const
    {
        return mount("none", m_folder.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
    }

private:
    const QByteArray m_folder;
    bool m_mounted = false;
};

mode_t permissions(const QString &path)
{
    struct stat information
    {
    };
    stat(QFile::encodeName(path).constData(), &information);
    return information.st_mode & 07777;
}

} // namespace

class FileSavingTest : public ModelTest
{
    Q_OBJECT

private:
    void addWriters()
    {
        QTest::addColumn<QString>("writer");
        QTest::newRow("export") << u"export"_s;
        QTest::newRow("screenshot") << u"screenshot"_s;
    }

    /// Saves `bytes` to `path` in the way that the row names; gives the failure's description.
    QString save(const QString &path, const QByteArray &bytes)
    {
        QFETCH(QString, writer);
        dialogs->locations = {path};
        model->error = std::nullopt;
        if (writer == u"export") {
            model->logs = QString::fromLatin1(bytes);
            model->exportLogs();
        } else {
            selectPhone();
            adb().on({u"-s"_s, serial, u"exec-out"_s, u"screencap"_s, u"-p"_s}).prints(pngSignature + bytes);
            perform([this] { model->screenshot(); });
        }
        return model->error().value_or(QString());
    }

    QStringList files(const QString &folder = {}) const
    {
        return QDir(scratch(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    }

private Q_SLOTS:
    void createsAFileWithTheUsualPermissions_data() { addWriters(); }
    void createsAFileWithTheUsualPermissions()
    {
        const mode_t mask = umask(027);
        const QString failure = save(scratch(u"new"_s), "bytes");
        umask(mask);
        QCOMPARE(failure, QString());
        QCOMPARE(permissions(scratch(u"new"_s)), mode_t(0640));
        QCOMPARE(files(), QStringList({u"new"_s}));
    }

    void replacesAFileAndKeepsItsPermissions_data() { addWriters(); }
    void replacesAFileAndKeepsItsPermissions()
    {
        const QString path = makeFile(u"old"_s, QByteArray(500, 'o'));
        QCOMPARE(chmod(QFile::encodeName(path).constData(), 0604), 0);
        QCOMPARE(save(path, "bytes"), QString());
        QVERIFY(contents(path).endsWith("bytes"));
        QVERIFY(contents(path).size() < 500);
        QCOMPARE(permissions(path), mode_t(0604));
        QCOMPARE(files(), QStringList({u"old"_s}));
    }

    void replacesWhatALinkLeadsToAndKeepsTheLink_data() { addWriters(); }
    void replacesWhatALinkLeadsToAndKeepsTheLink()
    {
        QVERIFY(QDir().mkdir(scratch(u"elsewhere"_s)));
        const QString target = makeFile(u"elsewhere/target"_s, "old");
        const QString link = scratch(u"link"_s);
        QVERIFY(QFile::link(u"elsewhere/target"_s, link)); // relative to the link's folder, not to ours
        QCOMPARE(save(link, "bytes"), QString());
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(!QFileInfo(target).isSymLink());
        QVERIFY(contents(target).endsWith("bytes"));
        QCOMPARE(files(), QStringList({u"elsewhere"_s, u"link"_s}));
        QCOMPARE(files(u"elsewhere"_s), QStringList({u"target"_s}));
    }

    void createsWhatADanglingLinkLeadsTo_data() { addWriters(); }
    void createsWhatADanglingLinkLeadsTo()
    {
        const QString link = scratch(u"link"_s);
        QVERIFY(QFile::link(scratch(u"target"_s), link));
        QCOMPARE(save(link, "bytes"), QString());
        QVERIFY(QFileInfo(link).isSymLink());
        QVERIFY(contents(scratch(u"target"_s)).endsWith("bytes"));
    }

    void anotherNameOfTheOldFileKeepsTheOldContents_data() { addWriters(); }
    void anotherNameOfTheOldFileKeepsTheOldContents()
    {
        const QString path = makeFile(u"old"_s, "old");
        const QString other = scratch(u"other name"_s);
        QCOMPARE(link(QFile::encodeName(path).constData(), QFile::encodeName(other).constData()), 0);
        QCOMPARE(save(path, "bytes"), QString());
        QVERIFY(contents(path).endsWith("bytes"));
        QCOMPARE(contents(other), QByteArray("old")); // a new file took the old one's place: nothing was overwritten
    }

    void savesUnderOddNames_data()
    {
        QTest::addColumn<QString>("writer");
        QTest::addColumn<QString>("name");
        for (const QString &writer : {u"export"_s, u"screenshot"_s}) {
            for (const QString &name : {u" blanks "_s, u"it's \"quoted\""_s, u"Größe 日本 👍🏽.txt"_s,
                                        u"-dash"_s, u".hidden"_s, u"100%25#?&.txt"_s, u"XXXXXX"_s, u"two\nlines"_s})
                QTest::newRow(qUtf8Printable(writer + u" to '" + name + u'\'')) << writer << name;
            QTest::newRow(qUtf8Printable(writer + u" to 255 bytes")) << writer << QString(255, u'x');
        }
    }
    void savesUnderOddNames()
    {
        QFETCH(QString, name);
        QCOMPARE(save(scratch(name), "bytes"), QString());
        QCOMPARE(files(), QStringList({name}));
        QVERIFY(contents(scratch(name)).endsWith("bytes"));
    }

    void impossibleTargetIsAFailureInWords_data()
    {
        QTest::addColumn<QString>("writer");
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("reason");
        for (const QString &writer : {u"export"_s, u"screenshot"_s}) {
            const auto row = [&](const QString &target, const QString &reason) {
                QTest::newRow(qUtf8Printable(writer + u" to '" + target.left(40) + u'\''))
                    << writer << target << reason;
            };
            row(u"no folder/file"_s, u"No such file or directory"_s);
            row(u"a file/file"_s, u"Not a directory"_s);
            row(u"a folder"_s, u"refers to a directory"_s);
            row(QString(256, u'x'), u"File name too long"_s);
        }
    }
    void impossibleTargetIsAFailureInWords()
    {
        QFETCH(QString, target);
        QFETCH(QString, reason);
        makeFile(u"a file"_s);
        QVERIFY(QDir().mkdir(scratch(u"a folder"_s)));
        const QStringList before = files();
        const QString failure = save(scratch(target), "bytes");
        QVERIFY2(failure.contains(scratch(target)), qUtf8Printable(failure));
        QVERIFY2(failure.contains(reason, Qt::CaseInsensitive), qUtf8Printable(failure));
        QCOMPARE(files(), before);
        QCOMPARE(contents(scratch(u"a file"_s)), QByteArray("contents"));
    }

    void fullDiskKeepsTheOldFileAndLeavesNothing_data()
    {
        QTest::addColumn<QString>("writer");
        QTest::addColumn<int>("taken");
        QTest::addColumn<int>("size");
        for (const QString &writer : {u"export"_s, u"screenshot"_s}) {
            QTest::newRow(qUtf8Printable(writer + u", more than the disk")) << writer << 0 << 1'000'000;
            QTest::newRow(qUtf8Printable(writer + u", a little more than is free")) << writer << 20'000 << 50'000;
            QTest::newRow(qUtf8Printable(writer + u", a few bytes when nothing is free")) << writer << 64'000 << 5'000;
        }
    }
    void fullDiskKeepsTheOldFileAndLeavesNothing()
    {
        QFETCH(int, taken);
        QFETCH(int, size);
        if (!mountTrouble.empty())
            QSKIP(("A small file system cannot be mounted here: " + mountTrouble).c_str());
        const SmallDisk disk(scratch(u"disk"_s));
        QVERIFY(disk.mounted());
        const QString path = makeFile(u"disk/file"_s, "old");
        QFile ballast(scratch(u"disk/ballast"_s));
        QVERIFY(ballast.open(QIODevice::WriteOnly));
        ballast.write(QByteArray(taken, 'b'));
        ballast.close();

        const QString failure = save(path, QByteArray(size, 'n'));
        QVERIFY2(failure.contains(path) && failure.contains(u"No space left on device"), qUtf8Printable(failure));
        QCOMPARE(contents(path), QByteArray("old"));
        const QString secondFailure = save(scratch(u"disk/another"_s), QByteArray(size, 'n'));
        QVERIFY2(secondFailure.contains(u"No space left on device"), qUtf8Printable(secondFailure));
        QCOMPARE(files(u"disk"_s), QStringList({u"ballast"_s, u"file"_s}));

        QVERIFY(ballast.remove());
        QCOMPARE(save(path, "small"), QString());
        QVERIFY(contents(path).endsWith("small"));
    }

    void unwritableFolderKeepsTheOldFile_data() { addWriters(); }
    void unwritableFolderKeepsTheOldFile()
    {
        if (!mountTrouble.empty())
            QSKIP(("A read-only file system cannot be mounted here: " + mountTrouble).c_str());
        const SmallDisk disk(scratch(u"disk"_s));
        QVERIFY(disk.mounted());
        const QString path = makeFile(u"disk/file"_s, "old");
        QVERIFY(disk.makeReadOnly());
        const QString failure = save(path, "bytes");
        QVERIFY2(failure.contains(path) && failure.contains(u"is not writable"), qUtf8Printable(failure));
        const QString another = scratch(u"disk/another"_s);
        const QString secondFailure = save(another, "bytes");
        QVERIFY2(secondFailure.contains(another) && secondFailure.contains(u"Read-only file system"),
                 qUtf8Printable(secondFailure));
        QCOMPARE(contents(path), QByteArray("old"));
        QCOMPARE(files(u"disk"_s), QStringList({u"file"_s}));
    }

    void windowDoesNotWaitForTheDiskThatTakesAScreenshot()
    {
        selectPhone();
        adb().on({u"-s"_s, serial, u"exec-out"_s, u"screencap"_s, u"-p"_s}).prints(pngSignature);
        dialogs->locations = {scratch(u"new"_s)};
        waitedForDisk = {};
        perform([this] { model->screenshot(); });
        QCOMPARE(contents(scratch(u"new"_s)), pngSignature);
        QVERIFY(waitedForDisk != std::thread::id());
        QVERIFY(waitedForDisk != std::this_thread::get_id());
    }
};

int main(int argc, char **argv)
{
    enterOwnMountNamespace();
    QCoreApplication application(argc, argv);
    FileSavingTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "FileSavingTest.moc"
