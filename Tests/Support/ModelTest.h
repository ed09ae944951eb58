// ModelTest: the bench on which every test of the model stands: a fresh model, stand-in tools, arranged dialogs, a
// record of the published writes, and the proof after each test that nothing was left behind.
#pragma once

#include "Support/FakeFileDialogs.h"
#include "Support/StandInTools.h"
#include "Support/WriteRecorder.h"

#include "Support/ProcessCensus.h"
#include "Varda/Model/VardaModel.h"

#include <QObject>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace varda::test {

/// How long to wait for something that is sure to come; long, for the machine may be busy.
constexpr std::chrono::milliseconds patience{20000};

/// Lets the event loop run until `condition` holds.
inline bool comesTrue(const std::function<bool()> &condition)
{
    return QTest::qWaitFor(condition, static_cast<int>(patience.count()));
}

/// Lets the event loop run for `time`: to see that something does not happen.
void turnFor(std::chrono::milliseconds time);

/// Lets the event loop run for long enough that a command just asked for would have started: to see that none was.
void turn();

class ModelTest : public QObject
{
    Q_OBJECT

protected:
    ModelTest();
    ~ModelTest() override;

    StandInTool &adb() { return tools->adb(); }
    StandInTool &scrcpy() { return tools->scrcpy(); }

    /// A device row.
    static AndroidDevice device(const QString &serial, const QString &state = QStringLiteral("device"),
                                const QString &name = QStringLiteral("Pixel 7"));
    /// Lists one ready phone, `serial`, and selects it; the writes that this takes are not recorded.
    void selectPhone();
    void selectPhone(const AndroidDevice &phone);

    /// The rows of a test of guards, in the column "missing": what an action needs and lacks, or the state that the
    /// phone is in instead of "device".
    static void addMissingRows();
    /// Arranges what a row of these says: nothing selected ("device"), the selected phone gone ("unplugged"), an action
    /// in flight ("idle"), all there ("nothing"), or the phone in that state. These writes are not recorded.
    void arrangeMissing(const QString &missing);

    /// The rows of a test of tools that cannot be launched: what is the "trouble" with the tool, and the "reason" that
    /// the user is told.
    static void addBrokenToolRows();
    /// Arranges what a row of these says.
    static void breakTool(const StandInTool &tool, const QString &trouble);

    /// Calls `start` and waits for the end of the action that it starts.
    void perform(const std::function<void()> &start);
    /// Waits until the tool has been called `times` times with these arguments.
    static bool called(const StandInTool &tool, const QStringList &arguments, qsizetype times = 1);

    /// The writes of an action that failed so, from its start to its end.
    static QStringList failure(const QString &working, const QString &error);
    /// The writes of an action that ended with `outcome`.
    static QStringList success(const QString &working, const QString &outcome);

    /// A path in a folder of the test's own that is emptied after each test.
    QString scratch(const QString &name) const;
    /// Makes a file there.
    QString makeFile(const QString &name, const QByteArray &contents = "contents") const;
    static QByteArray contents(const QString &path);

    const QString serial = QStringLiteral("R58M42ABCDE");

    std::optional<StandInTools> tools;
    std::shared_ptr<DialogScript> dialogs;
    std::shared_ptr<VardaModel> model;
    std::optional<WriteRecorder> writes;

private Q_SLOTS:
    void init();
    void cleanup();

private:
    QTemporaryDir m_home;
    std::optional<ProcessCensus> m_census;
};

} // namespace varda::test

/// Like QVERIFY, for what becomes true soon.
#define VERIFY_SOON(condition)                                                                                         \
    QVERIFY2(varda::test::comesTrue([&] { return static_cast<bool>(condition); }), #condition)
/// Like QCOMPARE, for what becomes equal soon.
#define COMPARE_SOON(actual, expected)                                                                                 \
    do {                                                                                                               \
        varda::test::comesTrue([&] { return (actual) == (expected); });                                                \
        QCOMPARE(actual, expected);                                                                                    \
    } while (false)
