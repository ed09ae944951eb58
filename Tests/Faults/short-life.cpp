// short-life: the whole program with a user who never rests, for LifetimeTest to end. Says "up" on standard output
// when its window is shown; then every few milliseconds a random button is pressed.
//
//   short-life SEED
#include "Varda/App/VardaApp.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialogButtonBox>
#include <QFileDialog>
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

/// Of a file dialog's buttons, only those that close it: the others lead out of the test's own directory.
bool staysInItsDirectory(const QAbstractButton *button)
{
    return !qobject_cast<QFileDialog *>(button->window()) || qobject_cast<QDialogButtonBox *>(button->parentWidget());
}

void pressSomething(std::mt19937 &random)
{
    QList<QAbstractButton *> buttons;
    for (const QWidget *window : QApplication::topLevelWidgets()) {
        for (QLineEdit *field : window->findChildren<QLineEdit *>()) {
            if (field->isVisible())
                field->setText(textFor(field->accessibleName()));
        }
        for (QAbstractButton *button : window->findChildren<QAbstractButton *>()) {
            if (button->isVisible() && button->isEnabled() && staysInItsDirectory(button))
                buttons << button;
        }
    }
    if (!buttons.isEmpty())
        buttons[static_cast<qsizetype>(random() % static_cast<size_t>(buttons.size()))]->click();
}

/// Presses something after every pause. Each pause has a timer of its own: a timer does not fire again while its slot
/// runs, and a press that opens a dialog returns only when that is closed, which takes a press.
void keepPressing(std::mt19937 &random)
{
    QTimer::singleShot(pauseBetweenPresses, qApp, [&random] {
        keepPressing(random);
        pressSomething(random);
    });
}

} // namespace

int main(int argc, char *argv[])
{
    std::mt19937 random(argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 0U);
    varda::VardaApp application(argc, argv);
    keepPressing(random);
    QTimer::singleShot(0, qApp, [] {
        std::puts("up");
        std::fflush(stdout);
    });
    return application.run();
}
