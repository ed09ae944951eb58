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
constexpr int spacing = 16;
constexpr int iconSize = 22;
constexpr int maxTextHeight = 312;

} // namespace

ErrorAlert::ErrorAlert(QWidget *window)
    : FittedDialog(alertWidth, window)
{
    setObjectName(u"alert"_s);
    setWindowTitle(u"Varda"_s);
    setWindowModality(Qt::WindowModal);

    // What lies below may be given the keyboard late, because it was opened just before.
    QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow *focused) {
        if (focused && isVisible() && focused == windowHandle()->transientParent())
            activateWindow();
    });
}

void ErrorAlert::build()
{
    m_text = new TextBlock(theme::font(theme::bodySize), theme::text, QAccessible::StaticText, this);
    m_hint = new HintBlock(u"alertHint"_s, this);
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

    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(padding, padding, padding, padding - 4);
    stack->setSpacing(spacing);
    stack->addWidget(title);
    stack->addWidget(m_text);
    stack->addWidget(m_hint);
    stack->addWidget(ok, 0, Qt::AlignRight);
    ok->setFocus();
}

void ErrorAlert::present(const QString &text, QWidget *host)
{
    ensureBuilt();
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
