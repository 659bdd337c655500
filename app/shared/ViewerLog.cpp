#include "app/shared/ViewerLog.h"

#include "Zerlane/Utils/HMLogger.h"

namespace {

void write(Zerlane::Utils::HMLogger::Level level, const std::string& message)
{
    Zerlane::Utils::HMLogger* logger = Zerlane::Utils::HMLogger::instance();
    if (!logger)
        return;
    logger->log(level, message);
    logger->release();
}

} // namespace

void ViewerLog::info(const std::string& message)
{
    write(Zerlane::Utils::HMLogger::Info, message);
}

void ViewerLog::warning(const std::string& message)
{
    write(Zerlane::Utils::HMLogger::Warning, message);
}

void ViewerLog::error(const std::string& message)
{
    write(Zerlane::Utils::HMLogger::Error, message);
}
