// VardaApp: the shell. It owns the one model, the workspace window and the About window, and decides when the model
// starts and stops.
#pragma once

#include "Varda/Model/VardaModel.h"

#include <QApplication>

#include <memory>
#include <optional>

namespace varda {

class AboutPane;
class OpenRequests;
class VardaView;

/// One per process. Closing the window, "Quit", and SIGTERM, SIGINT and SIGHUP all end the event loop; the model is
/// stopped once, when it has ended.
class VardaApp final
{
public:
    VardaApp(int &argc, char **argv);
    Q_DISABLE_COPY_MOVE(VardaApp)
    ~VardaApp();

    /// Shows the window, takes the build `file` if there is one, starts the model after the first picture, and runs
    /// until the program is to end. Returns its exit status.
    int run(const std::optional<QUrl> &file = std::nullopt);

private:
    void fillApplicationMenu();
    void showWindow();
    void open(const QUrl &file);

    QApplication m_application;
    const std::shared_ptr<VardaModel> m_model;
    std::unique_ptr<VardaView> m_view;
    std::unique_ptr<AboutPane> m_about;
    const std::unique_ptr<OpenRequests> m_requests;
};

} // namespace varda
