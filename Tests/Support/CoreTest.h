// CoreTest: the bench of the tests of the core: a folder for each test, temporary files in a folder below it, and the
// proof that nothing was left behind.
#pragma once

#include "Support/ProcessCensus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

namespace varda {

class CoreTest : public QObject
{
    Q_OBJECT

protected:
    std::optional<QTemporaryDir> m_home;
    std::optional<ProcessCensus> m_census;

private Q_SLOTS:
    void init()
    {
        m_home.emplace();
        QVERIFY(QDir(m_home->path()).mkdir(QStringLiteral("tmp")));
        qputenv("TMPDIR", QFile::encodeName(m_home->filePath(QStringLiteral("tmp"))));
        m_census.emplace();
    }

    void cleanup()
    {
        QCOMPARE(m_census->leftovers(), QString());
        QVERIFY(QDir::temp().isEmpty());
        qunsetenv("TMPDIR");
    }
};

} // namespace varda
