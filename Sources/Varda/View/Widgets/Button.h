// Button: a push button that knows how prominent it is. VardaStyle paints it.
#pragma once

#include "Varda/View/Widgets/Icon.h"
#include "Varda/View/Widgets/MeasuredText.h"

#include <QPushButton>

#include <optional>

namespace varda {

/// Return presses it as Space does, but only while it has the focus: no button is pressed from elsewhere.
class Button final : public QPushButton
{
    Q_OBJECT

public:
    enum class Kind {
        Primary,   ///< filled with the accent: what the panel is for
        Secondary, ///< quiet
        Compact,   ///< quiet, and lower: beside a heading
        Bare,      ///< an icon alone, with a ground under the pointer only
        Link,      ///< underlined text that leads out of the program
    };

    /// A bare button has no text of its own: give it an accessible name.
    Button(Kind kind, const QString &text, std::optional<Icon> icon = std::nullopt, QWidget *parent = nullptr);

    Kind kind() const { return m_kind; }
    /// How wide its text is. Ampersands mark no letter in it.
    int textWidth() const;

    QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Kind m_kind;
    mutable MeasuredText m_label;
};

} // namespace varda
