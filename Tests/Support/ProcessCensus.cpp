// Everything is read from /proc, so that nothing has to be told to the census.
#include "Support/ProcessCensus.h"

#include "Support/Wait.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

using namespace Qt::StringLiterals;

namespace varda {

namespace {

/// The child processes of this one. A line of /proc/<pid>/stat: "1234 (adb) S 1200 …", the name may hold anything.
QStringList children()
{
    QStringList result;
    const QByteArray parent = QByteArray::number(QCoreApplication::applicationPid());
    for (const QString &entry : QDir(u"/proc"_s).entryList({u"[0-9]*"_s}, QDir::Dirs)) {
        QFile file(u"/proc/"_s + entry + u"/stat"_s);
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = file.readAll();
        const qsizetype nameEnd = line.lastIndexOf(')');
        const QList<QByteArray> fields = line.mid(nameEnd + 2).split(' ');
        if (fields.value(1) == parent)
            result << u"child "_s + QString::fromUtf8(line.first(nameEnd + 1)) + u' ' + QString::fromUtf8(fields[0]);
    }
    return result;
}

/// The open descriptors but for the event descriptors, which come and go with the threads of Qt's pools.
QStringList descriptors()
{
    QStringList result;
    for (const QString &number :
         QDir(u"/proc/self/fd"_s).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)) {
        const QString target = QFile::symLinkTarget(u"/proc/self/fd/"_s + number);
        if (!target.isEmpty() && !target.contains(u"eventfd") && !target.endsWith(u"/fd"_s))
            result << u"descriptor "_s + number + u" of "_s + target;
    }
    return result;
}

QStringList captureDirectories()
{
    QStringList result;
    for (const QString &name : QDir::temp().entryList({u"varda-*"_s}, QDir::AllEntries | QDir::Hidden))
        result << u"directory "_s + name;
    return result;
}

QStringList holdings()
{
    return children() + descriptors() + captureDirectories();
}

} // namespace

QStringList childProcesses()
{
    QStringList ids;
    for (const QString &child : children())
        ids << child.section(u' ', 1, 1);
    return ids;
}

ProcessCensus::ProcessCensus()
{
    for (const QString &holding : holdings())
        m_before.insert(holding);
}

QString ProcessCensus::leftovers() const
{
    QStringList found;
    eventually([&] {
        found = newcomers();
        return found.isEmpty();
    });
    return found.join(u'\n');
}

QStringList ProcessCensus::newcomers() const
{
    QStringList result = holdings();
    result.removeIf([this](const QString &holding) { return m_before.contains(holding); });
    return result;
}

} // namespace varda
