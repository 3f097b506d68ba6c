#include "app/unitapplication.h"

#include "app/appearance.h"
#include "media/gst_videoinput.h"
#include "platform/unit.h"

namespace {

int &withFixedPixels(int &argc)
{
    fixPixels(); // read by the application object as it comes into being
    return argc;
}

} // namespace

UnitApplication::UnitApplication(int &argc, char **argv) : debounce(withFixedPixels(argc), argv)
{
    fixLook();
    init();
}

RunningUnit::RunningUnit(UnitApplication &application)
    : m_watchdog([] {
          return servicemanager::Frames{gst_FramesAreExpected(), nBuffers};
      })
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
}

RunningUnit::~RunningUnit()
{
    servicemanager::tellStopping();
    window.closeOpenRecords();
}
