#pragma once

#include <mutex>

// The one instance of a process-wide object (the threads, the camera manager, the main window, the
// postponed calls): made on first use and destroyed by an explicit call from the entry point, each
// under the class's own mutex. The instance is cleared before it is deleted, so that code run by the
// destructor finds none. A class takes part by deriving from Singleton<Itself> and befriending it:
//
//     class Worker : public QThread, public Singleton<Worker> {
//         friend class Singleton<Worker>;
//         Worker();
//     };
template <class T>
class Singleton {
public:
    static T* instance()
    {
        const std::lock_guard lock(s_mutex);
        if (!s_instance)
            s_instance = new T();
        return s_instance;
    }

    // The instance if it exists, without making it.
    static T* existingInstance()
    {
        const std::lock_guard lock(s_mutex);
        return s_instance;
    }

    static void destroyInstance()
    {
        T* old = nullptr;
        {
            const std::lock_guard lock(s_mutex);
            old = s_instance;
            s_instance = nullptr;
        }
        delete old;
    }

protected:
    Singleton() = default;
    ~Singleton() = default;

private:
    // Recursive: a constructor may ask for other singletons that in turn look this one up.
    static inline std::recursive_mutex s_mutex;
    static inline T* s_instance = nullptr;
};
