// The program that tests run in place of a real tool.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

namespace varda {

/// The absolute path of the stand-in program; its source tells what its arguments make it do.
QString standIn();

/// What its behaviour "report" wrote, by kind: "argument", "variable", "descriptor" (number, blank, target), "blocked"
/// and "ignored" (signals), "directory", "process" and "session".
QHash<QString, QStringList> readReport(const QByteArray &output);

} // namespace varda
