// soak: a day of the model's life in minutes. Phones come and go, the console is on, a random action starts every few
// ticks and some of them fail, while memory in use, descriptors and threads are watched.
//
//   soak [--window] TICKS [SEED]
//
// With --window the model has its window, which renders whatever happens, in memory instead of on a display.
// Waits in which nothing happens are skipped (skipIdleTime); everything else, processes and files included, is real.
// Ends with 1 when something has grown.
#include "Faults/Interposition.h"
#include "Support/FakeFileDialogs.h"

#include "Varda/Model/VardaModel.h"
#include "Varda/View/Appearance.h"
#include "Varda/View/VardaView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <random>
#include <string_view>
#include <vector>

#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace std::string_view_literals;
using namespace varda;
using namespace varda::test;

namespace {

/// Less than the pause between two ticks, so that gestures meet a tick at every stage.
constexpr auto gesturePause = 1700ms;
constexpr auto renderTime = 10ms;
constexpr int samplesPerRun = 40;

/// In bytes: what may be in use at the end beyond what was in use after the first quarter. An allocation lost per tick
/// would be many times as much.
constexpr long allowedGrowth = 8L * 1024;
/// With the window, whose caches and layouts come and go.
constexpr long allowedGrowthOfWindow = 24L * 1024;
/// In bytes: what is larger is counted by number, for a picture of an alert is as large as the alert was.
constexpr int largeBlock = 48 * 1024;
constexpr long allowedLargeBlocks = 1;
constexpr long allowedDescriptors = 4;
constexpr long allowedThreads = 1;

struct Sample
{
    long heap;     ///< bytes that the C library has handed out in blocks up to largeBlock
    long blocks;   ///< larger blocks
    long resident; ///< bytes
    long descriptors;
    long threads;
    long directories; ///< capture directories
};

long entries(const QString &path, const QStringList &filter = {})
{
    return QDir(path).entryList(filter, QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

long residentBytes()
{
    QFile file(u"/proc/self/statm"_s);
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLong() * 4096 : 0;
}

Sample takeSample()
{
    const auto memory = ::mallinfo2();
    return {
        static_cast<long>(memory.uordblks), static_cast<long>(memory.hblks), residentBytes(),
        entries(u"/proc/self/fd"_s),        entries(u"/proc/self/task"_s),   entries(QDir::tempPath(), {u"varda-*"_s})};
}

/// The stand-in tools beside this program, and their counters.
class Stage
{
public:
    Stage()
        : m_directory(QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../lib/varda/Tools"_s))
    {
        for (const QString &tool : {u"platform-tools/adb"_s, u"scrcpy/scrcpy"_s}) {
            const QString path = m_directory + u'/' + tool;
            QDir().mkpath(QFileInfo(path).path());
            QFile::remove(path);
            std::filesystem::create_hard_link(SOAK_TOOL, path.toStdString());
        }
        m_counters.setFileName(m_directory + u"/counters"_s);
        if (!m_counters.open(QIODevice::ReadWrite | QIODevice::Truncate) || !m_counters.resize(2 * sizeof(quint64)))
            qFatal("Cannot write %s", qUtf8Printable(m_counters.fileName()));
        m_numbers = reinterpret_cast<const volatile quint64 *>(m_counters.map(0, m_counters.size()));
    }

    quint64 runs() const { return m_numbers[0]; }
    quint64 listings() const { return m_numbers[1]; }

private:
    QString m_directory;
    QFile m_counters;
    const volatile quint64 *m_numbers;
};

/// A user who never rests.
class Driver
{
public:
    Driver(VardaModel &model, DialogScript &dialogs, const QString &folder, unsigned seed)
        : m_model(model)
        , m_dialogs(dialogs)
        , m_folder(folder)
        , m_random(seed)
    {
        QFile build(folder + u"/build.apk"_s);
        if (!build.open(QIODevice::WriteOnly))
            qFatal("Cannot write %s", qUtf8Printable(build.fileName()));
        build.close();
        model.acceptAPK(QUrl::fromLocalFile(build.fileName()));
    }

    void gesture()
    {
        if (m_model.error())
            m_model.error = std::nullopt;
        m_model.logging = m_model.logging() || chance(2);
        if (chance(9))
            selectAnother();
        if (!m_model.busy() && chance(4)) {
            act(static_cast<int>(m_random() % 9));
            ++m_actions;
        }
    }

    /// Has nothing shown that takes room: for samples that can be compared.
    void clear()
    {
        m_model.selectedID = std::nullopt;
        m_model.devices = {};
        m_model.packageName = QString();
        m_model.status = QString();
        m_model.error = std::nullopt;
    }

    int actions() const { return m_actions; }

private:
    bool chance(unsigned oneIn) { return m_random() % oneIn == 0; }

    void selectAnother()
    {
        const QList<AndroidDevice> &devices = m_model.devices();
        if (!devices.isEmpty())
            m_model.selectedID = devices[static_cast<qsizetype>(m_random() % static_cast<size_t>(devices.size()))].id;
        m_model.packageName = chance(2) ? u"com.example.app"_s : QString();
    }

    void act(int number)
    {
        m_model.connectEndpoint = u"192.168.1.50:37123"_s;
        m_model.pairingEndpoint = u"192.168.1.50:40123"_s;
        m_model.pairingCode = u"482916"_s;
        m_dialogs.locations = {m_folder + u"/file"_s};
        m_dialogs.saveQuestions.clear();
        switch (number) {
        case 0:
            return m_model.install();
        case 1:
            return m_model.appAction(true);
        case 2:
            return m_model.appAction(false);
        case 3:
            return m_model.listApps();
        case 4:
            return m_model.screenshot();
        case 5:
            return m_model.pair();
        case 6:
            return m_model.connect();
        case 7:
            return m_model.exportLogs();
        default:
            return m_model.mirrorPhone(chance(2));
        }
    }

    VardaModel &m_model;
    DialogScript &m_dialogs;
    const QString m_folder;
    std::mt19937 m_random;
    int m_actions = 0;
};

using Samples = std::vector<Sample>;

/// The lowest heap in use among some samples: without the log or the alert that came in between.
long lowestHeap(Samples::const_iterator begin, Samples::const_iterator end)
{
    return std::min_element(begin, end, [](const Sample &a, const Sample &b) { return a.heap < b.heap; })->heap;
}

/// The largest value of a member among some samples.
template <long Sample::*member>
long most(Samples::const_iterator begin, Samples::const_iterator end)
{
    const auto less = [](const Sample &a, const Sample &b) { return a.*member < b.*member; };
    return (*std::max_element(begin, end, less)).*member;
}

bool isFlat(const char *what, const Samples &samples, long (*of)(Samples::const_iterator, Samples::const_iterator),
            long allowed)
{
    const auto quarter = static_cast<long>(samples.size() / 4);
    const long before = of(samples.begin() + quarter, samples.end() - quarter);
    const long after = of(samples.end() - quarter, samples.end());
    const bool flat = after <= before + allowed;
    std::printf("%-22s %10ld in the second and third quarter, %10ld in the last: %s\n", what, before, after,
                flat ? "flat" : "GROWN");
    return flat;
}

/// For comparison only: pages come back to the system late.
void show(quint64 ticks, const Sample &sample, const Driver &driver, const Stage &stage)
{
    std::printf("%6llu ticks, %6llu commands, %5d actions: heap %8ld and %2ld large blocks, resident %9ld, "
                "descriptors %2ld, threads %2ld\n",
                ticks, stage.runs(), driver.actions(), sample.heap, sample.blocks, sample.resident, sample.descriptors,
                sample.threads);
    std::fflush(stdout);
}

/// Leaves out what the offscreen platform cannot do.
void report(QtMsgType, const QMessageLogContext &, const QString &message)
{
    if (!message.startsWith(u"This plugin does not support"))
        std::fprintf(stderr, "%s\n", qUtf8Printable(message));
}

std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv, bool windowed)
{
    if (!windowed)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler(report);
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop is the one whose waits are skipped
    auto application = std::make_unique<QApplication>(argc, argv);
    prepareAppearance();
    return application;
}

} // namespace

int main(int argc, char *argv[])
{
    // All threads' memory is counted, and (see Scripts/soak) none that is kept for reuse.
    ::mallopt(M_ARENA_MAX, 1);
    ::mallopt(M_MMAP_THRESHOLD, largeBlock);
    const QTemporaryDir folder;
    for (const char *variable : {"TMPDIR", "HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, QFile::encodeName(folder.path()));
    const bool windowed = argc > 1 && argv[1] == "--window"sv;
    const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv, windowed);
    const QStringList arguments = QCoreApplication::arguments().mid(windowed ? 1 : 0);
    const quint64 ticks = arguments.value(1).toULongLong();
    const unsigned seed = arguments.size() > 2 ? arguments[2].toUInt() : std::random_device()();
    if (ticks < samplesPerRun) {
        std::fprintf(stderr, "usage: soak [--window] TICKS [SEED], at least %d ticks\n", samplesPerRun);
        return 2;
    }
    std::printf("seed %u\n", seed);
    const Stage stage;
    const auto dialogs = std::make_shared<DialogScript>();
    const auto model = VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
    const std::unique_ptr<VardaView> window = windowed ? std::make_unique<VardaView>(model) : nullptr;
    if (window)
        window->show();
    Driver driver(*model, *dialogs, folder.path(), seed);
    Samples samples;
    samples.reserve(samplesPerRun + 1);

    QTimer gestures;
    QObject::connect(&gestures, &QTimer::timeout, application.get(), [&] {
        driver.gesture();
        if (!model->busy() && stage.listings() >= ticks * (samples.size() + 1) / samplesPerRun) {
            driver.clear();
            QTimer::singleShot(renderTime, application.get(), [&] {
                samples.push_back(takeSample());
                show(stage.listings(), samples.back(), driver, stage);
            });
        }
        if (stage.listings() >= ticks && !model->busy())
            QCoreApplication::quit();
    });
    gestures.start(gesturePause);
    model->start();
    skipIdleTime(true);
    QCoreApplication::exec();
    model->stop();

    bool flat = isFlat("heap in use (bytes)", samples, lowestHeap, windowed ? allowedGrowthOfWindow : allowedGrowth);
    flat = isFlat("large blocks", samples, most<&Sample::blocks>, allowedLargeBlocks) && flat;
    flat = isFlat("descriptors", samples, most<&Sample::descriptors>, allowedDescriptors) && flat;
    flat = isFlat("threads", samples, most<&Sample::threads>, allowedThreads) && flat;
    flat = isFlat("capture directories", samples, most<&Sample::directories>, 1) && flat;
    std::printf("%llu ticks, %llu commands, %d actions\n", stage.listings(), stage.runs(), driver.actions());
    return flat ? 0 : 1;
}
