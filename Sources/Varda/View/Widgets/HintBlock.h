// HintBlock: what helps, apart from the message that it belongs to.
#pragma once

#include "Varda/View/Widgets/Panel.h"

#include <optional>

namespace varda {

class TextBlock;

/// A tinted block with an advice, which can be selected. Hidden if there is none.
class HintBlock final : public Surface
{
    Q_OBJECT

public:
    /// `name` is the object name of the text.
    explicit HintBlock(const QString &name, QWidget *parent = nullptr);

    void setHint(const std::optional<QString> &hint);

private:
    void build();

    const QString m_name;
    TextBlock *m_text = nullptr; ///< made with the first hint
};

} // namespace varda
