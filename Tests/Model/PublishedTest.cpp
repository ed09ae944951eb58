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
static_assert(!std::is_constructible_v<Published<bool>, std::function<void()>>, "a function that is gone at once");
static_assert(std::is_assignable_v<Published<QString> &, QString>);

const std::function<void()> silent = [] {};

} // namespace

class PublishedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void beginsWithItsInitialValueUnannounced()
    {
        int announcements = 0;
        const std::function<void()> announce = [&] { ++announcements; };
        const Published<int> given(announce, 7);
        const Published<QString> absent(announce);
        QCOMPARE(given(), 7);
        QCOMPARE(absent(), QString());
        QCOMPARE(announcements, 0);
    }

    void announcesEveryWriteBeforeTheValueChanges()
    {
        QStringList seen;
        std::function<void()> announce;
        Published<QString> property(announce, u"old"_s);
        announce = [&] { seen << property(); };
        property = u"new"_s;
        property = u"new"_s;
        property = u"newer"_s;
        QCOMPARE(seen, QStringList({u"old"_s, u"new"_s, u"new"_s}));
        QCOMPARE(property(), u"newer"_s);
    }

    void tellsItsObserverThePreviousValueAfterEveryWrite()
    {
        QStringList seen;
        const std::function<void()> announce = [&] { seen << u"announced"_s; };
        Published<QString> property(announce, u"old"_s,
                                    [&](const QString &previous) { seen << previous + u"→"_s + property(); });
        property = u"new"_s;
        property = u"new"_s;
        QCOMPARE(seen, QStringList({u"announced"_s, u"old→new"_s, u"announced"_s, u"new→new"_s}));
    }

    void observerMayWriteOtherProperties()
    {
        QStringList order;
        const std::function<void()> announceOther = [&] { order << u"other"_s; };
        const std::function<void()> announce = [&] { order << u"property"_s; };
        Published<bool> other(announceOther, true);
        Published<int> property(announce, 1, [&](int) { other = false; });
        property = 2;
        QCOMPARE(order, QStringList({u"property"_s, u"other"_s}));
        QCOMPARE(property(), 2);
        QCOMPARE(other(), false);
    }

    void readsAsAReferenceThatFollowsTheValue()
    {
        Published<QString> property(silent, u"old"_s);
        const QString &view = property();
        property = u"new"_s;
        QCOMPARE(view, u"new"_s);
    }
};

QTEST_GUILESS_MAIN(PublishedTest)
#include "PublishedTest.moc"
