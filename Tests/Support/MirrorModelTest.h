// MirrorModelTest: the bench of the tests of the live phone: its command lines and a mirror that runs.
#pragma once

#include "Support/ModelTest.h"

namespace varda::test {

/// The status while a mirror that does not record is open.
inline const QString liveText = QStringLiteral("Live phone opened. Use your Mac keyboard and mouse to test the app.");

class MirrorModelTest : public ModelTest
{
protected:
    /// What scrcpy is called with for the phone `serial` of that name.
    QStringList command(const QString &name = QStringLiteral("Pixel 7")) const
    {
        using namespace Qt::StringLiterals;
        return {u"--serial"_s, serial, u"--window-title"_s, u"Varda · "_s + name, u"--max-size"_s, u"1920"_s};
    }

    /// A ready phone, and a running mirror that obeys a request to end.
    void openMirror()
    {
        scrcpy().on(command()).hangs().exitsOnTermination(0);
        startMirror();
    }

    /// A ready phone, and a mirror that runs as the test has arranged.
    void startMirror()
    {
        selectPhone();
        model->mirrorPhone(false);
        QVERIFY(model->mirrorRunning());
        QVERIFY(called(scrcpy(), command()));
        QCOMPARE(writes->take(), opened());
    }

    /// The writes of a mirror that opens.
    static QStringList opened() { return {QStringLiteral("mirrorRunning=true"), QStringLiteral("status=") + liveText}; }
};

} // namespace varda::test
