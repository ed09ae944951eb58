// short-life: the whole program with a person who never rests, for LifetimeTest to end. Says "up" on standard output
// when its window is shown; then every few milliseconds a random button is pressed.
//
//   short-life SEED
#include "Varda/VardaApp.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <cstdio>
#include <random>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pauseBetweenPresses = 15ms;

QString textFor(const QString &field)
{
    return field.contains(u"code", Qt::CaseInsensitive)      ? u"482916"_s
           : field.contains(u"package", Qt::CaseInsensitive) ? u"com.example.app"_s
                                                             : u"192.168.1.50:37123"_s;
}

/// Also called while a dialog of an earlier press is open, for that has an event loop of its own.
void pressSomething(std::mt19937 &random)
{
    QList<QAbstractButton *> buttons;
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        for (QLineEdit *field : window->findChildren<QLineEdit *>()) {
            if (field->isVisible())
                field->setText(textFor(field->accessibleName()));
        }
        for (QAbstractButton *button : window->findChildren<QAbstractButton *>()) {
            if (button->isVisible() && button->isEnabled())
                buttons << button;
        }
    }
    if (!buttons.isEmpty())
        buttons[static_cast<qsizetype>(random() % static_cast<size_t>(buttons.size()))]->click();
}

} // namespace

int main(int argc, char *argv[])
{
    std::mt19937 random(argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 0U);
    varda::VardaApp application(argc, argv);
    QTimer presses;
    QObject::connect(&presses, &QTimer::timeout, &presses, [&random] { pressSomething(random); });
    presses.start(pauseBetweenPresses);
    QTimer::singleShot(0, &presses, [] {
        std::puts("up");
        std::fflush(stdout);
    });
    return application.run();
}
