// AttachedPhone: an adb with one phone attached, for as long as the object lives.
#pragma once

#include "Support/AdbServer.h"

#include <QProcess>
#include <QString>

#include <optional>

namespace varda::bench {

/// With `Adb::Real` stages the adb of this build's tools tree with a server of its own and the simulated phone
/// connected to it; otherwise, or where the tree is empty, a stand-in that lists a phone at once. Sets the environment
/// that they need in this process, which its children inherit. Ends the program where that fails.
class AttachedPhone
{
public:
    enum class Adb { Real, StandIn };

    /// Stages for the programs in `home`/bin.
    AttachedPhone(const QString &home, Adb kind);
    Q_DISABLE_COPY_MOVE(AttachedPhone)
    ~AttachedPhone();

    /// "adb 34.0.5-debian, simulated phone" or "stand-in for adb"
    const QString &name() const { return m_name; }

private:
    void connectRealPhone();
    QString adb(const QStringList &arguments) const;

    const QString m_adb;
    std::optional<test::AdbServer> m_server;
    QProcess m_phone;
    QString m_name;
};

} // namespace varda::bench
