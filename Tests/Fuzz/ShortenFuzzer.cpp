// A shortened text is the front of the text, cut between user-perceived characters. The input's first two bytes are the
// number of characters, the third says how often the rest is repeated, so that texts grow past any window.
#include "Fuzz.h"

#include "VardaCore/ToolError.h"

#include <unicode/ubrk.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace varda::fuzz {

namespace {

/// Long enough for several windows of the search, short enough to try many.
constexpr qsizetype longestText = 64LL * 1024;

/// The ends of all clusters of `text`, found by one pass over all of it.
std::vector<qsizetype> clusterEnds(const QString &text)
{
    UErrorCode failure = U_ZERO_ERROR;
    const std::unique_ptr<UBreakIterator, decltype(&ubrk_close)> iterator(
        ubrk_open(UBRK_CHARACTER, "", reinterpret_cast<const UChar *>(text.utf16()), static_cast<int32_t>(text.size()),
                  &failure),
        &ubrk_close);
    require(U_SUCCESS(failure) != 0, "ICU has its rules");
    std::vector<qsizetype> ends;
    for (int32_t end = ubrk_next(iterator.get()); end != UBRK_DONE; end = ubrk_next(iterator.get()))
        ends.push_back(end);
    return ends;
}

QString referenceFirst(const QString &text, const std::vector<qsizetype> &ends, qsizetype count)
{
    if (count <= 0)
        return {};
    return count > static_cast<qsizetype>(ends.size()) ? text : text.left(ends[static_cast<size_t>(count) - 1]);
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    if (size < 3)
        return 0;
    const qsizetype count = data[0] * 256 + data[1];
    const QString pattern = text(data + 3, size - 3);
    const qsizetype most = pattern.isEmpty() ? 0 : longestText / pattern.size();
    const QString whole = pattern.repeated(std::clamp<qsizetype>(data[2] * 16LL, 1, std::max<qsizetype>(most, 1)));

    const std::vector<qsizetype> ends = clusterEnds(whole);
    const QString shortened = varda::firstCharacters(whole, count);
    require(shortened == referenceFirst(whole, ends, count), "the cut is where one pass over the whole text puts it");
    require(whole.startsWith(shortened), "a shortened text is the front of the text");
    require(varda::firstCharacters(shortened, count) == shortened, "shortening twice changes nothing");
    require(varda::ToolError::message(whole).errorDescription() == referenceFirst(whole, ends, 3000),
            "an error shows its first 3,000 characters");
    return 0;
}
