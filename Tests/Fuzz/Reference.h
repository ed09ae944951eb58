// Slow and plain second implementations, written from the standards, that the program's own are compared with.
#pragma once

#include <QByteArrayView>
#include <QList>
#include <QString>

namespace varda::fuzz {

/// UTF-8 by table 3-7 of the Unicode Standard ("Well-Formed UTF-8 Byte Sequences"), one U+FFFD for each maximal subpart
/// of an ill-formed sequence (section 3.9, "U+FFFD Substitution of Maximal Subparts").
QString referenceDecode(QByteArrayView bytes);

/// Whether `c` has the property White_Space (PropList.txt).
bool isWhiteSpace(QChar c);

/// `text` split at every single newline character.
QList<QString> referenceLines(const QString &text);

} // namespace varda::fuzz
