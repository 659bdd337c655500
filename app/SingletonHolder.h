#pragma once

#include <QMutexLocker>
#include <QRecursiveMutex>

// The one instance of a process-wide object: made on first use, destroyed by an explicit call, each
// under the holder's own mutex. Recursive, so that an object being built may ask for its own (not yet
// existing) instance. The instance is cleared before it is deleted.
template <class T>
class SingletonHolder {
public:
    template <class Create>
    T* instance(Create create)
    {
        QMutexLocker lock(&m_mutex);
        if (!m_instance)
            m_instance = create();
        return m_instance;
    }

    T* existing()
    {
        QMutexLocker lock(&m_mutex);
        return m_instance;
    }

    void destroy()
    {
        T* old = nullptr;
        {
            QMutexLocker lock(&m_mutex);
            old = m_instance;
            m_instance = nullptr;
        }
        delete old;
    }

private:
    QRecursiveMutex m_mutex;
    T* m_instance = nullptr;
};
