// What a snapshot of the console costs, from the model's new text to the painted window, beside Qt's own text widget
// with the same text, and for how long the program cannot answer a user meanwhile.
#include "Claims.h"
#include "Window.h"

#include "Varda/View/Widgets/ConsoleText.h"

#include <QApplication>
#include <QPlainTextEdit>
#include <QScrollBar>

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace {

using namespace varda;

constexpr int lines = 350;
/// The longest time for which the window may not answer: one picture at 60 per second.
constexpr double onePicture = 0.016;
constexpr int samples = 15;

struct Kind
{
    const char *name;
    int length;
    bool wide;
};

constexpr std::array kinds{Kind{"350 lines of 120 characters", 120, false},
                           Kind{"350 lines of 4,000 characters", 4000, false},
                           Kind{"350 lines of 120 ideographs", 120, true},
                           // An entry of the log holds up to 4,068 bytes, and an ideograph is three of them.
                           Kind{"350 lines of 1,333 ideographs", 1333, true}};

struct Stage
{
    bench::Window window;
    QPlainTextEdit *bare = bench::makeBareConsole(*window.view);
};
Stage *stage = nullptr;

void showInWindow(const QString &text)
{
    stage->window.model->logs = text;
}

void showBare(const QString &text)
{
    stage->bare->setPlainText(text);
    stage->bare->verticalScrollBar()->setValue(stage->bare->verticalScrollBar()->maximum());
}

/// Snapshots that have nothing in common.
const QString &strangeSnapshot(const Kind &kind)
{
    static std::map<const Kind *, std::vector<QString>> texts;
    static size_t number = 0;
    std::vector<QString> &own = texts[&kind];
    while (own.size() < 4)
        own.push_back(bench::logLines(static_cast<int>(own.size()) * 100000, lines, kind.length, kind.wide));
    return own[++number % own.size()];
}

template <size_t Number, void (*Show)(const QString &)>
void replaceAll(benchmark::State &state)
{
    for ([[maybe_unused]] auto _ : state) {
        Show(strangeSnapshot(kinds[Number]));
        bench::settle();
    }
}

template <size_t... Numbers>
void claimReplacing(std::index_sequence<Numbers...>)
{
    (bench::claimRatio(std::string("console, ") + kinds[Numbers].name + ", all new / bare text widget",
                       replaceAll<Numbers, showInWindow>, replaceAll<Numbers, showBare>, 1.2),
     ...);
}

void showUnchanged()
{
    const QString text = strangeSnapshot(kinds[0]);
    showInWindow(text);
    bench::settle();
    const auto *console = stage->window.view->findChild<ConsoleText *>();
    int changes = 0;
    const auto watching =
        QObject::connect(console->document(), &QTextDocument::contentsChange, console, [&] { ++changes; });
    const bench::PaintCounter counter;
    showInWindow(QString(text.constData(), text.size()));
    bench::settle();
    QObject::disconnect(watching);
    const int count = counter.painted() + changes;
    bench::print({"console, the same snapshot again: paint events and changes of the document", std::to_string(count),
                  "", "", "0", bench::verdictOn(count, 0)});
}

/// The text system looks for a font that has them, once for all.
void measureFirstIdeographs()
{
    const double longest =
        bench::longestTurn([] { showInWindow(bench::logLines(1, lines, kinds.back().length, true)); });
    bench::printFigure("console, the first ideographs in the program's life, longest turn of the event loop", longest,
                       onePicture, bench::seconds);
}

void reportLongestTurns(const std::string &claim, const std::vector<double> &window, const std::vector<double> &bare)
{
    const double worst = *std::max_element(window.begin(), window.end());
    const double own = bench::median(window);
    const double beside = bench::median(bare);
    bench::print({claim, bench::seconds(own) + ", at worst " + bench::seconds(worst), bench::seconds(beside),
                  bench::times(own / beside), "≤ " + bench::seconds(onePicture), bench::verdictOn(worst, onePicture)});
}

/// Each in turns with the bare widget.
void measureLongestTurns(const Kind &kind)
{
    std::vector<double> window;
    std::vector<double> bare;
    std::vector<double> windowMoved;
    std::vector<double> bareMoved;
    for (int sample = 0; sample < samples; ++sample) {
        const int first = (sample + 1) * 100000;
        const QString text = bench::logLines(first, lines, kind.length, kind.wide);
        const QString moved = bench::logLines(first + 20, lines, kind.length, kind.wide);
        window.push_back(bench::longestTurn([&] { showInWindow(text); }));
        bare.push_back(bench::longestTurn([&] { showBare(text); }));
        windowMoved.push_back(bench::longestTurn([&] { showInWindow(moved); }));
        bareMoved.push_back(bench::longestTurn([&] { showBare(moved); }));
    }
    reportLongestTurns(std::string("console, ") + kind.name +
                           ", all new, longest turn of the event loop / bare text widget",
                       window, bare);
    reportLongestTurns(std::string("console, ") + kind.name +
                           ", 20 lines new, longest turn of the event loop / bare text widget",
                       windowMoved, bareMoved);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    Stage theStage;
    stage = &theStage;
    measureFirstIdeographs();
    claimReplacing(std::make_index_sequence<kinds.size()>());
    bench::runClaims(&argc, argv);
    showUnchanged();
    for (const Kind &kind : kinds)
        measureLongestTurns(kind);
    delete theStage.bare;
}
