#pragma once

#include <QMutex>

#include <cstdint>

// Shared ownership for records that several threads hold by raw pointer. The count starts at 1 (the
// creator's reference); release() deletes the object when the count reaches 0. Never delete a record
// directly: always go through release().
class RefCounted {
public:
    RefCounted();
    virtual ~RefCounted();

    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    void addRef();
    // Releasing more often than referenced is a bug: it asserts.
    void release();
    int32_t refCount() const;

protected:
    int32_t m_refCount = 1;
    mutable QMutex m_mutex; // guards m_refCount only
};
