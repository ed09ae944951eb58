// ConsolePanel: the device console with its controls.
#pragma once

#include "Varda/Model/VardaModel.h"

#include <QWidget>

namespace varda {

class Button;
class WindowActions;
class ConsoleText;
class FindLine;

class ConsolePanel final : public QWidget
{
    Q_OBJECT

public:
    ConsolePanel(VardaModel &model, const WindowActions &actions, QWidget *parent = nullptr);

    /// `listed` tells that "List apps" has just put its list into the console.
    void render(bool listed);

Q_SIGNALS:
    /// The user turned the console on.
    void started();
    /// The user opened the find line, or went to a match.
    void searched();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void connectFind(const WindowActions &actions);
    void openFind();
    void closeFind();
    void goToMatch(bool next);
    void mark();
    void showCount();

    VardaModel &m_model;
    Button *m_toggle;
    Button *m_export;
    FindLine *m_find;
    ConsoleText *m_text;
};

} // namespace varda
