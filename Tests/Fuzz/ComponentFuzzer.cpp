// The activity that is launched is a line of the phone's answer, belongs to the package asked for, and is one harmless
// word. The input's first line is the package, the rest is the answer.
#include "Fuzz.h"
#include "Reference.h"

#include "VardaCore/Validation.h"

#include <algorithm>
#include <optional>

namespace varda::fuzz {

namespace {

bool belongsToName(QChar c)
{
    return isAsciiLetter(c) || isAsciiDigit(c) || c == u'_' || c == u'.' || c == u'$';
}

bool names(const QString &line, const QString &package)
{
    const qsizetype slash = line.indexOf(u'/');
    if (slash < 1 || slash == line.size() - 1 || line.left(slash) != package)
        return false;
    return std::all_of(line.begin(), line.begin() + slash, belongsToName) &&
           std::all_of(line.begin() + slash + 1, line.end(), belongsToName);
}

std::optional<QString> referenceComponent(const QString &output, const QString &package)
{
    for (const QString &line : referenceLines(output)) {
        if (names(line, package))
            return line;
    }
    return std::nullopt;
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    const QString input = text(data, size);
    const qsizetype end = input.indexOf(u'\n');
    const QString package = input.left(end);
    const QString output = end < 0 ? QString() : input.mid(end + 1);
    const std::optional<QString> component = varda::Validation::component(output, package);
    require(component == referenceComponent(output, package), "the component is the first line that names one");
    if (component && varda::Validation::package(package))
        require(isAsciiLetter(component->front()) || component->front() == u'_', "no component begins with a dash");
    return 0;
}
