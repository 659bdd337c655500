#pragma once

#include "Zerlane/Exceptions.h"

#include <memory>
#include <string>

namespace Zerlane::detail {

// The implementation behind a handle, or InvalidOperationException when the handle is not set.
template <class Impl>
Impl& checked(const std::shared_ptr<Impl>& impl, const char* handleName)
{
    if (!impl)
        throw InvalidOperationException(std::string("this ") + handleName + " handle is not set");
    return *impl;
}

} // namespace Zerlane::detail
