#include "Zerlane/Version.h"

namespace Zerlane {

namespace {
constexpr const char* kVersion = "1.4.0.1140";
}

std::string versionBanner()
{
    return std::string("ZerlaneSDK ") + kVersion + " linux64 gcc (Release)";
}

std::string versionString()
{
    return kVersion;
}

} // namespace Zerlane
