#include "app/ViewerApplication.h"

#include "Zerlane/Zerlane.h"
#include "app/shared/ViewerLog.h"

#include <cstdlib>

ViewerApplication::ViewerApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
}

bool ViewerApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const Zerlane::Exception& e) {
        ViewerLog::error(Zerlane::Utils::Format("EXCEPTION: %") % e.getMessage());
        return false;
    } catch (...) {
        ViewerLog::error("Unknown exception!");
        std::abort();
    }
}
