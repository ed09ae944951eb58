// label-window: the texts of Varda's first picture in the same faces, each in a label of Qt's own in a plain layout,
// and nothing else: what it takes to show so many words.
#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>

#include <initializer_list>

namespace {

struct Text
{
    const char *text;
    int pixels;
    QFont::Weight weight = QFont::Normal;
    const char *family = "Inter";
};

constexpr auto fixedPitch = "DejaVu Sans Mono";

QVBoxLayout *makeColumn(std::initializer_list<Text> texts)
{
    auto *column = new QVBoxLayout;
    for (const Text &each : texts) {
        auto *label = new QLabel(QString::fromUtf8(each.text));
        QFont font(QString::fromLatin1(each.family));
        font.setPixelSize(each.pixels);
        font.setWeight(each.weight);
        label->setFont(font);
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        column->addWidget(label);
    }
    return column;
}

QVBoxLayout *makeSide()
{
    return makeColumn({
        {"Varda", 17, QFont::Bold},
        {"HALVEX / ANDROID WORKSPACE", 9, QFont::DemiBold},
        {"DEVICES", 10, QFont::Bold},
        {"Waiting for your phone", 13},
        {"Connect over Wi-Fi", 13, QFont::DemiBold},
        {"Real hardware. Real results.", 13, QFont::DemiBold},
        {"USB first. Authorize this Mac on your phone, then install and test your own development APKs.", 10},
    });
}

QVBoxLayout *makeMain()
{
    return makeColumn({
        {"LOCAL BUILD / 0.1", 10, QFont::Normal, fixedPitch},
        {"Your Android. On your Mac.", 32, QFont::Bold},
        {"Deploy. Control. Inspect. Repeat.", 13},
        {"01 / DEPLOY A BUILD", 10, QFont::DemiBold},
        {"Drop your APK here", 13, QFont::DemiBold},
        {"Install an Android development build on the selected device. Updates keep the app’s existing data.", 13},
        {"Choose APK", 13, QFont::DemiBold},
        {"Install on device", 13, QFont::DemiBold},
        {"02 / LIVE PHONE", 10, QFont::DemiBold},
        {"Control the real screen.", 13, QFont::DemiBold},
        {"Opens a real scrcpy window. Use your Mac’s mouse and keyboard, or save a recording of your test session.",
         13},
        {"Open live phone", 13, QFont::DemiBold},
        {"Record test", 13, QFont::DemiBold},
        {"03 / TEST YOUR APPLICATION", 10, QFont::DemiBold},
        {"Package ID · com.example.myapp", 13},
        {"Launch", 13, QFont::DemiBold},
        {"Stop app", 13, QFont::DemiBold},
        {"List apps", 13, QFont::DemiBold},
        {"Screenshot", 13, QFont::DemiBold},
        {"DEVICE CONSOLE", 10, QFont::DemiBold},
        {"Start logs", 13, QFont::DemiBold},
        {"Export", 13, QFont::DemiBold},
        {"Device output will appear here. Enter a package ID to limit logs to your running app.", 11, QFont::Normal,
         fixedPitch},
        {"Latest 350 lines · refreshes every 2.5s", 10},
        {"Connect an Android phone with a USB data cable.", 10},
        {"USB setup: Android Settings → About phone → tap Build number 7 times → Developer options → USB debugging. "
         "Use a data cable, unlock the phone and allow this computer. An emulator is shown separately and is never "
         "presented as a real phone test.",
         10},
    });
}

} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(1180, 820);
    auto *columns = new QHBoxLayout(&window);
    columns->addLayout(makeSide());
    columns->addLayout(makeMain(), 1);
    window.show();
    return QApplication::exec();
}
