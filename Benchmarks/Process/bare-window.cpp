// bare-window: the least that a window of Varda's size on the same toolkit can be. With an argument it shows that as
// one line of text: the first text brings the fonts in.
#include <QApplication>
#include <QLabel>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(1180, 820);
    if (argc > 1)
        new QLabel(QString::fromUtf8(argv[1]), &window);
    window.show();
    return QApplication::exec();
}
