// StandInTools: scripted stand-ins for adb and scrcpy, staged beside the running test where the model looks for them.
//
//     StandInTools tools;
//     tools.adb().on({u"devices"_s, u"-l"_s}).prints(listing);             // answers every such run
//     tools.adb().on({u"pair"_s, u"h:1"_s}).waitsFor(u"go"_s).exits(1);    // … once the test calls open(u"go"_s)
//     …
//     QCOMPARE(tools.adb().calls().first().arguments(), …);                // what really arrived at the child
//
// A later rule outranks an earlier one for the same arguments. A run that no rule fits is "unexpected": it exits
// with 97.
#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace varda::test {

/// One run of a stand-in, as it saw itself.
struct ToolCall
{
    QByteArrayList argv; ///< byte for byte, the program's own name first
    QByteArray input;    ///< what a pipe on standard input brought
    QHash<QByteArray, QByteArray> environment;
    QStringList descriptors; ///< "0 /dev/null", one per held descriptor, by number
    QString workingDirectory;
    qint64 pid = 0;
    qint64 session = 0;
    int terminationRequests = 0; ///< SIGTERMs so far
    bool ended = false;          ///< came to the end of its plan
    bool unexpected = false;     ///< no rule fitted

    /// Without the program's name.
    QStringList arguments() const;
};

/// What a stand-in does when it is called so; takes effect at the end of the full expression.
class ToolAnswer
{
public:
    ToolAnswer(QString draft, QString rule);
    ~ToolAnswer();
    Q_DISABLE_COPY_MOVE(ToolAnswer)

    ToolAnswer &prints(const QByteArray &output) { return file(u"stdout", output); }
    ToolAnswer &complains(const QByteArray &standardError) { return file(u"stderr", standardError); }
    ToolAnswer &exits(int code) { return plan(u"exit", QString::number(code)); }
    ToolAnswer &diesBy(int signal) { return plan(u"signal", QString::number(signal)); }
    /// Before its output.
    ToolAnswer &waitsFor(const QString &gate) { return plan(u"gate", gate); }
    /// After its output, before its end.
    ToolAnswer &staysUntil(const QString &gate) { return plan(u"gate-after-output", gate); }
    ToolAnswer &takes(std::chrono::milliseconds time) { return plan(u"delay", QString::number(time.count())); }
    /// After its output; for good.
    ToolAnswer &hangs() { return plan(u"hang", QStringLiteral("yes")); }
    /// Serves one run only; then the rules before it answer again.
    ToolAnswer &once() { return file(u"once", {}); }
    ToolAnswer &ignoresTermination() { return plan(u"termination", QStringLiteral("ignore")); }
    /// Ends itself in good order when it is asked to, once `gate` is open where one is named.
    ToolAnswer &exitsOnTermination(int code, const QString &gate = {});

private:
    ToolAnswer &file(QStringView name, const QByteArray &bytes);
    ToolAnswer &plan(QStringView word, const QString &value);

    const QString m_draft;
    const QString m_rule;
    QString m_plan;
};

/// One staged tool.
class StandInTool
{
public:
    /// Stages the stand-in program at `path`; its script and its records lie beside it.
    StandInTool(QString path, bool readsInput);

    const QString &path() const { return m_path; }
    QString script() const;

    ToolAnswer on(const QStringList &arguments);
    ToolAnswer onAnything();

    /// In the order in which they began.
    QList<ToolCall> calls() const;
    /// Those with exactly these arguments.
    QList<ToolCall> calls(const QStringList &arguments) const;
    /// How often it was called with these arguments.
    qsizetype count(const QStringList &arguments) const { return calls(arguments).size(); }
    /// What it was called with, run by run.
    QList<QStringList> commandLines() const;
    void forgetCalls();

    void open(const QString &gate);

private:
    ToolAnswer newRule(const std::optional<QStringList> &arguments);

    const QString m_path;
    int m_rules = 0;
};

/// Both tools in "../lib/varda/Tools" as seen from the running program; gone when this object goes.
class StandInTools
{
public:
    StandInTools();
    ~StandInTools();
    Q_DISABLE_COPY_MOVE(StandInTools)

    /// Where the tree is staged.
    static QString directory();

    StandInTool &adb() { return m_adb; }
    StandInTool &scrcpy() { return m_scrcpy; }

    /// Opens `gate` for both.
    void open(const QString &gate);
    /// Ends every run in flight: for a test that has failed.
    void release();
    QList<ToolCall> unexpectedCalls() const;

private:
    StandInTool m_adb;
    StandInTool m_scrcpy;
};

} // namespace varda::test
