// ViewFixture: a window has settled when nothing is left to render or to lay out.
#include "Support/ViewFixture.h"

#include "Varda/View/Appearance.h"
#include "Varda/View/Widgets/FittedDialog.h"

namespace varda {

ViewFixture::ViewFixture()
{
    prepareAppearance();
    model = VardaModel::create(std::make_unique<test::FakeFileDialogs>(dialogs));
    view = std::make_unique<VardaView>(model);
}

void ViewFixture::show()
{
    settle();
    view->show();
    if (!QTest::qWaitForWindowExposed(view.get()))
        qFatal("the window did not come up");
}

void ViewFixture::activate()
{
    show();
    view->activateWindow();
    if (!QTest::qWaitForWindowActive(view.get()))
        qFatal("the window did not get the keyboard");
}

void ViewFixture::list(const QList<AndroidDevice> &devices, const std::optional<QString> &selected)
{
    model->devices = devices;
    model->selectedID = selected;
    settle();
}

/// A test may name what is in a dialog before that was ever opened.
void ViewFixture::buildDialogs() const
{
    for (FittedDialog *dialog : view->findChildren<FittedDialog *>())
        dialog->ensureBuilt();
    Q_EMIT model->objectWillChange();
    settle();
}

void ViewFixture::settle()
{
    // A render is queued by a change; it may queue layout requests in turn.
    for (int turn = 0; turn < 4; ++turn) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

} // namespace varda
