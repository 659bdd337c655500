#pragma once

#include "events/DisplayPreferences.h"

#include <QtGlobal>

// What a view needs of the running program while it draws: whether streaming is stopped, the
// reference time that its times are shown against, the lock under which a depth node's buffers change
// slots together, and the preferences it draws with. The view area hands it to every view, so that no
// view reaches for the program's singletons and a test can draw a view with a context of its own.
class ViewContext {
public:
    virtual ~ViewContext() = default;

    // Stopped streaming shows grey instead of the last picture.
    virtual bool streamingStopped() const = 0;
    // A camera service time relative to the reference time, in microseconds.
    virtual qint64 relativeTime(quint64 time) const = 0;
    // Taken before a buffer's own mutex while a view reads a sample.
    virtual void lockBuffers() = 0;
    virtual void unlockBuffers() = 0;
    // A copy: one read per paint.
    virtual DisplayPreferences preferences() const = 0;
};
