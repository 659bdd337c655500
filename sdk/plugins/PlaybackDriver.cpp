#include "PlaybackDriver.h"

#include "PlaybackDevice.h"
#include "RecordingReader.h"

#include "Zerlane/Exceptions.h"
#include "Zerlane/Utils/EnvironmentVariable.h"
#include "Zerlane/Utils/HMLogger.h"

namespace Zerlane::playback {

PlaybackDriver::PlaybackDriver(std::vector<std::string> files) : m_files(std::move(files)) {}

PlaybackDriver::~PlaybackDriver()
{
    close();
}

std::vector<std::string> PlaybackDriver::filesFromEnvironment()
{
    const Utils::EnvironmentVariable variable(EnvironmentVariable);
    std::vector<std::string> files;
    if (!variable.isSet())
        return files;
    const std::string value = variable.getValue();
    size_t begin = 0;
    while (begin <= value.size()) {
        const size_t end = std::min(value.find(':', begin), value.size());
        if (end > begin)
            files.push_back(value.substr(begin, end - begin));
        begin = end + 1;
    }
    return files;
}

void PlaybackDriver::open(plugin::DriverListener* listener)
{
    Utils::HMLogger* logger = Utils::HMLogger::instance();
    for (const std::string& file : m_files) {
        try {
            recording::RecordingReader reader(file);
            for (const std::string& warning : reader.warnings())
                logger->warning(file + ": " + warning);
            for (size_t i = 0; i < reader.devices().size(); ++i) {
                auto device = std::make_shared<PlaybackDevice>(file, int(i), reader.devices()[i]);
                m_devices.push_back(device);
                listener->deviceAdded(device);
            }
        } catch (const std::exception& e) {
            logger->error(std::string("Recording not played: ") + e.what());
        }
    }
    logger->release();
}

void PlaybackDriver::close()
{
    for (const auto& device : m_devices)
        for (const auto& node : device->nodes())
            node->stop();
    m_devices.clear();
}

} // namespace Zerlane::playback
