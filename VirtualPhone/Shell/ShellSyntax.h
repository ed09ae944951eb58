// ShellSyntax: the little of the shell's language that hosts use towards a phone. Pure.
//
//   export ANDROID_LOG_TAGS="''"; exec logcat '-d' '-t' '350'
//   CLASSPATH=/data/local/tmp/x.jar app_process / com.example.Server 4.1
//
// Words, the three ways of quoting, leading assignments, and commands in sequence (";" and line feeds). Everything else
// that a shell would interpret (pipes, redirections, expansions) is an error rather than a wrong guess.
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

namespace varda::phone {

struct ShellCommand
{
    QMap<QString, QString> assignments;
    QStringList words;

    bool operator==(const ShellCommand &) const = default;
};

struct ShellScript
{
    QList<ShellCommand> commands;
    /// Why the text is no script that this shell runs; empty where it is one.
    QString error;

    bool operator==(const ShellScript &) const = default;
};

ShellScript parseShell(const QString &text);

/// Replaces "\n", "\r", "\t", "\\" and "\xHH" by the bytes that they stand for; everything else stays as UTF-8.
QByteArray unescaped(const QString &text);

} // namespace varda::phone
