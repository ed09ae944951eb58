// InstallProgram: takes a package file from standard input, counts and digests it, and says how it went.
#include "Services/Programs.h"

#include "Adb/Stream.h"
#include "Phone.h"
#include "Services/ServiceRecord.h"

#include <QCryptographicHash>

#include <optional>

using namespace Qt::StringLiterals;

namespace varda::phone {

namespace {

class Install : public QObject
{
    Q_OBJECT

public:
    Install(const Invocation &invocation, qint64 size)
        : QObject(&invocation.channel)
        , m_channel(invocation.channel)
        , m_phone(invocation.phone)
        , m_record(invocation.record)
        , m_missing(size)
    {
        m_record.note(u"size"_s, size);
        m_record.note(u"outcome"_s, u"incomplete"_s);
        connect(&m_channel, &CommandChannel::input, this, &Install::take);
        if (m_missing == 0)
            finish();
        else
            m_channel.startReading();
    }

private:
    void take(const QByteArray &bytes)
    {
        if (m_missing == 0)
            return;
        const QByteArray wanted = bytes.left(m_missing);
        m_digest.addData(wanted);
        m_missing -= wanted.size();
        m_record.note(u"sha256"_s, QString::fromLatin1(m_digest.result().toHex()));
        if (m_missing == 0)
            finish();
    }

    void finish()
    {
        const Fault fault = m_phone.faults().forService(m_channel.stream().destination());
        const QByteArray answer = fault.output.value_or("Success\n");
        m_record.note(u"outcome"_s, QString::fromUtf8(answer).trimmed());
        if (answer.startsWith("Success")) {
            m_record.note(u"package"_s, m_phone.installsAs());
            m_phone.device().install(m_phone.installsAs());
        }
        m_channel.error(fault.error.value_or(QByteArray()));
        m_channel.output(answer);
        m_channel.exit(fault.exitCode.value_or(answer.startsWith("Success") ? 0 : 1));
    }

    CommandChannel &m_channel;
    Phone &m_phone;
    ServiceRecord &m_record;
    qint64 m_missing;
    QCryptographicHash m_digest{QCryptographicHash::Sha256};
};

/// The number after "-S", if it is one.
std::optional<qint64> sizeOption(const QStringList &arguments)
{
    const qsizetype option = arguments.indexOf(u"-S"_s);
    bool isNumber = false;
    const qint64 size = option < 0 ? -1 : arguments.value(option + 1).toLongLong(&isNumber);
    return isNumber && size >= 0 ? std::optional(size) : std::nullopt;
}

} // namespace

void runInstall(const Invocation &invocation)
{
    if (const std::optional<qint64> size = sizeOption(invocation.arguments)) {
        new Install(invocation, *size);
        return;
    }
    invocation.channel.error("Error: must either specify a package size or an APK file\n");
    invocation.channel.exit(1);
}

} // namespace varda::phone

#include "InstallProgram.moc"
