// WriteRecorder: every published write of a model, in order.
#include "Support/WriteRecorder.h"

namespace varda::test {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array names{"devices",
                           "selectedID",
                           "status",
                           "busy",
                           "apk",
                           "packageName",
                           "logs",
                           "logging",
                           "mirrorRunning",
                           "wireless",
                           "pairingEndpoint",
                           "connectEndpoint",
                           "pairingCode",
                           "error"};

QString shown(const QString &value)
{
    return value;
}

QString shown(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

QString shown(const QUrl &value)
{
    return value.toString();
}

QString shown(const QList<AndroidDevice> &devices)
{
    QStringList rows;
    for (const AndroidDevice &device : devices)
        rows << device.id + u':' + device.state;
    return u'[' + rows.join(u' ') + u']';
}

template <typename Value>
QString shown(const std::optional<Value> &value)
{
    return value ? shown(*value) : u"absent"_s;
}

} // namespace

WriteRecorder::WriteRecorder(VardaModel &model)
    : m_model(model)
    , m_last(snapshot())
{
    QObject::connect(&model, &VardaModel::objectWillChange, this, [this] {
        closePrevious();
        m_pending = true;
    });
}

QStringList WriteRecorder::take()
{
    closePrevious();
    return std::exchange(m_writes, {});
}

WriteRecorder::Snapshot WriteRecorder::snapshot() const
{
    const VardaModel &m = m_model;
    return {shown(m.devices()),
            shown(m.selectedID()),
            shown(m.status()),
            shown(m.busy()),
            shown(m.apk()),
            shown(m.packageName()),
            shown(m.logs()),
            shown(m.logging()),
            shown(m.mirrorRunning()),
            shown(m.wireless()),
            shown(m.pairingEndpoint()),
            shown(m.connectEndpoint()),
            shown(m.pairingCode()),
            shown(m.error())};
}

void WriteRecorder::closePrevious()
{
    const Snapshot now = snapshot();
    QStringList changed;
    for (std::size_t i = 0; i < now.size(); ++i) {
        if (now[i] != m_last[i])
            changed << QString::fromLatin1(names[i]) + u'=' + now[i];
    }
    if (m_pending)
        m_writes << (changed.isEmpty() ? u"same"_s : changed.join(u" AND "_s));
    else if (!changed.isEmpty())
        m_writes << u"UNANNOUNCED "_s + changed.join(u" AND "_s);
    m_pending = false;
    m_last = now;
}

} // namespace varda::test
