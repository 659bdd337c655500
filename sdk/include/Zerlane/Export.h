#pragma once

// Symbols of libZerlane.so.1 are hidden by default; the public API is marked explicitly.
#if defined(ZERLANE_BUILDING_LIBRARY)
#define ZERLANE_API __attribute__((visibility("default")))
#else
#define ZERLANE_API
#endif
