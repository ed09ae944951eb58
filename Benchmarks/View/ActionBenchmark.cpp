// What actions take, from the press of the button to the outcome, beside the same adb run from a shell, pair by pair.
#include "AttachedPhone.h"
#include "Claims.h"
#include "Support/FakeFileDialogs.h"
#include "Varda/Model/VardaModel.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <cstdlib>
#include <vector>

namespace {

using namespace Qt::StringLiterals;
using namespace varda;

/// What is over sooner needs more pairs: both take some ten seconds.
constexpr int installs = 25;
constexpr int screenshots = 120;
constexpr qsizetype buildSize = 30'000'000; // bytes
constexpr double goal = 1.05;

double secondsOf(const std::function<void()> &work)
{
    const auto begun = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
}

/// Does one of the model's actions, from its start to its outcome, which has to be a success.
void act(VardaModel &model, const std::function<void()> &action)
{
    action();
    while (model.busy())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    if (model.error())
        qFatal("%s", qUtf8Printable(*model.error()));
}

void runInShell(const QString &command)
{
    if (std::system(qUtf8Printable(command)) != 0)
        qFatal("The shell fails at %s", qUtf8Printable(command));
}

/// The first pair warms both up. The two take turns at going first.
void compare(const std::string &claim, int pairs, const std::function<void()> &throughVarda,
             const std::function<void()> &byHand)
{
    std::vector<double> varda;
    std::vector<double> shell;
    for (int pair = 0; pair <= pairs; ++pair) {
        const double before = pair % 2 == 0 ? secondsOf(byHand) : 0;
        const double measured = secondsOf(throughVarda);
        const double floor = pair % 2 == 0 ? before : secondsOf(byHand);
        if (pair == 0)
            continue;
        varda.push_back(measured);
        shell.push_back(floor);
    }
    const double measured = bench::median(varda);
    const double floor = bench::median(shell);
    bench::printRatio(claim, bench::seconds(measured), bench::seconds(floor), measured / floor, goal);
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QString home = QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/.."_s);
    const bench::AttachedPhone phone(home, bench::AttachedPhone::Adb::Real);
    const QTemporaryDir folder;
    const QString build = folder.filePath(u"build.apk"_s);
    const QString picture = folder.filePath(u"picture.png"_s);
    QFile file(build);
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(buildSize, 'x')) != buildSize)
        qFatal("%s cannot be written", qUtf8Printable(build));
    file.close();

    const auto script = std::make_shared<test::DialogScript>();
    const auto model = VardaModel::create(std::make_unique<test::FakeFileDialogs>(script));
    QCoro::waitFor(model->refresh());
    model->acceptAPK(QUrl::fromLocalFile(build));
    if (!model->takesActions() || !model->apk())
        qFatal("No phone or no build: %s", qUtf8Printable(model->status()));

    const QString adb = u"%1/lib/varda/Tools/platform-tools/adb -s %2 "_s.arg(home, *model->selectedID());
    const std::string beside = " (" + phone.name().toStdString() + ") / adb run from a shell";
    compare(
        "install of 30 MB" + beside, installs, [&] { act(*model, [&] { model->install(); }); },
        [&] { runInShell(adb + u"install -r %1 > %2/answer 2>&1"_s.arg(build, folder.path())); });
    compare(
        "screenshot" + beside, screenshots,
        [&] {
            script->locations = {picture};
            act(*model, [&] { model->screenshot(); });
        },
        [&] { runInShell(adb + u"exec-out screencap -p > "_s + picture); });
}
