// Whatever adb prints, the device list is what a plain reading of the rules gives, and no row can break the table.
#include "Fuzz.h"
#include "Reference.h"

#include "VardaCore/AndroidDevice.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace varda::fuzz {

namespace {

QStringList referenceFields(const QString &line)
{
    QStringList fields = {QString()};
    for (const QChar c : line) {
        if (isWhiteSpace(c))
            fields.append(QString());
        else
            fields.last().append(c);
    }
    fields.removeAll(QString());
    return fields;
}

std::optional<AndroidDevice> referenceDevice(const QString &line)
{
    static const QStringList states = {u"device"_s,   u"unauthorized"_s, u"offline"_s, u"recovery"_s,
                                       u"sideload"_s, u"bootloader"_s,   u"no"_s};
    const QStringList fields = referenceFields(line);
    if (fields.size() < 2 || !states.contains(fields[1]))
        return std::nullopt;
    AndroidDevice device{fields[0], fields[1] == u"no"_s ? u"no permissions"_s : fields[1], fields[0]};
    for (const QString &field : fields) {
        if (field.startsWith(u"model:"_s)) {
            device.name = field.mid(6).replace(u'_', u' ');
            break;
        }
    }
    return device;
}

void checkRow(const AndroidDevice &device)
{
    require(!device.id.isEmpty(), "a row has a serial");
    require(std::none_of(device.id.begin(), device.id.end(), isWhiteSpace), "no serial holds white space");
    require(std::none_of(device.name.begin(), device.name.end(), [](QChar c) { return c != u' ' && isWhiteSpace(c); }),
            "no name holds white space but for blanks");
    require(device.ready() == (device.state == u"device"_s), "ready means the state device");
    require(QStringList({u"Emulator"_s, u"Wi-Fi"_s, u"USB"_s}).contains(device.transport()), "there are 3 transports");
    require(device.emulator() == (device.transport() == u"Emulator"_s), "an emulator's transport is Emulator");
}

} // namespace

} // namespace varda::fuzz

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    using namespace varda::fuzz;
    const QString output = text(data, size);
    const QList<varda::AndroidDevice> devices = varda::AndroidDevice::parse(output);
    QList<varda::AndroidDevice> expected;
    for (const QString &line : referenceLines(output)) {
        if (const auto device = referenceDevice(line))
            expected.append(*device);
    }
    require(devices == expected, "the list is what the rules give");
    for (const varda::AndroidDevice &device : devices)
        checkRow(device);
    return 0;
}
