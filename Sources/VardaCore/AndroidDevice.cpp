// Reads lines like
//   R58M123ABC             device usb:1-4 product:x1q model:SM_G981B device:x1q transport_id:3
//   0123456789ABCDEF       no permissions (missing udev rules? user is in the plugdev group); see [http://…] usb:1-2
#include "VardaCore/AndroidDevice.h"

#include "VardaCore/Text.h"

#include <algorithm>
#include <array>
#include <optional>

using namespace Qt::StringLiterals;

namespace varda {

namespace {

/// The connection states that make a row. "no" opens "no permissions", the one state that adb prints as two words.
constexpr std::array states = {QStringView(u"device"),   QStringView(u"unauthorized"), QStringView(u"offline"),
                               QStringView(u"recovery"), QStringView(u"sideload"),     QStringView(u"bootloader"),
                               QStringView(u"no")};

constexpr QStringView modelKey = u"model:";

/// `line` split at runs of white space; no field is empty.
QList<QStringView> fields(QStringView line)
{
    QList<QStringView> result;
    qsizetype start = 0;
    for (qsizetype end = 0; end <= line.size(); ++end) {
        if (end < line.size() && !line[end].isSpace())
            continue;
        if (end > start)
            result.append(line.sliced(start, end - start));
        start = end + 1;
    }
    return result;
}

/// The model's name: adb prints an underscore for every space in it.
std::optional<QString> modelName(const QList<QStringView> &fields)
{
    const auto model =
        std::find_if(fields.begin(), fields.end(), [](QStringView field) { return field.startsWith(modelKey); });
    if (model == fields.end())
        return std::nullopt;
    return model->sliced(modelKey.size()).toString().replace(u'_', u' ');
}

std::optional<AndroidDevice> parseLine(QStringView line)
{
    const QList<QStringView> columns = fields(line);
    if (columns.size() < 2 || std::find(states.begin(), states.end(), columns[1]) == states.end())
        return std::nullopt;
    const QString id = columns[0].toString();
    const QString state = columns[1] == u"no" ? u"no permissions"_s : columns[1].toString();
    return AndroidDevice{id, state, modelName(columns).value_or(id)};
}

} // namespace

bool AndroidDevice::ready() const
{
    return state == u"device";
}

bool AndroidDevice::emulator() const
{
    return id.startsWith(u"emulator-");
}

QString AndroidDevice::transport() const
{
    if (emulator())
        return u"Emulator"_s;
    return id.contains(u':') || id.contains(u"_adb-tls") ? u"Wi-Fi"_s : u"USB"_s;
}

QList<AndroidDevice> AndroidDevice::parse(const QString &output)
{
    QList<AndroidDevice> devices;
    for (const QStringView line : lines(output)) {
        if (std::optional<AndroidDevice> device = parseLine(line))
            devices.append(*std::move(device));
    }
    return devices;
}

} // namespace varda
