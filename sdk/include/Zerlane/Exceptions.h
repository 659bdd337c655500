#pragma once

#include "Zerlane/Export.h"

#include <stdexcept>
#include <string>

namespace Zerlane {

// Every error of the camera library is one of these. The message is meant for a user:
// it says what was asked and why it could not be done.
class ZERLANE_API Exception : public std::runtime_error {
public:
    explicit Exception(const std::string& message) : std::runtime_error(message) {}
    std::string getMessage() const { return what(); }
};

// An argument was wrong: unknown property, wrong value type, a configuration the node does not offer.
class ZERLANE_API ArgumentException : public Exception {
public:
    using Exception::Exception;
};

// The call is not allowed in the current state: read-only property, no control, device gone.
class ZERLANE_API InvalidOperationException : public Exception {
public:
    using Exception::Exception;
};

// Control could not be obtained in time, usually because another client holds it.
class ZERLANE_API TimeoutException : public Exception {
public:
    using Exception::Exception;
};

// The connection to the camera service could not be made or was lost.
class ZERLANE_API TransportException : public Exception {
public:
    using Exception::Exception;
};

} // namespace Zerlane
