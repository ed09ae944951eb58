// Reads lines like
//   R58M123ABC             device usb:1-4 product:x1q model:SM_G981B device:x1q transport_id:3
//   0123456789ABCDEF       no permissions (missing udev rules? user is in the plugdev group); see [http://…] usb:1-2
#include "VardaCore/AndroidDevice.h"

#include "VardaCore/Text.h"

#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <optional>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

/// The connection states that make a row. "no" opens "no permissions", the one state that adb prints as two words.
const std::array states = {u"device"_s,   u"unauthorized"_s, u"offline"_s, u"recovery"_s,
                           u"sideload"_s, u"bootloader"_s,   u"no"_s};

constexpr QStringView modelKey = u"model:";

/// The fields of a line. The line of a usable phone has at most eight, which need no memory from the heap.
using Fields = QVarLengthArray<QStringView, 8>;

/// `line` split at runs of white space; no field is empty.
Fields fields(QStringView line)
{
    Fields result;
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
std::optional<QString> modelName(const Fields &fields)
{
    const auto model =
        std::find_if(fields.begin(), fields.end(), [](QStringView field) { return field.startsWith(modelKey); });
    if (model == fields.end())
        return std::nullopt;
    return model->sliced(modelKey.size()).toString().replace(u'_', u' ');
}

std::optional<AndroidDevice> parseLine(QStringView line)
{
    const Fields columns = fields(line);
    if (columns.size() < 2)
        return std::nullopt;
    const auto *const state = std::find(states.begin(), states.end(), columns[1]);
    if (state == states.end())
        return std::nullopt;
    const QString id = columns[0].toString();
    return AndroidDevice{id, *state == u"no" ? u"no permissions"_s : *state, modelName(columns).value_or(id)};
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
