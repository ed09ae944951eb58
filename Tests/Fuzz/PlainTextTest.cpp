// Every UTF-16 code unit, and each beside a line end, is shown as plain text.
#include "PlainTextProperty.h"

#include <QTest>

using namespace Qt::StringLiterals;
using namespace varda;

class PlainTextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hidesEveryCodeUnitThatIsNoPlainText()
    {
        for (uint unit = 0; unit <= 0xFFFF; ++unit) {
            const QChar c(static_cast<char16_t>(unit));
            try {
                fuzz::requirePlainText(u"a"_s + c + u'b');
                fuzz::requirePlainText(u"\r\n"_s + c + u"\r\n"_s + c);
            } catch (const std::logic_error &broken) {
                QFAIL(qPrintable(u"U+%1: "_s.arg(unit, 4, 16, QChar(u'0')) + QString::fromUtf8(broken.what())));
            }
        }
    }
};

QTEST_GUILESS_MAIN(PlainTextTest)
#include "PlainTextTest.moc"
