// What a published property promises: announced before each write, its observer told after it, no copies.
#include "Support/ModelTest.h"

#include "Varda/Model/Published.h"

#include <QTest>

#include <type_traits>

using namespace Qt::StringLiterals;
using varda::Published;
using varda::VardaModel;

namespace {

template <typename Property>
constexpr bool staysWithItsOwner = !std::is_copy_constructible_v<Property> && !std::is_move_constructible_v<Property> &&
                                   !std::is_copy_assignable_v<Property> && !std::is_move_assignable_v<Property>;

static_assert(staysWithItsOwner<Published<bool>>);
static_assert(staysWithItsOwner<Published<QString>>);
static_assert(staysWithItsOwner<Published<std::optional<QString>>>);
static_assert(staysWithItsOwner<Published<QList<varda::AndroidDevice>>>);
static_assert(staysWithItsOwner<VardaModel>);
static_assert(std::is_final_v<VardaModel>);
static_assert(!std::is_default_constructible_v<Published<bool>>, "a property that nobody hears of");
static_assert(std::is_assignable_v<Published<QString> &, QString>);

} // namespace

class PublishedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginsWithItsInitialValueUnannounced();
    void announcesEveryWriteBeforeTheValueChanges();
    void tellsItsObserverThePreviousValueAfterEveryWrite();
    void observerMayWriteOtherProperties();
    void readsAsAReferenceThatFollowsTheValue();
};

void PublishedTest::beginsWithItsInitialValueUnannounced()
{
    int announcements = 0;
    const Published<int> given([&] { ++announcements; }, 7);
    const Published<QString> absent([&] { ++announcements; });
    QCOMPARE(given(), 7);
    QCOMPARE(absent(), QString());
    QCOMPARE(announcements, 0);
}

void PublishedTest::announcesEveryWriteBeforeTheValueChanges()
{
    QStringList seen;
    Published<QString> property([&] { seen << property(); }, u"old"_s);
    property = u"new"_s;
    property = u"new"_s;
    property = u"newer"_s;
    QCOMPARE(seen, QStringList({u"old"_s, u"new"_s, u"new"_s}));
    QCOMPARE(property(), u"newer"_s);
}

void PublishedTest::tellsItsObserverThePreviousValueAfterEveryWrite()
{
    QStringList seen;
    Published<QString> property([&] { seen << u"announced"_s; }, u"old"_s,
                                [&](const QString &previous) { seen << previous + u"→"_s + property(); });
    property = u"new"_s;
    property = u"new"_s;
    QCOMPARE(seen, QStringList({u"announced"_s, u"old→new"_s, u"announced"_s, u"new→new"_s}));
}

void PublishedTest::observerMayWriteOtherProperties()
{
    QStringList order;
    Published<bool> other([&] { order << u"other"_s; }, true);
    Published<int> property([&] { order << u"property"_s; }, 1, [&](int) { other = false; });
    property = 2;
    QCOMPARE(order, QStringList({u"property"_s, u"other"_s}));
    QCOMPARE(property(), 2);
    QCOMPARE(other(), false);
}

void PublishedTest::readsAsAReferenceThatFollowsTheValue()
{
    Published<QString> property([] {}, u"old"_s);
    const QString &view = property();
    property = u"new"_s;
    QCOMPARE(view, u"new"_s);
}

QTEST_GUILESS_MAIN(PublishedTest)
#include "PublishedTest.moc"
