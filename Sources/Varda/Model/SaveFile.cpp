// SaveFile: QSaveFile, used so that no error of the disk is lost.
#include "Varda/Model/SaveFile.h"

#include "VardaCore/Await.h"
#include "VardaCore/ToolError.h"

#include <QByteArrayView>
#include <QSaveFile>

#include <unistd.h>

namespace varda {

namespace {

/// A disk that fills up accepts a part, and reports the error only when the rest is written.
bool writeAll(QSaveFile &file, QByteArrayView rest)
{
    while (!rest.isEmpty()) {
        const qint64 written = file.write(rest.data(), rest.size());
        if (written <= 0)
            return false;
        rest = rest.sliced(written);
    }
    return true;
}

ToolError failure(const QString &path, const QString &reason)
{
    return ToolError::message(path + QStringLiteral(": ") + reason);
}

} // namespace

void saveFile(const QString &path, const QByteArray &contents)
{
    QSaveFile file(path);
    // Unbuffered, for `commit` forgets the error of the flush that it ends with and replaces the old file all the same.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || !writeAll(file, contents))
        throw failure(path, file.errorString());
    if (fsync(file.handle()) != 0) // a remote disk may refuse late; `commit` would not notice
        throw failure(path, qt_error_string());
    if (!file.commit())
        throw failure(path, file.errorString());
}

QCoro::Task<> saveFileInBackground(QString path, QByteArray contents)
{
    static WorkerThreads disk(1);
    OnWorker saving(disk, [path, contents] { saveFile(path, contents); });
    co_await saving;
}

} // namespace varda
