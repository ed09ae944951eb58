// WorkPanels: the three numbered panels of the main column.
#pragma once

#include "Varda/Model/VardaModel.h"
#include "Varda/View/Widgets/Panel.h"

class QLineEdit;

namespace varda {

class Button;
class WindowActions;
class DropZone;

/// Choosing a build and installing it.
class DeployPanel final : public Panel
{
    Q_OBJECT

public:
    DeployPanel(VardaModel &model, const WindowActions &actions, QWidget *parent = nullptr);
    void render();

private:
    VardaModel &m_model;
    DropZone *m_dropZone;
    Button *m_choose;
    Button *m_install;
};

/// Opening, recording and closing the live phone.
class LivePhonePanel final : public Panel
{
    Q_OBJECT

public:
    explicit LivePhonePanel(VardaModel &model, QWidget *parent = nullptr);
    void render();

private:
    VardaModel &m_model;
    Button *m_mirror;
    Button *m_record;
};

/// Launching and watching the app under test.
class ApplicationPanel final : public Panel
{
    Q_OBJECT

public:
    explicit ApplicationPanel(VardaModel &model, QWidget *parent = nullptr);
    void render();

Q_SIGNALS:
    /// The user asked for the list of apps.
    void listAsked();

private:
    VardaModel &m_model;
    QLineEdit *m_package;
    Button *m_launch;
    Button *m_stop;
    Button *m_list;
    Button *m_screenshot;
};

} // namespace varda
