// ViewFixture: a real window on a real model that was never started, whose properties a test writes.
#pragma once

#include "Support/FakeFileDialogs.h"
#include "Varda/Model/VardaModel.h"
#include "Varda/View/VardaView.h"

#include <QTest>
#include <QWidget>

#include <memory>
#include <optional>

namespace varda {

/// A window with its model. Nothing polls: what the window shows is what the test published.
class ViewFixture
{
public:
    ViewFixture();

    /// Renders what was published, shows the window and waits until it is on the screen.
    void show();
    /// The same, and until it has the keyboard.
    void activate();

    /// The one widget called `name`, in the window or in a dialog over it; fails the program where there is none.
    template <typename Widget = QWidget>
    Widget *find(const char *name) const
    {
        auto *widget = view->findChild<Widget *>(QString::fromLatin1(name));
        if (!widget) {
            buildDialogs();
            widget = view->findChild<Widget *>(QString::fromLatin1(name));
        }
        if (!widget)
            qFatal("no widget is called %s", name);
        return widget;
    }

    /// Publishes these devices as attached, and which of them is selected.
    void list(const QList<AndroidDevice> &devices, const std::optional<QString> &selected = std::nullopt);
    /// Publishes one device as attached and selected.
    void attach(const AndroidDevice &device) { list({device}, device.id); }

    /// Lets the window render what was published.
    static void settle();

    const std::shared_ptr<test::DialogScript> dialogs = std::make_shared<test::DialogScript>();
    std::shared_ptr<VardaModel> model;
    std::unique_ptr<VardaView> view;

private:
    void buildDialogs() const;
};

/// A test with a new window, not yet shown, for each of its functions.
class ViewTest : public QObject
{
    Q_OBJECT

protected:
    std::optional<ViewFixture> fixture;

protected Q_SLOTS:
    void init() { fixture.emplace(); }
    void cleanup() { fixture.reset(); }
};

inline const AndroidDevice readyPhone{QStringLiteral("R58M42ABCDE"), QStringLiteral("device"),
                                      QStringLiteral("Pixel 8")};
inline const AndroidDevice shyPhone{QStringLiteral("ZY22FQ7TKD"), QStringLiteral("unauthorized"),
                                    QStringLiteral("moto g54 5G")};
inline const AndroidDevice anEmulator{QStringLiteral("emulator-5554"), QStringLiteral("device"),
                                      QStringLiteral("sdk gphone64 x86 64")};
inline const AndroidDevice wirelessPhone{QStringLiteral("192.168.1.50:42137"), QStringLiteral("offline"),
                                         QStringLiteral("SM S911B")};

} // namespace varda
