// BuildFile: words that stay short, for they stand beside the file's name.
#include "Varda/Model/BuildFile.h"

#include <QFileInfo>
#include <QLocale>

#include <array>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// In steps of 1000: "512 bytes", "1.4 MB", "24 MB".
QString sizeInWords(qint64 bytes)
{
    constexpr std::array<const char *, 4> units{"bytes", "kB", "MB", "GB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; size >= 999.5 && unit + 1 < units.size(); ++unit)
        size /= 1000;
    const bool fraction = unit > 0 && size < 9.95;
    return QString::number(size, 'f', fraction ? 1 : 0) + u' ' + QLatin1StringView(units.at(unit));
}

QString countInWords(qint64 count, const QString &unit)
{
    return QString::number(count) + u' ' + unit + (count == 1 ? u" ago"_s : u"s ago"_s);
}

/// Clocks of other computers may be ahead by a little; what is further ahead, or a week old, has a date.
QString ageInWords(const QDateTime &written, const QDateTime &now)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    const qint64 age = written.secsTo(now);
    if (age < -minute || age >= 7 * day)
        return QLocale::c().toString(written.date(), u"d MMMM yyyy"_s);
    if (age < minute)
        return u"just now"_s;
    if (age < hour)
        return countInWords(age / minute, u"minute"_s);
    if (age < day)
        return countInWords(age / hour, u"hour"_s);
    return countInWords(age / day, u"day"_s);
}

} // namespace

std::optional<BuildFile> readBuildFile(const QString &path)
{
    const QFileInfo file(path);
    if (!file.isFile())
        return std::nullopt;
    return BuildFile{file.size(), file.lastModified()};
}

QString describeBuild(const std::optional<BuildFile> &file, const std::optional<BuildFile> &chosen,
                      const QDateTime &now)
{
    if (!file)
        return u"no longer there"_s;
    const QString words = sizeInWords(file->size) + u" · "_s + ageInWords(file->written, now);
    return file == chosen ? words : words + u" · changed since it was chosen"_s;
}

} // namespace varda
