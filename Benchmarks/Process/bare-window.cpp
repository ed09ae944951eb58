// bare-window: the least that a window of Varda's size on the same toolkit can be.
#include <QApplication>
#include <QWidget>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(1180, 820);
    window.show();
    return QApplication::exec();
}
