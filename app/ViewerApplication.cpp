#include "app/ViewerApplication.h"

#include "Zerlane/Zerlane.h"

#include <cstdlib>

using Zerlane::Utils::HMLogger;

ViewerApplication::ViewerApplication(int& argc, char** argv)
    : QApplication(argc, argv)
{
}

bool ViewerApplication::notify(QObject* receiver, QEvent* event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const Zerlane::Exception& e) {
        HMLogger* logger = HMLogger::instance();
        if (!logger)
            return false;
        logger->error(Zerlane::Utils::Format("EXCEPTION: %") % e.getMessage());
        logger->release();
        return false;
    } catch (...) {
        if (HMLogger* logger = HMLogger::instance()) {
            logger->error("Unknown exception!");
            logger->release();
        }
        std::abort();
    }
}
