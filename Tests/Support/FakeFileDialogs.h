// FakeFileDialogs: a user who answers file dialogs as a test has arranged.
#pragma once

#include "Varda/Model/FileDialogs.h"

#include <QList>

#include <deque>
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

    /// The answers to come, first in first out; a question without an answer is cancelled. The QList of Qt 6.8 cannot
    /// be assigned other optional values where it had some.
    std::deque<std::optional<QUrl>> builds;
    std::deque<std::optional<QString>> locations;
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
    Answer answer(std::deque<Answer> &answers)
    {
        ++m_script->questions;
        if (m_script->whileOpen)
            m_script->whileOpen();
        if (answers.empty())
            return {};
        Answer first = std::move(answers.front());
        answers.pop_front();
        return first;
    }

    const std::shared_ptr<DialogScript> m_script;
};

} // namespace varda::test
