#include "camera/RefCounted.h"

#include <cassert>

RefCounted::RefCounted() = default;

RefCounted::~RefCounted() = default;

void RefCounted::addRef()
{
    QMutexLocker locker(&m_mutex);
    ++m_refCount;
}

void RefCounted::release()
{
    bool last = false;
    {
        QMutexLocker locker(&m_mutex);
        assert(m_refCount > 0 && "RefCounted::release() called on a record that is already released");
        --m_refCount;
        last = m_refCount == 0;
    }
    if (last)
        delete this;
}

int32_t RefCounted::refCount() const
{
    QMutexLocker locker(&m_mutex);
    return m_refCount;
}
