// RenderOnce: renders one change to the window, once, in a function of its own, for an instruction counter:
//
//   valgrind --tool=callgrind --toggle-collect='measured()' RenderOnce CHANGE
//
// where CHANGE is one of those below. Scripts that count run it (count-instructions).
#include "Window.h"

#include <QApplication>

#include <cstdio>
#include <cstring>

namespace {

using namespace varda;

constexpr int lines = 350;

struct Change
{
    const char *name;
    int length;     ///< of the console's lines, in characters
    int linesMoved; ///< how many lines of the console go and come
    bool wide;
};

constexpr Change changes[] = {{"tick", 120, 0, false},
                              {"one-line", 120, 1, false},
                              {"all-lines", 120, lines, false},
                              {"one-long-line", 4000, 1, false},
                              {"all-long-lines", 4000, lines, false},
                              {"all-wide-lines", 120, lines, true},
                              {"all-long-wide-lines", 4000, lines, true}};

std::shared_ptr<VardaModel> model;
QString snapshot;

} // namespace

/// What a tick publishes, and all that the window makes of it.
[[gnu::noinline]] void measured()
{
    model->devices = QList<AndroidDevice>(model->devices());
    model->logs = snapshot;
    bench::settle();
}

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    for (const Change &change : changes) {
        if (argc != 2 || std::strcmp(change.name, argv[1]) != 0)
            continue;
        const bench::Window window;
        model = window.model;
        // What is made once and kept, such as fonts, is not counted.
        model->logs = bench::logLines(1000000, lines, change.length, change.wide);
        bench::settle();
        model->logs = bench::logLines(1, lines, change.length, change.wide);
        bench::settle();
        snapshot = bench::logLines(1 + change.linesMoved, lines, change.length, change.wide);
        measured();
        model.reset();
        return 0;
    }
    std::fputs("usage: RenderOnce CHANGE\n", stderr);
    return 2;
}
