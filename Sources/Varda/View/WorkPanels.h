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
    DropZone *m_dropZone;
};

/// Opening, recording and closing the live phone.
class LivePhonePanel final : public Panel
{
    Q_OBJECT

public:
    explicit LivePhonePanel(const WindowActions &actions, QWidget *parent = nullptr);
    void render();

private:
    const WindowActions &m_actions;
    Button *m_mirror;
};

/// Launching and watching the app under test.
class ApplicationPanel final : public Panel
{
    Q_OBJECT

public:
    ApplicationPanel(VardaModel &model, const WindowActions &actions, QWidget *parent = nullptr);
    void render();

private:
    VardaModel &m_model;
    QLineEdit *m_package;
};

} // namespace varda
