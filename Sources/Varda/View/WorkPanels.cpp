// WorkPanels: each button does what one of the window's actions does, and is enabled if that is.
#include "Varda/View/WorkPanels.h"

#include "Varda/View/DropZone.h"
#include "Varda/View/TextFields.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"

#include <QAction>
#include <QLineEdit>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

using Kind = Button::Kind;

constexpr int headlineGap = 4;

Button *makeButton(Kind kind, const QString &name, const QString &text, QWidget *parent,
                   std::optional<Icon> icon = std::nullopt)
{
    auto *button = new Button(kind, text, icon, parent);
    button->setObjectName(name);
    return button;
}

} // namespace

DeployPanel::DeployPanel(VardaModel &model, const WindowActions &actions, QWidget *parent)
    : Panel(u"01 / DEPLOY A BUILD"_s, Icon::Box, parent)
    , m_dropZone(new DropZone(model, this))
{
    setObjectName(u"deployPanel"_s);
    auto *choose = makeButton(Kind::Secondary, u"chooseButton"_s, u"Choose APK"_s, this);
    auto *install = makeButton(Kind::Primary, u"installButton"_s, u"Install on device"_s, this);
    tie(*choose, u"Choose a build to install"_s, actions.chooseBuild);
    tie(*install, u"Install the chosen build"_s, actions.install);
    content().addWidget(m_dropZone);
    content().addLayout(makeRow({choose, install}));
}

void DeployPanel::render()
{
    m_dropZone->render();
}

LivePhonePanel::LivePhonePanel(const WindowActions &actions, QWidget *parent)
    : Panel(u"02 / LIVE PHONE"_s, Icon::Windows, parent)
    , m_actions(actions)
    , m_mirror(makeButton(Kind::Primary, u"mirrorButton"_s, {}, this))
{
    setObjectName(u"livePhonePanel"_s);
    auto *record = makeButton(Kind::Secondary, u"recordButton"_s, u"Record test"_s, this);
    QLabel *headline =
        makeText(u"Control the real screen."_s, theme::font(theme::bodySize, QFont::DemiBold), theme::text, this);
    headline->setObjectName(u"liveHeadline"_s);
    QLabel *text = makeText(u"Opens a real scrcpy window. Use your Mac’s mouse and keyboard, or save a recording of "
                            "your test session."_s,
                            theme::font(theme::bodySize), theme::secondaryText, this);
    text->setObjectName(u"liveText"_s);
    auto *words = new QVBoxLayout;
    words->setSpacing(headlineGap);
    words->addWidget(headline);
    words->addWidget(text);
    content().addLayout(words);
    for (const bool running : {true, false}) {
        m_mirror->setText(livePhoneLabel(running));
        m_mirror->setMinimumWidth(qMax(m_mirror->minimumWidth(), m_mirror->sizeHint().width())); // its neighbour stays
    }
    content().addLayout(makeRow({m_mirror, record}));
    tie(*m_mirror, u"Show the phone’s screen in a window"_s, actions.livePhone);
    tie(*record, u"Open the live phone and save what happens as a video"_s, actions.record);
}

void LivePhonePanel::render()
{
    m_mirror->setText(m_actions.livePhone->text());
}

ApplicationPanel::ApplicationPanel(VardaModel &model, const WindowActions &actions, QWidget *parent)
    : Panel(u"03 / TEST YOUR APPLICATION"_s, Icon::Play, parent)
    , m_model(model)
    , m_package(makeField(u"packageField"_s, u"Package ID"_s, u"Package ID · com.example.myapp"_s, this))
{
    setObjectName(u"applicationPanel"_s);
    auto *launch = makeButton(Kind::Secondary, u"launchButton"_s, u"Launch"_s, this);
    auto *stop = makeButton(Kind::Secondary, u"stopButton"_s, u"Stop app"_s, this);
    auto *list = makeButton(Kind::Secondary, u"listButton"_s, u"List apps"_s, this);
    auto *screenshot = makeButton(Kind::Secondary, u"screenshotButton"_s, u"Screenshot"_s, this, Icon::Camera);
    content().addWidget(m_package);
    content().addLayout(makeRow({launch, stop, list, screenshot}));
    bindText(*m_package, m_model.packageName);
    QObject::connect(m_package, &QLineEdit::returnPressed, actions.launch, &QAction::trigger);
    tie(*launch, u"Start the app with this package ID"_s, actions.launch);
    tie(*stop, u"Force the app with this package ID to stop"_s, actions.stopApp);
    tie(*list, u"Show the installed apps in the console"_s, actions.list);
    tie(*screenshot, u"Save the phone’s screen as a picture"_s, actions.screenshot);
}

void ApplicationPanel::render()
{
    renderText(*m_package, m_model.packageName);
}

} // namespace varda
