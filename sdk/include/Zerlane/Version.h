#pragma once

#include "Zerlane/Export.h"

#include <string>

namespace Zerlane {

// "ZerlaneSDK <version> linux64 gcc (<build type>)"
ZERLANE_API std::string versionBanner();
ZERLANE_API std::string versionString();

} // namespace Zerlane
