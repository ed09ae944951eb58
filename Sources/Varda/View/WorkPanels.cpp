// WorkPanels: each panel ties its buttons to the model and enables them from it.
#include "Varda/View/WorkPanels.h"

#include "Varda/View/DropZone.h"
#include "Varda/View/TextFields.h"
#include "Varda/View/Widgets/Button.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"
#include "Varda/View/WindowActions.h"

#include <QLineEdit>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

using Kind = Button::Kind;

constexpr int headlineGap = 4;

QString mirrorLabel(bool running)
{
    return running ? u"Stop live phone"_s : u"Open live phone"_s;
}

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
    , m_model(model)
    , m_dropZone(new DropZone(model, this))
    , m_choose(makeButton(Kind::Secondary, u"chooseButton"_s, u"Choose APK"_s, this))
    , m_install(makeButton(Kind::Primary, u"installButton"_s, u"Install on device"_s, this))
{
    setObjectName(u"deployPanel"_s);
    setHint(*m_choose, u"Choose a build to install"_s, actions.chooseBuild);
    content().addWidget(m_dropZone);
    content().addLayout(makeRow({m_choose, m_install}));
    QObject::connect(m_choose, &Button::clicked, this, [this] { m_model.chooseAPK(); });
    QObject::connect(m_install, &Button::clicked, this, [this] { m_model.install(); });
}

void DeployPanel::render()
{
    m_dropZone->render();
    m_install->setEnabled(m_model.takesActions() && m_model.apk().has_value());
}

LivePhonePanel::LivePhonePanel(VardaModel &model, QWidget *parent)
    : Panel(u"02 / LIVE PHONE"_s, Icon::Windows, parent)
    , m_model(model)
    , m_mirror(makeButton(Kind::Primary, u"mirrorButton"_s, {}, this))
    , m_record(makeButton(Kind::Secondary, u"recordButton"_s, u"Record test"_s, this))
{
    setObjectName(u"livePhonePanel"_s);
    QLabel *headline =
        makeText(u"Control the real screen."_s, theme::font(theme::headlineSize, QFont::DemiBold), theme::text, this);
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
    for (const QString &label : {mirrorLabel(true), mirrorLabel(false)}) {
        m_mirror->setText(label);
        m_mirror->setMinimumWidth(qMax(m_mirror->minimumWidth(), m_mirror->sizeHint().width())); // its neighbour stays
    }
    content().addLayout(makeRow({m_mirror, m_record}));
    QObject::connect(m_mirror, &Button::clicked, this, [this] { m_model.mirrorPhone(false); });
    QObject::connect(m_record, &Button::clicked, this, [this] { m_model.mirrorPhone(true); });
}

void LivePhonePanel::render()
{
    const bool running = m_model.mirrorRunning();
    m_mirror->setText(mirrorLabel(running));
    m_mirror->setEnabled(m_model.takesActions() || running);
    m_record->setEnabled(m_model.takesActions() && !running);
}

ApplicationPanel::ApplicationPanel(VardaModel &model, QWidget *parent)
    : Panel(u"03 / TEST YOUR APPLICATION"_s, Icon::Play, parent)
    , m_model(model)
    , m_package(makeField(u"packageField"_s, u"Package ID"_s, u"Package ID · com.example.myapp"_s, this))
    , m_launch(makeButton(Kind::Secondary, u"launchButton"_s, u"Launch"_s, this))
    , m_stop(makeButton(Kind::Secondary, u"stopButton"_s, u"Stop app"_s, this))
    , m_list(makeButton(Kind::Secondary, u"listButton"_s, u"List apps"_s, this))
    , m_screenshot(makeButton(Kind::Secondary, u"screenshotButton"_s, u"Screenshot"_s, this, Icon::Camera))
{
    setObjectName(u"applicationPanel"_s);
    content().addWidget(m_package);
    content().addLayout(makeRow({m_launch, m_stop, m_list, m_screenshot}));
    bindText(*m_package, m_model.packageName);
    QObject::connect(m_launch, &Button::clicked, this, [this] { m_model.appAction(true); });
    QObject::connect(m_stop, &Button::clicked, this, [this] { m_model.appAction(false); });
    QObject::connect(m_list, &Button::clicked, this, [this] {
        m_model.listApps();
        Q_EMIT listAsked();
    });
    QObject::connect(m_screenshot, &Button::clicked, this, [this] { m_model.screenshot(); });
}

void ApplicationPanel::render()
{
    renderText(*m_package, m_model.packageName);
    for (Button *button : {m_launch, m_stop, m_list, m_screenshot})
        button->setEnabled(m_model.takesActions());
}

} // namespace varda
