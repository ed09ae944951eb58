// The private temporary directory of one command.
#include "Private/CaptureDirectory.h"
#include "Support/CoreTest.h"
#include "Support/FailureOf.h"

#include <QRegularExpression>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace varda;
using namespace Qt::StringLiterals;

namespace {

/// Sets the umask for as long as it lives.
class Umask
{
public:
    explicit Umask(mode_t mask)
        : m_previous(::umask(mask))
    {
    }
    ~Umask() { ::umask(m_previous); }
    Q_DISABLE_COPY_MOVE(Umask)

private:
    mode_t m_previous;
};

mode_t permissions(const QString &path)
{
    struct stat attributes = {};
    if (::lstat(QFile::encodeName(path).constData(), &attributes) != 0)
        return 0;
    return attributes.st_mode & 07777U;
}

void write(const Descriptor &file, const QByteArray &bytes)
{
    QCOMPARE(::write(file.get(), bytes.constData(), static_cast<size_t>(bytes.size())), bytes.size());
}

} // namespace

class CaptureDirectoryTest : public CoreTest
{
    Q_OBJECT

private Q_SLOTS:
    void isNamedAfterAnUpperCaseUuid()
    {
        const CaptureDirectory directory;
        static const QRegularExpression name(
            u"\\Avarda-[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}\\z"_s);
        QVERIFY2(name.match(only()).hasMatch(), qPrintable(only()));
    }

    void isPrivateWhateverTheUmask_data()
    {
        QTest::addColumn<int>("mask");
        for (const int mask : {0, 022, 077, 0777})
            QTest::addRow("%03o", mask) << mask;
    }
    void isPrivateWhateverTheUmask()
    {
        QFETCH(int, mask);
        const Umask umask(static_cast<mode_t>(mask));
        const CaptureDirectory directory;
        const Descriptor file = directory.createFile("stdout");
        QCOMPARE(permissions(path()), 0700U);
        QCOMPARE(permissions(path("stdout")), 0600U);
    }

    void makesMissingTemporaryDirectoryAsPrivate_data() { isPrivateWhateverTheUmask_data(); }
    void makesMissingTemporaryDirectoryAsPrivate()
    {
        QFETCH(int, mask);
        const QString existing = QDir::tempPath();
        QCOMPARE(::chmod(QFile::encodeName(existing).constData(), 0751), 0);
        qputenv("TMPDIR", QFile::encodeName(existing + u"/a//b/ä b/"_s));
        {
            const Umask umask(static_cast<mode_t>(mask));
            const CaptureDirectory directory;
            QCOMPARE(permissions(path()), 0700U);
        }
        QVERIFY(QDir::temp().isEmpty());
        QCOMPARE(permissions(existing), 0751U);
        for (const QString &made : {u"/a"_s, u"/a/b"_s, u"/a/b/ä b"_s})
            QCOMPARE(permissions(existing + made), 0700U);
    }

    void namesTheTemporaryDirectoryThatCannotBeMade()
    {
        QFile obstacle(m_home->filePath(u"file"_s));
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        obstacle.close();
        qputenv("TMPDIR", QByteArray(QFile::encodeName(obstacle.fileName()) + "/below"));
        QCOMPARE(failureOf([] { const CaptureDirectory directory; }),
                 obstacle.fileName() + u"/below: Not a directory"_s);
        qputenv("TMPDIR", QFile::encodeName(obstacle.fileName()));
        QVERIFY(failureOf([] { const CaptureDirectory directory; }).endsWith(u": Not a directory"));
    }

    void opensFilesForWritingOnlyAndCloseOnExec()
    {
        const CaptureDirectory directory;
        const Descriptor file = directory.createFile("stdout");
        QCOMPARE(::fcntl(file.get(), F_GETFL) & O_ACCMODE, O_WRONLY);
        QCOMPARE(::fcntl(file.get(), F_GETFD), FD_CLOEXEC);
    }

