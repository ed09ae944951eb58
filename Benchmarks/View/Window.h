// Window: the workspace window on a model that was never started, as a benchmark drives it.
#pragma once

#include "Varda/Model/VardaModel.h"
#include "Varda/View/VardaView.h"

#include <QStringList>

#include <functional>
#include <memory>

class QPlainTextEdit;

namespace varda::bench {

/// A text with the numbers of the lines in it: `count` lines of `length` characters from line `first` on, each ended by
/// a line feed. Lines of different numbers differ. `wide` lines are of ideographs, from their twentieth character on.
QString logLines(int first, int count, int length, bool wide = false);

/// Runs turns of the event loop until nothing is left to do.
void settle();

/// Does `change` and settles; answers the longest turn of the event loop on the way in seconds, `change` being one.
double longestTurn(const std::function<void()> &change);

/// Counts the paint events of the program's widgets while it lives.
class PaintCounter final : public QObject
{
public:
    PaintCounter();

    int painted() const { return m_painted; }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    int m_painted = 0;
};

/// The window with one phone attached and selected, shown and painted, its console in sight.
class Window
{
public:
    Window();

    const std::shared_ptr<VardaModel> model;
    const std::unique_ptr<VardaView> view;
};

/// What the window's text is measured against: Qt's own text widget, in a window of its own, with the same text, font
/// and size as the window's console.
QPlainTextEdit *makeBareConsole(const VardaView &view);

} // namespace varda::bench
