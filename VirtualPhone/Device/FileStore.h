// FileStore: the few files that hosts push to the phone. In memory; there are no permissions and no free-space limit.
#pragma once

#include <QByteArray>
#include <QMap>

#include <optional>

namespace varda::phone {

constexpr quint32 directoryMode = 0040771;
constexpr quint32 regularFileMode = 0100000;

struct StoredFile
{
    quint32 mode = regularFileMode;
    quint32 modified = 0; ///< seconds since 1970
    QByteArray content;
};

class FileStore
{
public:
    static bool isDirectory(const QByteArray &path)
    {
        QByteArray trimmed = path;
        while (trimmed.size() > 1 && trimmed.endsWith('/'))
            trimmed.chop(1);
        return trimmed == "/" || trimmed == "/data/local/tmp" || trimmed == "/sdcard" || trimmed == "/sdcard/Download";
    }

    bool contains(const QByteArray &path) const { return m_files.contains(path); }
    std::optional<StoredFile> file(const QByteArray &path) const
    {
        const auto found = m_files.find(path);
        return found == m_files.end() ? std::nullopt : std::optional(*found);
    }
    void write(const QByteArray &path, const StoredFile &file) { m_files.insert(path, file); }

private:
    QMap<QByteArray, StoredFile> m_files;
};

} // namespace varda::phone
