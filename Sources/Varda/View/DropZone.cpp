// DropZone: a build is taken in on the next turn of the event loop, when the drag has ended.
#include "Varda/View/DropZone.h"

#include "Varda/Model/LocalPath.h"
#include "Varda/View/Widgets/Labels.h"
#include "Varda/View/Widgets/Theme.h"
#include "VardaCore/WorkerThreads.h"

#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QTimer>

#include <cmath>
#include <system_error>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int padding = 20;
constexpr int iconSize = 32;
constexpr int iconGap = 18;
constexpr int fileIcon = 16;
constexpr double dashLength = 4.0;
constexpr double dashWidth = 1.5;

/// Accepts a drag that carries a file, as a copy whatever its source proposes: a source deletes what was moved.
std::optional<QUrl> take(QDropEvent &event)
{
    auto file = firstFile(*event.mimeData());
    event.setDropAction(Qt::CopyAction);
    event.setAccepted(file.has_value());
    return file;
}

/// The dashes of the outline inside `zone`, as many as fit, evenly. The outline begins and ends within a gap.
QList<QPolygonF> dashes(const QRectF &zone)
{
    constexpr double inset = dashWidth / 2;
    QPainterPath outline;
    outline.addRoundedRect(zone.adjusted(inset, inset, -inset, -inset), theme::rowRadius, theme::rowRadius);
    const double length = outline.length() / dashWidth;
    const double dash = length / (2 * std::round(length / (2 * dashLength)));
    QPen pen(theme::dropLine, dashWidth);
    pen.setDashPattern({dash, dash});
    pen.setDashOffset(1.5 * dash);
    return QPainterPathStroker(pen).createStroke(outline).toSubpathPolygons();
}

/// The chosen build's mark, which has no text of its own.
class FileMark final : public QWidget
{
public:
    explicit FileMark(QWidget *parent)
        : QWidget(parent)
    {
        setFixedSize(fileIcon, fileIcon);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        paintIcon(painter, Icon::File, rect(), theme::accent);
    }
};

} // namespace

std::optional<QUrl> firstFile(const QMimeData &data)
{
    const QByteArray list = data.data(u"text/uri-list"_s);
    for (const QByteArray &line : list.split('\n')) {
        const QByteArray address = line.trimmed();
        if (address.isEmpty() || address.startsWith('#'))
            continue;
        const QUrl url = QUrl::fromEncoded(address);
        return url.isValid() && localPath(url) ? std::optional(url) : std::nullopt;
    }
    return std::nullopt;
}

DropZone::DropZone(VardaModel &model, QWidget *parent)
    : Surface(theme::white(0.025), Qt::transparent, theme::rowRadius, parent)
    , m_model(model)
    , m_chosen(new QWidget(this))
    , m_fileName(new ElidedLabel(Qt::ElideMiddle, m_chosen))
    , m_fileFacts(new QLabel(m_chosen))
{
    setObjectName(u"dropZone"_s);
    setAcceptDrops(true);
    QLabel *heading =
        makeText(u"Drop your APK here"_s, theme::font(theme::bodySize, QFont::DemiBold), theme::text, this);
    heading->setObjectName(u"dropHeading"_s);
    QLabel *text = makeText(u"Install an Android development build on the selected device. Updates keep the app’s "
                            "existing data."_s,
                            theme::font(theme::bodySize), theme::secondaryText, this);
    text->setObjectName(u"dropText"_s);

    m_fileName->setObjectName(u"apkName"_s);
    m_fileName->setFont(theme::font(theme::bodySize, QFont::DemiBold));
    m_fileFacts->setObjectName(u"apkFacts"_s);
    m_fileFacts->setTextFormat(Qt::PlainText);
    m_fileFacts->setFont(theme::font(theme::bodySize));
    auto *chosen = new QHBoxLayout(m_chosen);
    chosen->setContentsMargins(0, 4, 0, 0);
    chosen->setSpacing(8);
    chosen->addWidget(new FileMark(m_chosen));
    chosen->addWidget(m_fileName);
    chosen->addWidget(m_fileFacts);
    chosen->addStretch(1);
    m_chosen->hide();

    auto *stack = new QVBoxLayout(this);
    stack->setContentsMargins(padding + iconSize + iconGap, padding, padding, padding);
    stack->setSpacing(4);
    stack->addWidget(heading);
    stack->addWidget(text);
    stack->addWidget(m_chosen);
}

void DropZone::render()
{
    const auto build = m_model.apk();
    if (build) {
        const QString path = localPath(*build).value_or(QString());
        if (path != m_path)
            m_fileFacts->clear(); // until they are those of this build
        m_path = path;
        m_fileName->setLine(QFileInfo(path).fileName(), path);
        readBuild();
    }
    m_chosen->setVisible(build.has_value());
}

/// Reads the build again, as often as the window is rendered and thus with every tick. On another thread: its disk may
/// be slow, or in a network.
void DropZone::readBuild()
{
    if (m_reading || !isVisible())
        return;
    static WorkerThreads disk(1);
    const auto read = [zone = QPointer(this), path = m_path] {
        const auto show = [zone, path, file = readBuildFile(path)] {
            if (zone)
                zone->showBuild(path, file);
        };
        QMetaObject::invokeMethod(qApp, show, Qt::QueuedConnection);
    };
    try {
        disk.start(read);
        m_reading = true;
    } catch (const std::system_error &) { // no thread to be had: the next render tries again
    }
}

void DropZone::showBuild(const QString &path, const std::optional<BuildFile> &file)
{
    m_reading = false;
    if (path != m_path) { // another build was chosen meanwhile
        readBuild();
        return;
    }
    const QString facts = describeBuild(file, m_model.buildWhenChosen(), QDateTime::currentDateTime());
    if (facts == m_fileFacts->text())
        return;
    m_fileFacts->setText(facts);
    setTextColour(*m_fileFacts, file ? theme::secondaryText : theme::attention);
}

void DropZone::dragEnterEvent(QDragEnterEvent *event)
{
    take(*event);
}

void DropZone::dropEvent(QDropEvent *event)
{
    if (const auto file = take(*event))
        QTimer::singleShot(0, this, [this, build = *file] { m_model.acceptAPK(build); });
}

/// Reads the build, which no render has done while the zone was hidden.
void DropZone::showEvent(QShowEvent *event)
{
    Surface::showEvent(event);
    render();
}

void DropZone::paintEvent(QPaintEvent *event)
{
    Surface::paintEvent(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme::dropLine);
    // One by one, for Qt has other threads fill what has a hundred spans or more, and waits for them.
    for (const QPolygonF &dash : dashes(rect()))
        painter.drawPolygon(dash);
    paintIcon(painter, Icon::Drop, QRectF(padding, (height() - iconSize) / 2.0, iconSize, iconSize), theme::accent);
}

} // namespace varda
