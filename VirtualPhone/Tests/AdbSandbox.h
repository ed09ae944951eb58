// AdbSandbox: the real adb client with a server, a home and a key of its own, all gone when it goes.
#pragma once

#include <QFileInfo>
#include <QHostAddress>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTcpServer>
#include <QTemporaryDir>

class AdbSandbox
{
public:
    struct Result
    {
        int exitCode = -1; ///< -1 when it did not end in time, or not by itself
        QByteArray output;
        QByteArray error;
    };

    explicit AdbSandbox(const QString &adb)
        : m_adb(adb)
        , m_environment(QProcessEnvironment::systemEnvironment())
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        m_port = server.serverPort();
        m_environment.insert(QStringLiteral("ANDROID_ADB_SERVER_PORT"), QString::number(m_port));
        m_environment.insert(QStringLiteral("HOME"), m_folder.path());
        m_environment.insert(QStringLiteral("TMPDIR"), m_folder.path());
        m_environment.insert(QStringLiteral("ADB"), adb);
    }

    ~AdbSandbox() { run({QStringLiteral("kill-server")}); }
    Q_DISABLE_COPY_MOVE(AdbSandbox)

    bool isAvailable() const { return QFileInfo(m_adb).isExecutable(); }
    QString folder() const { return m_folder.path(); }
    quint16 serverPort() const { return m_port; }
    QProcessEnvironment environment() const { return m_environment; }

    /// Runs adb, with `input` as its standard input.
    Result run(const QStringList &arguments, int guard = 20'000, const QByteArray &input = {}) const
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(m_adb, arguments);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(guard)) {
            process.kill();
            process.waitForFinished();
            return {};
        }
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1, process.readAllStandardOutput(),
                process.readAllStandardError()};
    }

private:
    const QString m_adb;
    QTemporaryDir m_folder;
    QProcessEnvironment m_environment;
    quint16 m_port = 0;
};
