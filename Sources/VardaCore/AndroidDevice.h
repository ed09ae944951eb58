// One row of the list of attached phones and emulators, and the reader of adb's device listing.
#pragma once

#include <QList>
#include <QString>

namespace varda {

/// A phone or emulator as `adb devices -l` lists it. An immutable value, identified by `id`; equal only when all three
/// texts are equal, so a phone whose state changes stays the same row but becomes a different value.
struct AndroidDevice
{
    /// The serial of the first column: a USB serial, "emulator-" and a port, host and port of a Wi-Fi connection, or
    /// the service name ("…_adb-tls-connect._tcp") of a phone that adb's network discovery found.
    QString id;
    /// adb's word for the connection, "device" when the phone is usable; only "no permissions" has two
    /// words.
    QString state;
    /// The model with spaces for underscores; the serial when adb names no model.
    QString name;

    /// Whether commands can be sent: `state` is exactly "device".
    bool ready() const;
    /// Whether the serial is an emulator's, which adb always spells "emulator-" and a port.
    bool emulator() const;
    /// How the device is attached: "Emulator", "Wi-Fi" or "USB".
    QString transport() const;

    /// The devices in `output`, the standard output of `adb devices -l`, in the order of its lines. Never fails: a line
    /// that describes no device (the header, the server's start-up messages, an unknown state) is skipped.
    static QList<AndroidDevice> parse(const QString &output);

    bool operator==(const AndroidDevice &) const = default;
};

} // namespace varda
