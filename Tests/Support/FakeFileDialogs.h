// FakeFileDialogs: a user who answers file dialogs as a test has arranged.
#pragma once

#include "Varda/Model/FileDialogs.h"

#include <QList>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace varda::test {

/// What a test arranges and looks at; outlives the dialogs that the model owns.
struct DialogScript
{
    struct SaveQuestion
    {
        SaveKind kind;
        QString proposedName;
    };

    /// The answers to come, first in first out; a question without an answer is cancelled.
    QList<std::optional<QUrl>> builds;
    QList<std::optional<QString>> locations;
    /// Runs while a dialog is open: what a nested event loop would let happen.
    std::function<void()> whileOpen;

    int questions = 0; ///< of both kinds
    QList<SaveQuestion> saveQuestions;
};

class FakeFileDialogs final : public FileDialogs
{
public:
    explicit FakeFileDialogs(std::shared_ptr<DialogScript> script = std::make_shared<DialogScript>())
        : m_script(std::move(script))
    {
    }

    std::optional<QUrl> chooseBuild() override { return answer(m_script->builds); }

    std::optional<QString> saveLocation(SaveKind kind, const QString &name) override
    {
        m_script->saveQuestions.append({kind, name});
        return answer(m_script->locations);
    }

private:
    template <typename Answer>
    Answer answer(QList<Answer> &answers)
    {
        ++m_script->questions;
        if (m_script->whileOpen)
            m_script->whileOpen();
        return answers.isEmpty() ? Answer() : answers.takeFirst();
    }

    const std::shared_ptr<DialogScript> m_script;
};

} // namespace varda::test
