// drag-source: another program's window to drag something from.
//
//     drag-source text/uri-list "file:///tmp/a.apk"
//
// A drag with the left button carries the second argument's bytes (with "\n" for a line's end) as the first one's type.
// It prints "ready" when its window is shown, "dragging" when a drag begins, "accepted" whenever the place under the
// pointer comes to take it, and at its end "dropped" (which is a copy, though it proposes to move), "moved" or
// "refused".
#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QWidget>

#include <cstdio>

namespace {

void say(const char *word)
{
    std::puts(word);
    std::fflush(stdout);
}

class Source final : public QWidget
{
public:
    Source(QString mimeType, QByteArray content)
        : type{std::move(mimeType)}
        , bytes{std::move(content)}
    {
    }

protected:
    void showEvent(QShowEvent *) override { say("ready"); }

    void mouseMoveEvent(QMouseEvent *event) override
    {
        if (!(event->buttons() & Qt::LeftButton))
            return;
        auto *const content = new QMimeData;
        content->setData(type, bytes);
        auto *const drag = new QDrag{this};
        drag->setMimeData(content);
        QObject::connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) {
            if (action != Qt::IgnoreAction)
                say("accepted");
        });
        say("dragging");
        const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
        say(action == Qt::CopyAction ? "dropped" : (action == Qt::IgnoreAction ? "refused" : "moved"));
    }

private:
    const QString type;
    const QByteArray bytes;
};

} // namespace

int main(int argc, char *argv[])
{
    QApplication application{argc, argv};
    const QStringList arguments = QApplication::arguments();
    Source source{arguments.value(1), arguments.value(2).replace(QLatin1String{"\\n"}, QLatin1String{"\r\n"}).toUtf8()};
    source.setWindowTitle(QStringLiteral("drag-source"));
    source.setFixedSize(200, 100);
    source.show();
    return QApplication::exec();
}
