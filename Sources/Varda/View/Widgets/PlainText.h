// PlainText: texts from tools, phones and file systems, made safe to show beside the window's own.
//
// Such a text may hold mark-up, control characters, or the bidirectional controls of Unicode Standard Annex 9, with
// which it could reorder what follows it. It is always shown as plain text, with these characters made visible.
#pragma once

#include <QString>

class QWidget;

namespace varda {

/// `text` for one line: each control character as its picture (U+2400 and on), each bidirectional control by its
/// number, line ends included. Ordinary text, right-to-left text included, comes back as it was.
QString visibleLine(const QString &text);

/// As `visibleLine`, but line ends and tabs stay (CR LF becomes LF).
QString visibleLines(const QString &text);

/// Gives `widget` a tooltip, and an accessible description, that shows `text` literally and wraps it; an empty text
/// removes both. Does nothing if nothing changes.
void setPlainToolTip(QWidget *widget, const QString &text);

} // namespace varda
