// DropZone: where a build is dropped.
#pragma once

#include "Varda/Model/VardaModel.h"
#include "Varda/View/Widgets/Panel.h"

#include <optional>

class QLabel;
class QMimeData;

namespace varda {

class ElidedLabel;
struct BuildFile;

/// The location that a drag carries in first place, if it is a file's; the other items of the drag are ignored. The
/// bytes are read as RFC 2483 has it: one address a line, comments begin with "#".
std::optional<QUrl> firstFile(const QMimeData &data);

/// Takes drags of files, shows no sign while one hovers, and hands the first file to the model on the next turn of the
/// event loop. Refuses everything else silently.
class DropZone final : public Surface
{
    Q_OBJECT

public:
    explicit DropZone(VardaModel &model, QWidget *parent = nullptr);

    void render();

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void readBuild();
    void showBuild(const QString &path, const std::optional<BuildFile> &file);

    VardaModel &m_model;
    QWidget *m_chosen;
    ElidedLabel *m_fileName;
    QLabel *m_fileFacts;
    QString m_path;         ///< of the build that is shown
    bool m_reading = false; ///< the disk has been asked about the build, and has yet to answer
};

} // namespace varda
