// HintBlock: in the accent colour, for orange is the colour of what went wrong.
#include "Varda/View/Widgets/HintBlock.h"

#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"

namespace varda {
namespace {

constexpr int horizontalPadding = 16;
constexpr int verticalPadding = 12;

} // namespace

HintBlock::HintBlock(const QString &name, QWidget *parent)
    : Surface(theme::hintFill, theme::hintLine, theme::rowRadius, parent)
    , m_name(name)
{
    hide();
}

void HintBlock::setHint(const std::optional<QString> &hint)
{
    if (hint && !m_text)
        build();
    if (hint)
        m_text->setMessage(*hint);
    setVisible(hint.has_value());
}

void HintBlock::build()
{
    m_text = new TextBlock(theme::font(theme::bodySize), theme::text, QAccessible::StaticText, this);
    m_text->setObjectName(m_name);
    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(horizontalPadding, verticalPadding, horizontalPadding, verticalPadding);
    stack->addWidget(m_text);
}

} // namespace varda
