// A package ID that passes is one harmless word for a shell, and exactly the texts of its grammar pass.
#include "Fuzz.h"

#include "VardaCore/Text.h"
#include "VardaCore/Validation.h"

#include <algorithm>

namespace varda::fuzz {

namespace {

bool isSegment(const QString &segment)
{
    const auto continues = [](QChar c) { return isAsciiLetter(c) || isAsciiDigit(c) || c == u'_'; };
    return !segment.isEmpty() && !isAsciiDigit(segment.front()) &&
           std::all_of(segment.begin(), segment.end(), continues);
}

bool referencePackage(const QString &value)
{
    const QStringList segments = value.split(u'.');
    return segments.size() >= 2 && std::all_of(segments.begin(), segments.end(), isSegment);
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    const QString value = text(data, size);
    require(varda::Validation::package(value) == referencePackage(value), "the grammar decides, on the whole text");
    // What the model does with a typed text before it goes to a command line.
    const QString typed = varda::trimmed(value);
    if (varda::Validation::package(typed))
        require(isAsciiLetter(typed.front()) || typed.front() == u'_', "no argument begins with a dash");
    return 0;
}
