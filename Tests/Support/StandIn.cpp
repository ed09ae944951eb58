// The build tells where the program is; its report is texts that a NUL ends.
#include "Support/StandIn.h"

namespace varda {

QString standIn()
{
    return QStringLiteral(VARDA_STAND_IN);
}

QHash<QString, QStringList> readReport(const QByteArray &output)
{
    QHash<QString, QStringList> report;
    for (const QString &text : QString::fromUtf8(output).split(QChar::Null))
        report[text.section(u' ', 0, 0)] << text.section(u' ', 1);
    return report;
}

} // namespace varda
