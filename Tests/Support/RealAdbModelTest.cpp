// RealAdbModelTest: stages adb beside the test program, connects phones, and looks for what was left behind.
#include "Support/RealAdbModelTest.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

namespace varda::test {

using namespace Qt::StringLiterals;

void RealAdbModelTest::initTestCase()
{
    const QFileInfo staged(QStringLiteral(STAGED_TOOLS "/platform-tools/adb"));
    if (!staged.isExecutable())
        QSKIP("There is no adb at " STAGED_TOOLS "/platform-tools; Scripts/stage-tools puts it there.");
    const QString tools = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../lib/varda/Tools");
    QDir(tools).removeRecursively();
    QVERIFY(QDir().mkpath(tools));
    QVERIFY(QFile::link(staged.absolutePath(), tools + u"/platform-tools"));
    m_adb.emplace(staged.filePath());
    m_adb->enterEnvironment();
}

void RealAdbModelTest::cleanupTestCase()
{
    m_adb.reset();
}

void RealAdbModelTest::init()
{
    m_files.emplace();
    dialogs = std::make_shared<DialogScript>();
    model = VardaModel::create(std::make_unique<FakeFileDialogs>(dialogs));
    m_census.emplace();
}

void RealAdbModelTest::cleanup()
{
    const std::weak_ptr<VardaModel> watched = model;
    model->stop();
    model.reset();
    VERIFY_SOON(watched.expired());
    phones.clear();
    QCOMPARE(m_census->leftovers(), QString());
    adb({u"disconnect"_s});
    m_files.reset();
}

void RealAdbModelTest::adb(const QStringList &arguments) const
{
    QVERIFY(m_adb->run(arguments).exitCode >= 0);
}

VirtualPhone &RealAdbModelTest::addPhone(const PhoneOptions &options)
{
    VirtualPhone &phone = phones.emplace_back(options);
    if (!phone.errorString().isEmpty())
        qFatal("%s", qUtf8Printable(phone.errorString()));
    return phone;
}

void RealAdbModelTest::perform(const std::function<void()> &start)
{
    start();
    QVERIFY(model->busy());
    VERIFY_SOON(!model->busy());
}

void RealAdbModelTest::connectTo(const VirtualPhone &phone)
{
    model->connectEndpoint = phone.endpoint();
    perform([this] { model->connect(); });
    QCOMPARE(model->error(), std::nullopt);
    QCOMPARE(model->selectedID(), std::optional(phone.serial()));
    // The phone is listed as offline for the moment between the connection and its banner.
    QVERIFY(eventually([this] {
        refresh();
        return model->selected()->ready();
    }));
}

std::optional<AndroidDevice> RealAdbModelTest::listed(const QString &serial) const
{
    for (const AndroidDevice &each : model->devices()) {
        if (each.id == serial)
            return each;
    }
    return std::nullopt;
}

QString RealAdbModelTest::makeBuild(const QString &name, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator random(42);
    for (char &byte : bytes)
        byte = static_cast<char>(random.generate());
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("%s", qUtf8Printable(file.errorString()));
    file.write(bytes);
    return file.fileName();
}

} // namespace varda::test
