// Published: a property of the model whose every write is announced.
#pragma once

#include <QtGlobal>

#include <functional>
#include <utility>

namespace varda {

/// A value that announces each write before it happens, so that whoever shows it can render anew afterwards.
///
/// Read with a call, write with an assignment: `if (model.busy()) …`, `model.status = text;`.
///
/// The rules, in the order in which a write follows them:
/// 1. `willChange` is called, for equal values too: nobody compares.
/// 2. The new value is stored.
/// 3. `didChange`, if there is one, receives the previous value; it may write other properties.
///
/// Not copyable and not movable: a property belongs to its model. No locks: use it on the model's thread only.
template <typename Value>
class Published
{
public:
    using WillChange = std::function<void()>;
    using DidChange = std::function<void(const Value &previous)>;

    /// `willChange` is shared by the properties of a model and outlives them.
    explicit Published(const WillChange &willChange, Value initial = {}, DidChange didChange = {})
        : m_willChange(willChange)
        , m_didChange(std::move(didChange))
        , m_value(std::move(initial))
    {
    }
    explicit Published(const WillChange &&, Value = {}, DidChange = {}) = delete;
    Q_DISABLE_COPY_MOVE(Published)
    ~Published() = default;

    const Value &operator()() const { return m_value; }

    Published &operator=(Value value)
    {
        m_willChange();
        const Value previous = std::exchange(m_value, std::move(value));
        if (m_didChange)
            m_didChange(previous);
        return *this;
    }

private:
    const WillChange &m_willChange;
    const DidChange m_didChange;
    Value m_value;
};

} // namespace varda
