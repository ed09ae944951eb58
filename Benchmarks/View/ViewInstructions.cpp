// The window's hot paths: what a tick publishes, and all that the window makes of it until it is painted.
#include "Counted.h"
#include "Window.h"

#include <QApplication>

#include <array>

namespace {

using namespace varda;

constexpr int lines = 350;

/// Publishes one snapshot after another, each of which has `moved` lines that the one before has not.
struct MovingConsole
{
    void operator()()
    {
        if (next == 0) { // not counted
            for (QString &text : snapshots)
                text = bench::logLines(first++ * moved, lines, length, wide);
            show();
        }
        show();
    }

    void show()
    {
        model->devices = QList<AndroidDevice>(model->devices());
        model->logs = snapshots.at(next++);
        bench::settle();
    }

    VardaModel *model;
    int length;
    int moved;
    bool wide = false;
    std::array<QString, 3> snapshots = {};
    int first = 1;
    size_t next = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const bench::Window window;
    VardaModel *model = window.model.get();
    return bench::followPaths(
        argc, argv,
        {
            {"tick without change rendered to the window", MovingConsole{model, 120, 0}},
            {"console of 350 lines of 120 characters, one line new", MovingConsole{model, 120, 1}},
            {"console of 350 lines of 120 characters, all new", MovingConsole{model, 120, lines}},
            {"console of 350 lines of 4,000 characters, all new", MovingConsole{model, 4000, lines}},
            {"console of 350 lines of 1,333 ideographs, all new", MovingConsole{model, 1333, lines, true}},
        });
}
