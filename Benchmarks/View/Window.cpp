// Window: see the header.
#include "Window.h"

#include "Support/FakeFileDialogs.h"
#include "Varda/View/Appearance.h"
#include "Varda/View/Widgets/ConsoleText.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QScrollArea>

#include <algorithm>
#include <chrono>

namespace varda::bench {

namespace {

using namespace Qt::StringLiterals;

/// One turn; false where there was nothing to do.
bool turn()
{
    return QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents);
}

std::shared_ptr<VardaModel> makeModel()
{
    prepareAppearance();
    auto model = VardaModel::create(std::make_unique<test::FakeFileDialogs>());
    model->devices = QList<AndroidDevice>{{u"R58M42ABCDE"_s, u"device"_s, u"Pixel 8"_s}};
    model->selectedID = u"R58M42ABCDE"_s;
    return model;
}

} // namespace

QString logLines(int first, int count, int length, bool wide)
{
    QString text;
    text.reserve(qsizetype(count) * (length + 1));
    for (int number = first; number < first + count; ++number) {
        const qsizetype start = text.size();
        text += u"11-20 14:%1 D "_s.arg(number, 8, 10, QChar(u'0'));
        for (qsizetype place = text.size() - start; place < length; ++place) {
            const auto varied = static_cast<char16_t>((number * 31 + place * 7) % (wide ? 2000 : 90));
            text += QChar(static_cast<char16_t>((wide ? 0x4E00 : u'!') + varied));
        }
        text += u'\n';
    }
    return text;
}

void settle()
{
    while (turn()) {
    }
}

double longestTurn(const std::function<void()> &change)
{
    using Clock = std::chrono::steady_clock;
    Clock::duration longest{0};
    auto begun = Clock::now();
    change();
    for (bool more = true; more;) {
        const auto ended = Clock::now();
        longest = std::max(longest, ended - begun);
        begun = ended;
        more = turn();
    }
    return std::chrono::duration<double>(longest).count();
}

PaintCounter::PaintCounter()
{
    QCoreApplication::instance()->installEventFilter(this);
}

bool PaintCounter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint && watched->isWidgetType())
        ++m_painted;
    return false;
}

Window::Window()
    : model(makeModel())
    , view(std::make_unique<VardaView>(model))
{
    view->show();
    settle();
    view->findChild<QScrollArea *>(u"mainColumn"_s)->ensureWidgetVisible(view->findChild<ConsoleText *>());
    settle();
}

QPlainTextEdit *makeBareConsole(const VardaView &view)
{
    const auto *console = view.findChild<ConsoleText *>();
    auto *bare = new QPlainTextEdit;
    bare->setReadOnly(true);
    bare->setLineWrapMode(QPlainTextEdit::NoWrap);
    bare->setFont(console->font());
    bare->resize(console->size());
    bare->show();
    settle();
    return bare;
}

} // namespace varda::bench
