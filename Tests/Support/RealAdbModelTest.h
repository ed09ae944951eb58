// RealAdbModelTest: the bench of the tests of the model with the real adb client and simulated phones.
#pragma once

#include "Support/AdbServer.h"
#include "Support/FakeFileDialogs.h"
#include "Support/ModelTest.h"

#include "Support/ProcessCensus.h"
#include "Varda/Model/VardaModel.h"
#include "VirtualPhone/VirtualPhone.h"

#include <QCoroTask>
#include <QObject>
#include <QTemporaryDir>

#include <functional>
#include <list>
#include <memory>
#include <optional>

namespace varda::test {

/// adb's server of such a program has a port, a home and a temporary folder of its own, and ends with the program. All
/// tests are skipped where no adb is staged.
class RealAdbModelTest : public QObject
{
    Q_OBJECT

protected:
    /// Runs adb beside the model.
    void adb(const QStringList &arguments) const;
    /// Another phone, in use until the test function ends.
    VirtualPhone &addPhone(const PhoneOptions &options = {});
    /// Connects the model to the phone, which it then has selected.
    void connectTo(const VirtualPhone &phone);
    /// Calls `start` and waits for the end of the action that it starts.
    void perform(const std::function<void()> &start);
    void refresh() { QCoro::waitFor(model->refresh()); }
    /// The device of that serial in the model's list.
    std::optional<AndroidDevice> listed(const QString &serial) const;
    /// Makes a file of `size` bytes to install.
    QString makeBuild(const QString &name, qsizetype size);
    /// A path in a folder that is emptied after each test.
    QString path(const QString &name) const { return m_files->filePath(name); }

    std::list<VirtualPhone> phones;
    std::shared_ptr<DialogScript> dialogs;
    std::shared_ptr<VardaModel> model;

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

private:
    std::optional<AdbServer> m_adb;
    std::optional<QTemporaryDir> m_files;
    std::optional<ProcessCensus> m_census;
};

} // namespace varda::test
