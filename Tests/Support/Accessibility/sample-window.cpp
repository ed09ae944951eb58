// sample-window: a window with one control of each kind, for the test of the driving library.
#include <QApplication>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

using namespace Qt::StringLiterals;

int main(int argc, char *argv[])
{
    QApplication application{argc, argv};
    QWidget window;
    auto *const field = new QLineEdit;
    field->setAccessibleName(u"Package"_s);
    auto *const secret = new QLineEdit;
    secret->setEchoMode(QLineEdit::Password);
    secret->setAccessibleName(u"Code"_s);
    auto *const console = new QPlainTextEdit;
    console->setReadOnly(true);
    console->setAccessibleName(u"Console"_s);
    auto *const button = new QPushButton{u"&Copy"_s};
    button->setEnabled(false);
    auto *const status = new QLabel{u"Nothing copied."_s};
    auto *const layout = new QFormLayout{&window};
    layout->addWidget(field);
    layout->addWidget(secret);
    layout->addWidget(button);
    layout->addWidget(console);
    layout->addWidget(status);

    QDialog dialog{&window};
    dialog.setWindowTitle(u"Copied"_s);
    auto *const close = new QPushButton{u"Close"_s, &dialog};
    QObject::connect(close, &QPushButton::clicked, &dialog, &QDialog::accept);
    QObject::connect(&dialog, &QDialog::finished, status, [status] { status->setText(u"Dialog closed…"_s); });

    QObject::connect(field, &QLineEdit::textChanged, button,
                     [button](const QString &text) { button->setEnabled(!text.isEmpty()); });
    QObject::connect(button, &QPushButton::clicked, status, [&] {
        console->setPlainText(field->text() + u" and a code of "_s + QString::number(secret->text().size()));
        QTimer::singleShot(200, status, [&] {
            status->setText(u"Copied “"_s + field->text() + u"”."_s);
            dialog.open();
        });
    });
    window.show();
    return QApplication::exec();
}
