// A hint is given for an empty text, and for one that holds the words of a row of the table in their order; never else.
#include "Fuzz.h"

#include "Varda/Model/Hints.h"

#include <algorithm>

namespace varda::fuzz {

namespace {

bool holdsInOrder(QStringView text, QStringView alternative)
{
    for (const QStringView piece : alternative.split(u'…')) {
        const qsizetype at = text.indexOf(piece);
        if (at < 0)
            return false;
        text = text.sliced(at + piece.size());
    }
    return true;
}

bool isKnown(const QString &text, const Hint &hint)
{
    const auto alternatives = hint.words.split(u'|');
    return std::any_of(alternatives.begin(), alternatives.end(),
                       [&](QStringView each) { return holdsInOrder(text, each); });
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    const QString failure = text(data, size);
    const auto advice = varda::hintFor(failure);
    if (varda::trimmed(failure).isEmpty()) {
        require(advice.has_value(), "a failure without a reason is told as such");
        return 0;
    }
    const auto hints = varda::allHints();
    require(!advice ||
                std::any_of(hints.begin(), hints.end(),
                            [&](const varda::Hint &hint) { return hint.advice == *advice && isKnown(failure, hint); }),
            "a hint is that of a row whose words are there");
    return 0;
}
