// A text field and the property that it shows, while the one is ahead of the other.
#include "Support/ViewFixture.h"

#include <QInputMethodEvent>
#include <QLineEdit>

using namespace Qt::StringLiterals;
using namespace varda;

class TextFieldsTest final : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void codeInUseStaysGoneWhateverIsCommittedLate();
};

void TextFieldsTest::codeInUseStaysGoneWhateverIsCommittedLate()
{
    ViewFixture fixture;
    fixture.model->pairingEndpoint = u"192.168.1.50:37123"_s;
    auto *code = fixture.find<QLineEdit>("pairingCodeField");
    QTest::keyClicks(code, u"482913"_s);
    fixture.model->pair();
    QInputMethodEvent late;
    late.setCommitString(u"7"_s);
    QCoreApplication::sendEvent(code, &late);
    QCOMPARE(fixture.model->pairingCode(), QString());
    fixture.settle();
    QCOMPARE(fixture.model->pairingCode(), QString());
    QCOMPARE(code->text(), QString());

    QTest::keyClicks(code, u"551203"_s);
    QCOMPARE(fixture.model->pairingCode(), u"551203"_s);
}

QTEST_MAIN(TextFieldsTest)
#include "TextFieldsTest.moc"
