#include "app/unitapplication.h"

#include "app/appearance.h"
#include "media/gst_videoinput.h"
#include "platform/unit.h"
#include "settings/params.h"

#include <QTimer>

namespace {

constexpr int kPictureDue = 10000; // ms after the start

int &withFixedPixels(int &argc)
{
    fixPixels(); // read by the application object as it comes into being
    return argc;
}

// A unit without a camera head has an ordinary day: no frames are due then, and no restart brings them.
servicemanager::Frames signOfLife()
{
    const bool hasHead = params::getInstance()->getParams().ImagerType != eNoImagerAttached;
    return {hasHead && gst_FramesAreExpected(), nBuffers};
}

} // namespace

UnitApplication::UnitApplication(int &argc, char **argv) : debounce(withFixedPixels(argc), argv)
{
    fixLook();
    init();
}

RunningUnit::RunningUnit(UnitApplication &application) : m_watchdog(signOfLife)
{
    QObject::connect(&application, &debounce::ProcessSystemShutdown, &window,
                     &MainWindow::onProcessSystemShutdown);
    QObject::connect(&window, &MainWindow::initShutdownTimer, &application,
                     &debounce::onInitAutoShutdownTimer);
    QObject::connect(&window, &MainWindow::resetAutoShutdownTimer, &application,
                     &debounce::onresetAutoShutdownTimer);
    window.init();
    if (unit::isReal())
        window.show();
    else
        showOnDesk(window);
    // Without a camera there is no picture to be ready with, but a unit that works all the same.
    QTimer::singleShot(kPictureDue, &window, &servicemanager::tellReady);
}

RunningUnit::~RunningUnit()
{
    servicemanager::tellStopping();
    window.closeOpenRecords();
}
