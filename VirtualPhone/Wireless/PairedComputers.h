// PairedComputers: the keys of the computers that may connect.
#pragma once

#include "Wireless/TlsChannel.h"

#include <QHash>

namespace varda::phone {

/// A computer as it introduces itself when it pairs.
struct Computer
{
    KeyModulus key;
    QString name; ///< such as "user@host"

    /// Reads an adb public key: the key's numbers in base64, a blank, and the name. Nothing where it is none.
    static std::optional<Computer> fromPublicKey(const QByteArray &text);
};

class PairedComputers
{
public:
    void add(const Computer &computer) { m_names.insert(computer.key, computer.name); }
    bool contains(const KeyModulus &key) const { return m_names.contains(key); }
    QStringList names() const { return m_names.values(); }
    void clear() { m_names.clear(); }

private:
    QHash<KeyModulus, QString> m_names;
};

} // namespace varda::phone
