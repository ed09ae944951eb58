// The driving library against a window that does a few things on its own time.
#include "Accessibility/WindowDriver.h"

#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace varda::test {

class WindowDriverTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QStringLiteral(SAMPLE_WINDOW), QStringList{});
        QVERIFY(process.waitForStarted());
        window = std::make_unique<WindowDriver>(process.processId());
        QVERIFY(window->opens());
    }

    void cleanup()
    {
        window.reset();
        process.terminate();
        COMPARE_SOON(process.state(), QProcess::NotRunning);
    }

    void pressesWhatIsEnabledAndReadsWhatFollows()
    {
        QVERIFY(window->buttonBecomes(u"Copy"_s, false));
        QVERIFY(window->fill(u"Package"_s, u"Grüße"_s));
        QVERIFY(window->press(u"Copy"_s));
        QVERIFY(window->shows(u"Copied “Grüße”."_s));
        QVERIFY(window->await(u"dialog"_s, u"Copied"_s));
        QVERIFY(window->press(u"Close"_s));
        QVERIFY(window->shows(u"Dialog closed…"_s));
        QVERIFY(window->hides(u"Copied “Grüße”."_s));
    }

    void readsEditableAndMaskedText()
    {
        QVERIFY(window->fill(u"Package"_s, u"one"_s));
        QCOMPARE(window->await(u"text"_s, u"Package"_s).text(), u"one"_s);
        QVERIFY(window->fill(u"Code"_s, u"123456"_s));
        QVERIFY(!window->showing(u"123456"_s));
        QVERIFY(window->press(u"Copy"_s));
        COMPARE_SOON(window->look(u"text"_s, u"Console"_s).text(), u"one and a code of 6"_s);
    }

    void tellsRolesNamesAndStates()
    {
        const Accessible button = window->await(u"push button"_s, u"Copy"_s);
        QVERIFY(!button.enabled());
        QVERIFY(!button.extents().isEmpty());
        const Accessible field = window->await(u"text"_s, u"Package"_s);
        QVERIFY(field.states().contains(u"editable"_s));
        QVERIFY(field.grabFocus());
        QVERIFY(eventually([&] { return field.focused(); }));
        const QString tree = window->tree();
        QVERIFY2(tree.contains(u"label \"Nothing copied.\" ["_s), qUtf8Printable(tree));
        QVERIFY2(tree.contains(u"password text \"Code\""_s), qUtf8Printable(tree));
    }

    void answersForAProgramThatHasEnded()
    {
        const Accessible button = window->await(u"push button"_s, u"Copy"_s);
        process.kill();
        COMPARE_SOON(process.state(), QProcess::NotRunning);
        QCOMPARE(button.name(), QString{});
        QCOMPARE(button.states(), QStringList{u"defunct"_s});
        QVERIFY(!button.act(u"Press"_s));
        QVERIFY(!eventually([&] { return bool(window->look(u"push button"_s, u"Copy"_s)); }, 0ms));
    }

private:
    QProcess process;
    std::unique_ptr<WindowDriver> window;
};

} // namespace varda::test

QTEST_GUILESS_MAIN(varda::test::WindowDriverTest)
#include "WindowDriverTest.moc"
