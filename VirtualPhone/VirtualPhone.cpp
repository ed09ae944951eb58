// VirtualPhone: every call is carried out in the thread of the phone while the caller waits.
#include "VirtualPhone.h"

#include "Phone.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace varda {

VirtualPhone::VirtualPhone(const PhoneOptions &options)
{
    m_thread.setObjectName(u"virtual-phone"_s);
    m_thread.start();
    // Made in its thread, so that its sockets and timers belong there.
    auto *maker = new QObject;
    maker->moveToThread(&m_thread);
    QMetaObject::invokeMethod(
        maker,
        [this, &options] {
            m_phone = new phone::Phone(options);
            m_error = m_phone->listen();
            m_port = m_phone->port();
            m_serial = m_phone->serial();
        },
        Qt::BlockingQueuedConnection);
    maker->deleteLater();
    QObject::connect(&m_thread, &QThread::finished, m_phone, &QObject::deleteLater);
}

VirtualPhone::~VirtualPhone()
{
    m_thread.quit();
    m_thread.wait();
}

QString VirtualPhone::endpoint() const
{
    return u"127.0.0.1:%1"_s.arg(m_port);
}

QString VirtualPhone::command(const QString &line)
{
    QString reply;
    QMetaObject::invokeMethod(
        m_phone, [&] { reply = m_phone->execute(line); }, Qt::BlockingQueuedConnection);
    return reply;
}

QList<QJsonObject> VirtualPhone::log() const
{
    QList<QJsonObject> records;
    QMetaObject::invokeMethod(
        m_phone, [&] { records = m_phone->log().records(); }, Qt::BlockingQueuedConnection);
    return records;
}

QList<QJsonObject> VirtualPhone::closed(const QString &pattern) const
{
    const QList<QJsonObject> records = log();
    QList<QJsonObject> result;
    std::copy_if(records.begin(), records.end(), std::back_inserter(result), [&](const QJsonObject &record) {
        return record.value("event"_L1) == "close"_L1 && record.value("service"_L1).toString().contains(pattern);
    });
    return result;
}

} // namespace varda
