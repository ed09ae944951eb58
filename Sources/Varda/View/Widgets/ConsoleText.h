// ConsoleText: one snapshot of the device's log, which can be read and copied while it is replaced.
#pragma once

#include <QPlainTextEdit>

#include <optional>

namespace varda {

/// Scrolls in both directions and never wraps. Replacing its text keeps it at its end if it was there, else where the
/// person scrolled to; where the new text continues the former one, lines read and selected stay as they are.
class ConsoleText final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ConsoleText(QWidget *parent = nullptr);

    /// Does nothing where `text` stands already.
    void show(const QString &text);

protected:
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    std::optional<int> advance(const QString &text);

    QString m_text;
};

} // namespace varda
