// Writes SVG files as numbers for Icon.cpp, each for the icon of its file's name:
//
//   compile-icons HEADER ICON.svg...
//
// Knows what the icons need: square pictures of paths in one colour or in a vertical gradient. Anything else is
// refused.
#include <QFile>
#include <QFileInfo>
#include <QLinearGradient>
#include <QPaintDevice>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QSvgRenderer>
#include <QTextStream>

#include <cstdio>
#include <cstdlib>

namespace {

[[noreturn]] void fail(const QString &reason)
{
    std::fprintf(stderr, "compile-icons: %s\n", qUtf8Printable(reason));
    std::exit(1);
}

QString number(double value)
{
    return QString::number(value, 'f', 6) + u'F';
}

/// Takes down the paths that are painted with it.
class Recorder final : public QPaintEngine
{
public:
    explicit Recorder(const QString &name)
        : QPaintEngine(AllFeatures)
        , m_name(name)
    {
    }

    QString outlines() const { return m_outlines; }
    QString shapes() const { return m_shapes; }

    bool begin(QPaintDevice *) override { return true; }
    bool end() override { return true; }
    Type type() const override { return User; }
    void updateState(const QPaintEngineState &) override {}
    void drawPixmap(const QRectF &, const QPixmap &, const QRectF &) override { fail(m_name + u" has a bitmap"); }
    void drawPolygon(const QPointF *, int, PolygonDrawMode) override { fail(m_name + u" has a polygon"); }

    /// Qt's SVG renderer fills and strokes a shape one after the other.
    void drawPath(const QPainterPath &path) override
    {
        if (!painter()->transform().isIdentity())
            fail(m_name + u" is transformed");
        const bool filled = painter()->pen().style() == Qt::NoPen;
        const QBrush brush = filled ? painter()->brush() : painter()->pen().brush();
        if (brush.style() == Qt::NoBrush)
            return;
        const QString outline = QStringLiteral("%1Outline%2").arg(m_name).arg(m_count++);
        QTextStream(&m_outlines) << "constexpr IconPoint " << outline << "[] = {" << points(path) << "};\n";
        QTextStream(&m_shapes) << "    {" << outline << ", " << number(filled ? 0 : painter()->pen().widthF()) << ", "
                               << paint(brush, path) << "},\n";
    }

private:
    QString points(const QPainterPath &path) const
    {
        static const char *const kinds[] = {"Move", "Line", "Curve", "Curve"};
        QString text;
        for (int index = 0; index < path.elementCount(); ++index) {
            const QPainterPath::Element &element = path.elementAt(index);
            text += QStringLiteral("{%1, %2, %3}, ")
                        .arg(QLatin1StringView(kinds[element.type]), number(element.x), number(element.y));
        }
        return text;
    }

    QString colour(QColor colour) const
    {
        colour.setAlphaF(colour.alphaF() * static_cast<float>(painter()->opacity()));
        return QStringLiteral("0x%1U").arg(colour.rgba(), 8, 16, QLatin1Char('0'));
    }

    QString paint(const QBrush &brush, const QPainterPath &path) const
    {
        if (brush.style() == Qt::SolidPattern)
            return QStringLiteral("%1, %1, 0, 0").arg(colour(brush.color()));
        const auto *gradient = static_cast<const QLinearGradient *>(brush.gradient());
        if (brush.style() != Qt::LinearGradientPattern || gradient->stops().size() != 2 ||
            gradient->coordinateMode() != QGradient::ObjectMode || gradient->start() != QPointF(0, 0) ||
            gradient->finalStop() != QPointF(0, 1))
            fail(m_name + u" has a paint that is neither one colour nor a gradient from top to bottom");
        const QRectF bounds = path.boundingRect();
        return QStringLiteral("%1, %2, %3, %4")
            .arg(colour(gradient->stops()[0].second), colour(gradient->stops()[1].second), number(bounds.top()),
                 number(bounds.bottom()));
    }

    const QString m_name;
    QString m_outlines;
    QString m_shapes;
    int m_count = 0;
};

/// As large as the picture's own coordinates, so that they are not scaled.
class Canvas final : public QPaintDevice
{
public:
    Canvas(const QString &name, int extent)
        : m_recorder(name)
        , m_extent(extent)
    {
    }

    const Recorder &recorder() const { return m_recorder; }
    QPaintEngine *paintEngine() const override { return &m_recorder; }

protected:
    int metric(PaintDeviceMetric metric) const override
    {
        return metric == PdmWidth || metric == PdmHeight ? m_extent : 1;
    }

private:
    mutable Recorder m_recorder;
    const int m_extent;
};

/// The enumerator of Icon.h: "new-folder" becomes "NewFolder".
QString enumerator(const QString &fileName)
{
    QString name;
    for (const QString &word : fileName.split(u'-'))
        name += word.at(0).toUpper() + word.sliced(1);
    return name;
}

/// The picture of the SVG file `path`, as the constant of the name `name`.
QString compiled(const QString &path, const QString &name)
{
    QSvgRenderer icon(path);
    const QSize size = icon.defaultSize();
    if (!icon.isValid() || size.width() != size.height() || icon.viewBox() != QRect(QPoint(0, 0), size))
        fail(path + u" is no SVG of a square");
    Canvas canvas(name, size.width());
    QPainter painter(&canvas);
    icon.render(&painter);
    painter.end();
    QString text;
    QTextStream(&text) << canvas.recorder().outlines() << "constexpr IconShape " << name << "Shapes[] = {\n"
                       << canvas.recorder().shapes() << "};\nconstexpr IconPicture " << name << "Picture = {"
                       << size.width() << ", " << name << "Shapes};\n\n";
    return text;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 3)
        fail(QStringLiteral("usage: compile-icons HEADER ICON.svg..."));
    QString pictures;
    QString cases;
    for (int index = 2; index < argc; ++index) {
        const QString path = QFile::decodeName(argv[index]);
        const QString name = enumerator(QFileInfo(path).completeBaseName());
        pictures += compiled(path, name);
        cases += QStringLiteral("    case Icon::%1:\n        return %1Picture;\n").arg(name);
    }
    QFile header(QFile::decodeName(argv[1]));
    if (!header.open(QIODevice::WriteOnly))
        fail(header.errorString());
    QTextStream(&header) << "// Written by compile-icons. For Icon.cpp only.\n"
                            "#include \"Varda/View/Widgets/Icon.h\"\n"
                            "#include \"Varda/View/Widgets/IconPicture.h\"\n\n"
                            "namespace varda {\n\nnamespace {\n\nusing enum IconPoint::Kind;\n\n"
                         << pictures
                         << "/// Without a default, so that the compiler notices an icon without a picture.\n"
                            "constexpr const IconPicture &pictureOf(Icon icon)\n{\n    switch (icon) {\n"
                         << cases << "    }\n    Q_UNREACHABLE();\n}\n\n} // namespace\n\n} // namespace varda\n";
    header.close();
    if (header.error() != QFile::NoError)
        fail(header.errorString());
}
