// StandInTools: writes the scripts that the program stand-in-tool plays, and reads the records that it keeps.
#include "Support/StandInTools.h"

#include "Support/FileContents.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMultiHash>

#include <filesystem>

namespace varda::test {

using namespace Qt::StringLiterals;

namespace {

void put(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Cannot write %s", qUtf8Printable(path));
}

/// The texts that a NUL ends.
QByteArrayList ended(const QByteArray &bytes)
{
    QByteArrayList texts = bytes.split('\0');
    texts.removeLast();
    return texts;
}

/// The tools directory without the tools of an earlier test.
QString emptiedDirectory()
{
    QDir(StandInTools::directory()).removeRecursively();
    return StandInTools::directory();
}

/// FNV-1a, 64 bits, as the program computes it.
QString keyOf(const QByteArray &argv)
{
    quint64 hash = 14695981039346656037U;
    for (const char byte : argv)
        hash = (hash ^ static_cast<uchar>(byte)) * 1099511628211U;
    return u"%1"_s.arg(hash, 16, 16, QChar(u'0'));
}

/// The parts of a record by name: each is a line with its name and its size, and its bytes.
QMultiHash<QByteArray, QByteArray> partsOf(QByteArrayView record)
{
    QMultiHash<QByteArray, QByteArray> parts;
    while (!record.isEmpty()) {
        const qsizetype blank = record.indexOf(' ');
        const qsizetype lineEnd = record.indexOf('\n');
        const qsizetype size = record.first(lineEnd).sliced(blank + 1).toByteArray().toLongLong();
        parts.insert(record.first(blank).toByteArray(), record.sliced(lineEnd + 1, size).toByteArray());
        record = record.sliced(lineEnd + 1 + size);
    }
    return parts;
}

ToolCall readCall(const QFileInfo &record)
{
    const QMultiHash<QByteArray, QByteArray> parts = partsOf(contents(record.filePath()));
    const QString input = record.path() + u"/../inputs/" + record.fileName();
    ToolCall call;
    call.argv = ended(parts["argv"]);
    call.input = QFile::exists(input) ? contents(input) : QByteArray();
    for (const QByteArray &entry : ended(parts["environment"])) {
        const qsizetype equals = entry.indexOf('=');
        call.environment.insert(entry.left(equals), entry.mid(equals + 1));
    }
    call.descriptors = QString::fromUtf8(parts["descriptors"]).split(u'\n', Qt::SkipEmptyParts);
    call.descriptors.sort();
    call.workingDirectory = QString::fromUtf8(parts["directory"]);
    call.pid = record.fileName().section(u'-', -1).toLongLong();
    call.session = parts["session"].toLongLong();
    call.terminationRequests = static_cast<int>(parts.count("termination"));
    call.ended = parts.contains("ended");
    call.unexpected = parts.contains("unexpected");
    return call;
}

} // namespace

QStringList ToolCall::arguments() const
{
    QStringList texts;
    for (const QByteArray &each : argv.mid(1))
        texts << QString::fromUtf8(each);
    return texts;
}

ToolAnswer::ToolAnswer(QString draft, QString rule)
    : m_draft(std::move(draft))
    , m_rule(std::move(rule))
{
}

ToolAnswer::~ToolAnswer()
{
    put(m_draft + u"/plan", m_plan.toUtf8());
    // A run under way reads either no such rule or the whole of it.
    if (!QDir().rename(m_draft, m_rule))
        qFatal("Cannot put the rule %s into force", qUtf8Printable(m_rule));
}

ToolAnswer &ToolAnswer::file(QStringView name, const QByteArray &bytes)
{
    put(m_draft + u'/' + name, bytes);
    return *this;
}

ToolAnswer &ToolAnswer::plan(QStringView word, const QString &value)
{
    m_plan += word + u' ' + value + u'\n';
    return *this;
}

ToolAnswer &ToolAnswer::exitsOnTermination(int code, const QString &gate)
{
    plan(u"termination", u"exit"_s).plan(u"termination-exit", QString::number(code));
    return gate.isEmpty() ? *this : plan(u"termination-gate", gate);
}

StandInTool::StandInTool(QString path, bool readsInput)
    : m_path(std::move(path))
{
    QDir().mkpath(QFileInfo(m_path).path());
    for (const QString &folder : {u"/rules"_s, u"/gates"_s, u"/calls"_s, u"/inputs"_s})
        QDir().mkpath(script() + folder);
    // A link where the file system allows one: a copy just made cannot be run while another thread's fork still holds
    // it open for writing.
    const QByteArray program = STAND_IN_TOOL;
    std::error_code cannotLink;
    std::filesystem::create_hard_link(program.toStdString(), m_path.toStdString(), cannotLink);
    if (cannotLink && !QFile::copy(QString::fromUtf8(program), m_path))
        qFatal("Cannot stage %s", qUtf8Printable(m_path));
    if (readsInput)
        put(script() + u"/reads-input", {});
}

QString StandInTool::script() const
{
    return m_path + u".script";
}

ToolAnswer StandInTool::newRule(const std::optional<QStringList> &arguments)
{
    const QString draft = script() + u"/drafted-rule"_s;
    QDir().mkpath(draft);
    QString key = u"any"_s;
    if (arguments) {
        QByteArray argv;
        for (const QString &each : *arguments)
            argv += each.toUtf8() + '\0';
        put(draft + u"/argv", argv);
        key = keyOf(argv);
    }
    const QString rule = script() + u"/rules/%1-%2"_s.arg(++m_rules, 6, 10, QChar(u'0')).arg(key);
    return ToolAnswer(draft, rule);
}

ToolAnswer StandInTool::on(const QStringList &arguments)
{
    return newRule(arguments);
}

ToolAnswer StandInTool::onAnything()
{
    return newRule(std::nullopt);
}

QList<ToolCall> StandInTool::calls() const
{
    QList<ToolCall> all;
    const QDir records(script() + u"/calls");
    for (const QFileInfo &record : records.entryInfoList(QDir::Files, QDir::Name))
        all << readCall(record);
    return all;
}

QList<ToolCall> StandInTool::calls(const QStringList &arguments) const
{
    QList<ToolCall> matching = calls();
    matching.removeIf([&](const ToolCall &call) { return call.arguments() != arguments; });
    return matching;
}

QList<QStringList> StandInTool::commandLines() const
{
    QList<QStringList> all;
    for (const ToolCall &call : calls())
        all << call.arguments();
    return all;
}

void StandInTool::forgetCalls()
{
    QDir records(script() + u"/calls");
    for (const QString &record : records.entryList(QDir::Files))
        records.remove(record);
}

void StandInTool::open(const QString &gate)
{
    put(script() + u"/gates/" + gate, {});
}

StandInTools::StandInTools()
    : m_adb(emptiedDirectory() + u"/platform-tools/adb", true)
    , m_scrcpy(directory() + u"/scrcpy/scrcpy", false)
{
}

StandInTools::~StandInTools()
{
    release();
    QDir(directory()).removeRecursively();
    QDir().mkpath(directory());
}

QString StandInTools::directory()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/../lib/varda/Tools");
}

void StandInTools::open(const QString &gate)
{
    m_adb.open(gate);
    m_scrcpy.open(gate);
}

void StandInTools::release()
{
    for (const StandInTool *tool : {&m_adb, &m_scrcpy}) {
        if (QFile::exists(tool->script()))
            put(tool->script() + u"/released", {});
    }
}

QList<ToolCall> StandInTools::unexpectedCalls() const
{
    QList<ToolCall> all = m_adb.calls() + m_scrcpy.calls();
    all.removeIf([](const ToolCall &call) { return !call.unexpected; });
    return all;
}

} // namespace varda::test
