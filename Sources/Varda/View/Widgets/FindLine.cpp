// FindLine: a field, the count of the matches, and a button for each way to go.
#include "Varda/View/Widgets/FindLine.h"

#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>

namespace varda {
namespace {

using namespace Qt::StringLiterals;

constexpr int gap = 4;
constexpr int countGap = 8;

Button *makeButton(const QString &objectName, const QString &name, Icon icon, QWidget *parent)
{
    auto *button = new Button(Button::Kind::Bare, {}, icon, parent);
    button->setObjectName(objectName);
    button->setAccessibleName(name);
    return button;
}

QString countText(qsizetype selected, qsizetype count)
{
    if (selected > 0)
        return u"%1 of %2"_s.arg(selected).arg(count);
    if (count == 0)
        return u"No match"_s;
    return count == 1 ? u"1 match"_s : u"%1 matches"_s.arg(count);
}

} // namespace

FindLine::FindLine(const QString &name, QWidget *parent)
    : QWidget(parent)
    , previous(makeButton(u"findPreviousButton"_s, u"Previous match"_s, Icon::Up, this))
    , next(makeButton(u"findNextButton"_s, u"Next match"_s, Icon::Down, this))
    , closing(makeButton(u"findCloseButton"_s, u"Close find"_s, Icon::Close, this))
    , m_field(new QLineEdit(this))
    , m_count(makeText({}, theme::font(theme::bodySize), theme::secondaryText, this))
{
    setObjectName(u"findLine"_s);
    m_field->setObjectName(u"findField"_s);
    m_field->setAccessibleName(name);
    m_field->setPlaceholderText(name);
    m_field->setAcceptDrops(false);
    m_field->setFont(theme::font(theme::bodySize));
    m_count->setObjectName(u"findCount"_s);
    m_count->setWordWrap(false);
    setTabOrder(m_field, previous);
    setTabOrder(previous, next);
    setTabOrder(next, closing);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(gap);
    row->addWidget(m_field, 1);
    row->addSpacing(countGap);
    row->addWidget(m_count);
    row->addSpacing(countGap);
    row->addWidget(previous);
    row->addWidget(next);
    row->addWidget(closing);
    hide();

    QObject::connect(m_field, &QLineEdit::textChanged, this, &FindLine::wordsChanged);
    QObject::connect(previous, &Button::clicked, this, [this] { Q_EMIT matchAsked(false); });
    QObject::connect(next, &Button::clicked, this, [this] { Q_EMIT matchAsked(true); });
    showCount(0, 0);
}

void FindLine::open()
{
    QWidget *focused = window()->focusWidget();
    if (!isAncestorOf(focused))
        m_focusedBefore = focused;
    show();
    m_field->setFocus();
    m_field->selectAll();
}

void FindLine::dismiss(QWidget &fallback)
{
    if (isAncestorOf(window()->focusWidget())) {
        const bool back = m_focusedBefore && m_focusedBefore->isVisible() && m_focusedBefore->isEnabled();
        (back ? m_focusedBefore.data() : &fallback)->setFocus();
    }
    hide();
}

QString FindLine::words() const
{
    return isHidden() ? QString() : m_field->text();
}

void FindLine::showCount(qsizetype selected, qsizetype count)
{
    const bool searching = !words().isEmpty();
    const QString text = searching ? countText(selected, count) : QString();
    if (text != m_count->text()) {
        m_count->setText(text);
        setTextColour(*m_count, count == 0 ? theme::attention : theme::secondaryText);
    }
    previous->setEnabled(count > 0);
    next->setEnabled(count > 0);
}

void FindLine::keyPressEvent(QKeyEvent *event)
{
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (enter && m_field->hasFocus())
        Q_EMIT matchAsked(!event->modifiers().testFlag(Qt::ShiftModifier));
    else
        QWidget::keyPressEvent(event);
}

} // namespace varda