    void neverWritesWhereSomethingStands()
    {
        const CaptureDirectory directory;
        QVERIFY(QFile::link(m_home->filePath(u"elsewhere"_s), path("stdout")));
        QCOMPARE(failureOf([&] { directory.createFile("stdout"); }), path("stdout") + u": File exists"_s);
        QVERIFY(!QFile::exists(m_home->filePath(u"elsewhere"_s)));
    }

    void readsBackWhatWasWritten()
    {
        const CaptureDirectory directory;
        const Descriptor file = directory.createFile("stdout");
        QCOMPARE(directory.size("stdout"), 0);
        QCOMPARE(directory.read("stdout"), QByteArray());
        const QByteArray bytes("a\0b\xFF\r\n", 6);
        write(file, bytes);
        QCOMPARE(directory.size("stdout"), 6);
        QCOMPARE(directory.read("stdout"), bytes);
        QCOMPARE(directory.read("stdout", 3), bytes.first(3));
        QCOMPARE(directory.read("stdout", 0), QByteArray());
    }

    void readsTextAcrossBlocks()
    {
        const CaptureDirectory directory;
        const Descriptor file = directory.createFile("stderr");
        QCOMPARE(directory.readText("stderr"), QString());
        // Three bytes each, so that a block of any usual size ends inside one.
        const QString text = QString(200'000, u'€') + QChar::ReplacementCharacter;
        write(file, QByteArray(text.chopped(1).toUtf8() + '\xFF'));
        QCOMPARE(directory.readText("stderr"), text);
    }

    void saysWhichFileCannotBeRead()
    {
        const CaptureDirectory directory;
        QCOMPARE(directory.size("stdout"), std::nullopt);
        QCOMPARE(failureOf([&] { directory.read("stdout"); }), path("stdout") + u": No such file or directory"_s);
        QCOMPARE(failureOf([&] { directory.readText("stdout"); }), path("stdout") + u": No such file or directory"_s);
        QVERIFY(QDir(path()).mkdir(u"stdout"_s));
        QCOMPARE(failureOf([&] { directory.read("stdout"); }), path("stdout") + u": Is a directory"_s);
    }

    void doesNotBlockOnAPipeInTheFilesPlace()
    {
        const CaptureDirectory directory;
        QCOMPARE(::mkfifo(QFile::encodeName(path("stdout")).constData(), 0600), 0);
        QCOMPARE(directory.read("stdout"), QByteArray());
    }

    void removesAllThatIsInIt()
    {
        {
            const CaptureDirectory directory;
            const Descriptor file = directory.createFile("stdout");
            QVERIFY(QDir(path()).mkpath(u"a/b"_s));
            QVERIFY(QFile::link(QDir::homePath(), path("link")));
        }
        QVERIFY(QDir::temp().isEmpty());
        QVERIFY(QDir::home().exists());
    }

    void canBeRemovedEarlyAndByOthers()
    {
        const CaptureDirectory directory;
        directory.remove();
        QVERIFY(QDir::temp().isEmpty());
        directory.remove();
        QVERIFY(failureOf([&] { directory.createFile("stdout"); }).endsWith(u"/stdout: No such file or directory"));
    }

    void sharesNothingWithAnother()
    {
        const CaptureDirectory first;
        const QString firstName = only();
        {
            const CaptureDirectory second;
            QCOMPARE(QDir::temp().entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(), 2);
        }
        QCOMPARE(only(), firstName);
    }

private:
    /// The one entry of the temporary directory.
    QString only() const { return QDir::temp().entryList(QDir::NoDotAndDotDot | QDir::AllEntries).value(0); }

    QString path(const char *name = nullptr) const
    {
        const QString directory = QDir::tempPath() + u'/' + only();
        return name ? QString(directory + u'/' + QString::fromLatin1(name)) : directory;
    }
};

QTEST_GUILESS_MAIN(CaptureDirectoryTest)
#include "CaptureDirectoryTest.moc"
