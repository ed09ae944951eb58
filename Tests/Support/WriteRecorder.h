// WriteRecorder: every published write of a model, in order.
#pragma once

#include "Varda/Model/VardaModel.h"

#include <QObject>
#include <QStringList>

#include <array>

namespace varda::test {

/// A model announces each write before it happens, without saying which property it is. So the recorder compares all
/// properties between one announcement and the next: what differs was the write announced first.
class WriteRecorder : public QObject
{
public:
    /// Records from now on. The model outlives the recorder's last use.
    explicit WriteRecorder(VardaModel &model);

    /// The writes since the last call, as "busy=true", "error=absent", "devices=[A:device]"; a write of an equal value
    /// is "same".
    QStringList take();

private:
    static constexpr std::size_t propertyCount = 14;
    using Snapshot = std::array<QString, propertyCount>;

    Snapshot snapshot() const;
    void closePrevious();

    VardaModel &m_model;
    Snapshot m_last;
    bool m_pending = false; ///< a write was announced whose effect has not been looked at yet
    QStringList m_writes;
};

} // namespace varda::test
