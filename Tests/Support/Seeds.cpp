// Seeds: see the header.
#include "Support/Seeds.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace varda::test {

namespace {

QString keptSeeds(const QString &test)
{
    return QStringLiteral(TEST_DATA "/") + test + u"/seeds"_s;
}

} // namespace

QList<quint32> seedsFor(const QString &test, int fresh)
{
    QFile file(keptSeeds(test));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("Cannot read %s", qUtf8Printable(file.fileName()));
    QList<quint32> seeds;
    while (!file.atEnd()) {
        const QByteArray line = file.readLine().split('#').first().trimmed();
        bool isNumber = false;
        if (const quint32 seed = line.toUInt(&isNumber); isNumber)
            seeds << seed;
        else if (!line.isEmpty())
            qFatal("No seed in %s: %s", qUtf8Printable(file.fileName()), line.constData());
    }
    for (int i = 0; i < fresh; ++i)
        seeds << QRandomGenerator::global()->generate() % 1'000'000;
    return seeds;
}

void addSeedRows(const QList<quint32> &seeds)
{
    QTest::addColumn<quint32>("seed");
    for (const quint32 seed : seeds)
        QTest::addRow("seed %u", seed) << seed;
}

void tellHowToReplay(const QString &test)
{
    if (!QTest::currentTestFailed())
        return;
    const QString row = QString::fromUtf8(QTest::currentDataTag());
    qWarning().noquote() << u"To play it again, and always from now on, add \"%1\" to %2 and run: %3 \"%4:%5\""_s.arg(
        row.section(u' ', 1), keptSeeds(test), test, QString::fromUtf8(QTest::currentTestFunction()), row);
}

} // namespace varda::test
