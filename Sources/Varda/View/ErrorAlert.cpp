// ErrorAlert: tied to what it lies on, and in front again when that takes the focus.
#include "Varda/View/ErrorAlert.h"

#include "Varda/Model/Hints.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/HintBlock.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QGuiApplication>
#include <QVBoxLayout>
#include <QWindow>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int alertWidth = 460;
constexpr int padding = 24;
constexpr int spacing = 12;
constexpr int iconSize = 22;
constexpr int maxTextHeight = 320;

} // namespace

ErrorAlert::ErrorAlert(QWidget *window)
    : FittedDialog(alertWidth, window)
    , m_text(new TextBlock(theme::font(theme::bodySize), theme::text, QAccessible::StaticText, this))
    , m_hint(new HintBlock(u"alertHint"_s, this))
{
    setObjectName(u"alert"_s);
    setWindowTitle(u"Varda"_s);
    setWindowModality(Qt::WindowModal);
    auto *title = new IconLabel(Icon::Warning, iconSize, u"Varda"_s, theme::font(theme::title2Size, QFont::Bold), this);
    title->setIconColour(theme::attention);
    title->setObjectName(u"alertTitle"_s);
    m_text->setObjectName(u"alertText"_s);
    m_text->setMaximumTextHeight(maxTextHeight);
    auto *ok = new Button(Button::Kind::Primary, u"OK"_s, std::nullopt, this);
    ok->setObjectName(u"alertButton"_s);
    ok->setDefault(true);
    ok->setMinimumWidth(88);
    QObject::connect(ok, &Button::clicked, this, &QDialog::accept);

    auto *message = new QHBoxLayout; // lines the text up with the title, in spite of its own inset
    message->setContentsMargins(0, 0, 0, 0);
    message->addSpacing(padding - TextBlock::inset);
    message->addWidget(m_text);
    message->addSpacing(padding - TextBlock::inset);
    auto *head = new QHBoxLayout;
    head->setContentsMargins(padding, 0, padding, 0);
    head->addWidget(title);
    auto *advice = new QHBoxLayout;
    advice->setContentsMargins(padding, 0, padding, 0);
    advice->addWidget(m_hint);
    auto *foot = new QHBoxLayout;
    foot->setContentsMargins(padding, 4, padding, 0);
    foot->addStretch(1);
    foot->addWidget(ok);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(0, padding, 0, padding - 4);
    stack->setSpacing(spacing);
    stack->addLayout(head);
    stack->addLayout(message);
    stack->addLayout(advice);
    stack->addLayout(foot);
    ok->setFocus();

    // What lies below may be given the keyboard late, because it was opened just before.
    QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow *focused) {
        if (focused && isVisible() && focused == windowHandle()->transientParent())
            activateWindow();
    });
}

void ErrorAlert::present(const QString &text, QWidget *host)
{
    m_text->setMessage(text);
    m_text->setVisible(!m_text->document()->isEmpty()); // or it would leave a gap
    m_hint->setHint(hintFor(text));
    if (isVisible())
        return;
    create(); // the native window, which is then tied to the host's; asking for its number would make its parents' too
    if (QWindow *below = host->window()->windowHandle())
        windowHandle()->setTransientParent(below);
    open();
    raise();
    activateWindow();
}

void ErrorAlert::withdraw()
{
    hide();
}

} // namespace varda
