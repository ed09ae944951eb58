// A build in words: its size, its age, and whether it is still what was chosen.
#include "Varda/Model/BuildFile.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace varda;

class BuildFileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysSizeAndAge_data()
    {
        QTest::addColumn<qint64>("size");
        QTest::addColumn<qint64>("age");
        QTest::addColumn<QString>("words");
        const auto row = [](qint64 size, qint64 age, const QString &words) {
            QTest::newRow(qPrintable(words)) << size << age << words;
        };
        constexpr qint64 hour = 3600;
        constexpr qint64 day = 24 * hour;
        row(24'300'000, 3 * 60 + 59, u"24 MB · 3 minutes ago"_s);
        row(0, 0, u"0 bytes · just now"_s);
        row(999, 59, u"999 bytes · just now"_s);
        row(1000, 60, u"1.0 kB · 1 minute ago"_s);
        row(9'949, -60, u"9.9 kB · just now"_s);
        row(9'960, 59 * 60 + 59, u"10 kB · 59 minutes ago"_s);
        row(999'600, hour, u"1.0 MB · 1 hour ago"_s);
        row(1'400'000, day - 1, u"1.4 MB · 23 hours ago"_s);
        row(2'500'000'000, day, u"2.5 GB · 1 day ago"_s);
        row(4'000'000'000'000, 7 * day - 1, u"4000 GB · 6 days ago"_s);
        row(1'000'000, 7 * day, u"1.0 MB · 14 November 2026"_s);
        row(1'000'000, -2 * day, u"1.0 MB · 23 November 2026"_s);
    }
    void saysSizeAndAge()
    {
        QFETCH(qint64, size);
        QFETCH(qint64, age);
        QFETCH(QString, words);
        const QDateTime now(QDate(2026, 11, 21), QTime(12, 0));
        const BuildFile file{size, now.addSecs(-age)};
        QCOMPARE(describeBuild(file, file, now), words);
    }

    void saysWhatIsNotAsItWasChosen()
    {
        const QDateTime now(QDate(2026, 11, 21), QTime(12, 0));
        const BuildFile chosen{2'000'000, now.addSecs(-600)};
        const auto changed = u"2.0 MB · just now · changed since it was chosen"_s;
        QCOMPARE(describeBuild(BuildFile{2'000'000, now}, chosen, now), changed);
        QCOMPARE(describeBuild(BuildFile{2'000'001, now}, std::nullopt, now), changed);
        QVERIFY(
            describeBuild(BuildFile{2'000'001, chosen.written}, chosen, now).endsWith(u"changed since it was chosen"));
        QCOMPARE(describeBuild(std::nullopt, chosen, now), u"no longer there"_s);
    }
};

QTEST_GUILESS_MAIN(BuildFileTest)
#include "BuildFileTest.moc"
