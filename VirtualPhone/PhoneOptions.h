// PhoneOptions: what a simulated phone starts with. Most of it can be changed later by control commands.
#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

#include <functional>

namespace varda {

struct PhoneOptions
{
    /// Port on the loopback address. 0 takes a free one; adb lists an odd one from 5555 to 5585 as an emulator by
    /// itself.
    quint16 port = 0;
    /// "device", "unauthorized", "recovery", "sideload" or "offline".
    QString state = QStringLiteral("device");
    QString model = QStringLiteral("Pixel 8");
    QSize screen{720, 1600};
    /// Pictures per second of a mirrored screen.
    int frameRate = 20;
    /// Installed apps, each with a launcher activity ".MainActivity".
    QStringList packages{QStringLiteral("com.example.app"), QStringLiteral("org.example.karten")};
    /// The package that the next installed file is taken for: the phone does not read what it is given.
    QString installsAs = QStringLiteral("com.example.app");
    /// A file for the log of services, one JSON object per line; empty keeps the log in memory only.
    QString serviceLog;
    /// Whether a pairing code that has been used up is followed by another.
    bool renewsPairingCodes = false;
    /// Called in the phone's thread with each line about wireless debugging that its owner is to read.
    std::function<void(const QString &line)> onWireless;
    /// Control commands that are carried out before the phone listens.
    QStringList commands;
};

} // namespace varda
