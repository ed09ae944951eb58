// ModelTest: sets the bench up before each test, and looks for what was left behind after it.
#include "Support/ModelTest.h"

#include "Support/StandIn.h"
#include "VardaCore/CommandRunner.h"

#include <QDir>
#include <QFile>

namespace varda::test {

using namespace Qt::StringLiterals;

void settle()
{
    for (int i = 0; i < 3; ++i)
        resultOf(CommandRunner::run(standIn(), {}, std::nullopt, guardTime));
}

ModelTest::ModelTest()
    : m_home(QDir::tempPath() + u"/model-test-XXXXXX")
{
    QDir(m_home.path()).mkdir(u"tmp"_s);
    qputenv("TMPDIR", QFile::encodeName(m_home.filePath(u"tmp"_s)));
}

ModelTest::~ModelTest() = default;

AndroidDevice ModelTest::device(const QString &serial, const QString &state, const QString &name)
{
    return {serial, state, name};
}

void ModelTest::selectPhone()
{
    selectPhone(device(serial));
}

void ModelTest::selectPhone(const AndroidDevice &phone)
{
    model->devices = {phone};
    model->selectedID = phone.id;
    writes->take();
}

void ModelTest::addMissingRows()
{
    QTest::addColumn<QString>("missing");
    for (const QString &each : {u"device"_s, u"unauthorized"_s, u"offline"_s, u"no permissions"_s, u"recovery"_s,
                                u"sideload"_s, u"bootloader"_s, u"unplugged"_s, u"idle"_s})
        QTest::newRow(qUtf8Printable(each)) << each;
}

void ModelTest::arrangeMissing(const QString &missing)
{
    const bool present = missing == u"unplugged" || missing == u"idle" || missing == u"nothing";
    if (present)
        selectPhone();
    else if (missing != u"device")
        selectPhone(device(serial, missing));
    if (missing == u"unplugged")
        model->devices = {device(u"another"_s)};
    model->busy = missing == u"idle";
    writes->take();
}

void ModelTest::perform(const std::function<void()> &start)
{
    start();
    eventually([this] { return !model->busy(); });
}

void ModelTest::letGo()
{
    tools->open(u"go"_s);
    COMPARE_SOON(model->busy(), false);
}

bool ModelTest::called(const StandInTool &tool, const QStringList &arguments, qsizetype times)
{
    return eventually([&] { return tool.count(arguments) >= times; });
}

QStringList ModelTest::failure(const QString &working, const QString &error)
{
    return {u"busy=true"_s, u"status="_s + working, u"error="_s + error, u"status="_s + working + u" failed."_s,
            u"busy=false"_s};
}

QStringList ModelTest::success(const QString &working, const QString &outcome)
{
    return {u"busy=true"_s, u"status="_s + working, u"status="_s + outcome, u"busy=false"_s};
}

QString ModelTest::scratch(const QString &name) const
{
    return m_home.filePath(u"files/"_s + name);
}

QString ModelTest::makeFile(const QString &name, const QByteArray &contents) const
{
    const QString path = scratch(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("Cannot write %s: %s", qUtf8Printable(path), qUtf8Printable(file.errorString()));
    return path;
}

void ModelTest::init()
{
    QDir(m_home.path()).mkdir(u"files"_s);
    tools.emplace();
    dialogs = std::make_shared<DialogScript>();
    model = VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
    writes.emplace(*model);
    m_census.emplace();
}

void ModelTest::cleanup()
{
    if (QTest::currentTestFailed())
        tools->release();
    const std::weak_ptr<VardaModel> watched = model;
    if (model)
        model->stop();
    writes.reset();
    model.reset();
    VERIFY_SOON(watched.expired());
    QCOMPARE(m_census->leftovers(), QString());
    COMPARE_SOON(QDir(QDir::tempPath()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
    for (const ToolCall &call : tools->unexpectedCalls())
        QFAIL(qPrintable(u"No rule for the call: "_s + call.arguments().join(u' ')));
    tools.reset();
    QVERIFY(QDir(m_home.filePath(u"files"_s)).removeRecursively());
}

} // namespace varda::test
