// AboutPane: the link alone reaches into the padding, by the width of its focus ring.
#include "Varda/View/AboutPane.h"

#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/PlainText.h"
#include "Varda/View/Widgets/Theme.h"

#include <QDesktopServices>
#include <QUrl>
#include <QVBoxLayout>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int paneWidth = 520;
constexpr int padding = 30;
constexpr int spacing = 14;
constexpr int linkInset = 4; // the link's ring reaches into the padding

} // namespace

AboutPane::AboutPane(QWidget *parent)
    : FittedDialog(paneWidth, parent)
{
    setObjectName(u"aboutPane"_s);
    setWindowTitle(u"About Varda"_s);
}

void AboutPane::build()
{
    QLabel *title = makeText(u"Varda by Halvex"_s, theme::font(theme::title2Size, QFont::Bold), theme::text, this);
    title->setObjectName(u"aboutTitle"_s);
    QLabel *kind = makeText(u"Local development build · Apple Silicon · macOS 13+"_s, theme::font(theme::bodySize),
                            theme::text, this);
    kind->setObjectName(u"aboutBuild"_s);
    QLabel *text = makeText(u"ADB and scrcpy run locally. No account, cloud relay or analytics. Phone access requires "
                            "your Android USB debugging authorization. Wi-Fi uses Android’s pairing-code workflow."_s,
                            theme::font(theme::bodySize), theme::secondaryText, this);
    text->setObjectName(u"aboutText"_s);
    auto *link = new Button(Button::Kind::Link, u"Android debugging documentation"_s, std::nullopt, this);
    link->setObjectName(u"aboutLink"_s);
    const QUrl page(u"https://developer.android.com/tools/adb"_s);
    setPlainToolTip(link, page.toString());
    QObject::connect(link, &Button::clicked, this, [page] { QDesktopServices::openUrl(page); });

    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(padding - linkInset, padding, padding - linkInset, padding - linkInset);
    outer->setSpacing(spacing - linkInset);
    auto *stack = new QVBoxLayout;
    stack->setContentsMargins(linkInset, 0, linkInset, 0);
    stack->setSpacing(spacing);
    stack->addWidget(title);
    stack->addWidget(kind);
    stack->addWidget(text);
    outer->addLayout(stack);
    outer->addWidget(link, 0, Qt::AlignLeft);
}

void AboutPane::present()
{
    setFocus(); // not yet on the link
    show();
    raise();
    activateWindow();
}

} // namespace varda
