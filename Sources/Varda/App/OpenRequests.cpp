// OpenRequests: an object on the bus whose slots are the interface's methods. The token with which a desktop allows a
// window to take the focus travels in the platform data, and Qt takes it from the environment.
#include "Varda/App/OpenRequests.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QVariantMap>

namespace varda {

using namespace Qt::StringLiterals;

namespace {

constexpr int answerTime = 2000; // ms
const QString busName = u"local.halvex.varda"_s;
const QString objectPath = u"/local/halvex/varda"_s;
const QString applicationInterface = u"org.freedesktop.Application"_s;
const QString tokenKey = u"activation-token"_s;
constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";

/// The methods as freedesktop.org names them for desktop entries.
class ApplicationInterface final : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationInterface(OpenRequests *requests)
        : QDBusAbstractAdaptor(requests)
        , m_requests(*requests)
    {
    }

public Q_SLOTS:
    void Activate(const QVariantMap &platformData) { request({}, platformData); }

    void Open(const QStringList &uris, const QVariantMap &platformData)
    {
        request(QUrl(uris.value(0), QUrl::StrictMode), platformData);
    }

    void ActivateAction(const QString &, const QVariantList &, const QVariantMap &) {}

private:
    void request(const QUrl &file, const QVariantMap &platformData)
    {
        if (const QByteArray token = platformData.value(tokenKey).toString().toUtf8(); !token.isEmpty())
            qputenv(tokenVariable, token);
        Q_EMIT m_requests.requested(file);
    }

    OpenRequests &m_requests;
};

} // namespace

bool OpenRequests::handOver(const QUrl &file)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected() || !bus.interface()->isServiceRegistered(busName))
        return false;
    QVariantMap platformData;
    if (const QString token = qEnvironmentVariable(tokenVariable); !token.isEmpty())
        platformData.insert(tokenKey, token);
    QDBusMessage open = QDBusMessage::createMethodCall(busName, objectPath, applicationInterface, u"Open"_s);
    open.setArguments({QStringList{file.toString(QUrl::FullyEncoded)}, platformData});
    return bus.call(open, QDBus::Block, answerTime).type() == QDBusMessage::ReplyMessage;
}

void OpenRequests::listen()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    new ApplicationInterface(this);
    if (bus.registerObject(objectPath, this))
        bus.registerService(busName);
}

} // namespace varda

#include "OpenRequests.moc"
