// AdbServer: a server of the real adb with a port, a home and a temporary folder of its own, gone when it goes. Any
// number run side by side, and none touches the machine's own server or files.
#pragma once

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHostAddress>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTcpServer>
#include <QTemporaryDir>

namespace varda::test {

class AdbServer
{
public:
    struct Result
    {
        int exitCode = -1; ///< -1 when it did not end in time, or not by itself
        QByteArray output;
        QByteArray error;
    };

    /// For the client `adb`; the first command starts the server.
    explicit AdbServer(const QString &adb)
        : m_adb(adb)
    {
        QTcpServer freePort;
        freePort.listen(QHostAddress::LocalHost);
        m_port = freePort.serverPort();
        for (const QString &name : {QStringLiteral("home"), QStringLiteral("tmp")})
            QDir(m_folder.path()).mkdir(name);
    }

    ~AdbServer()
    {
        if (isAvailable())
            run({QStringLiteral("kill-server")});
    }
    Q_DISABLE_COPY_MOVE(AdbServer)

    bool isAvailable() const { return QFileInfo(m_adb).isExecutable(); }
    quint16 port() const { return m_port; }
    /// The folder that holds all of its files: "home", "tmp", and what the test puts there.
    QString folder() const { return m_folder.path(); }
    QString home() const { return m_folder.filePath(QStringLiteral("home")); }
    QString temporary() const { return m_folder.filePath(QStringLiteral("tmp")); }

    /// The environment of the programs that are to talk to this server.
    QProcessEnvironment environment() const
    {
        QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
        for (const auto &[name, value] : variables())
            all.insert(QString::fromLatin1(name), QString::fromUtf8(value));
        for (const char *name : {"ANDROID_SERIAL", "ADB_TRACE", "ADB_VENDOR_KEYS"})
            all.remove(QString::fromLatin1(name));
        return all;
    }

    /// Has this process, and the children that it starts, talk to this server.
    void enterEnvironment() const
    {
        for (const auto &[name, value] : variables())
            qputenv(name, value);
    }

    /// Runs the client, with `input` as its standard input; blocks.
    Result run(const QStringList &arguments, const QByteArray &input = {}) const
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.start(m_adb, arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(60'000)) {
            process.kill();
            process.waitForFinished();
            return {-1, {}, process.errorString().toUtf8()};
        }
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
                process.readAllStandardError()};
    }

private:
    QList<std::pair<const char *, QByteArray>> variables() const
    {
        return {
            {"HOME", QFile::encodeName(home())},
            {"TMPDIR", QFile::encodeName(temporary())},
            {"ANDROID_ADB_SERVER_PORT", QByteArray::number(m_port)},
            // It looks for no phones by itself: neither other tests' emulators nor the network's phones shall appear.
            {"ADB_LOCAL_TRANSPORT_MAX_PORT", "5554"},
            {"ADB_MDNS", "0"}};
    }

    const QString m_adb;
    const QTemporaryDir m_folder;
    quint16 m_port = 0;
};

} // namespace varda::test
