// ModelTest: the bench on which every test of the model stands: a fresh model, stand-in tools, arranged dialogs, a
// record of the published writes, and the proof after each test that nothing was left behind.
#pragma once

#include "Support/FakeFileDialogs.h"
#include "Support/FileContents.h"
#include "Support/StandInTools.h"
#include "Support/Wait.h"
#include "Support/WriteRecorder.h"

#include "Support/ProcessCensus.h"
#include "Varda/Model/VardaModel.h"

#include <QObject>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <optional>

namespace varda::test {

/// Has the event loop turn and a few commands come and go, one after the other: a command that was asked for before has
/// been launched by then. To see that none was.
void settle();

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

    /// Calls `start` and waits for the end of the action that it starts.
    void perform(const std::function<void()> &start);
    /// Waits until the tool has been called `times` times with these arguments.
    static bool called(const StandInTool &tool, const QStringList &arguments, qsizetype times = 1);

    /// Opens the gate "go", and waits for the end of the action that it held up.
    void letGo();

    /// The writes of an action that failed so, from its start to its end.
    static QStringList failure(const QString &working, const QString &error);
    /// The writes of an action that ended with `outcome`.
    static QStringList success(const QString &working, const QString &outcome);

    /// A path in a folder of the test's own that is emptied after each test.
    QString scratch(const QString &name) const;
    /// Makes a file there.
    QString makeFile(const QString &name, const QByteArray &contents = "contents") const;

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
