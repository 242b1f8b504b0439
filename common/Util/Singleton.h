// The holder of a process-wide object.
#pragma once

namespace Util {

/**
 * Holds the one T of the process. T is created with its default constructor on first use and is never
 * destroyed by the holder: whoever deletes it leaves the pointer as it is and must see to it that nobody
 * asks again. There is no lock: only the main-loop thread may create a T; other threads may ask for a T that
 * was created before they were started.
 */
template <typename T>
class Singleton {
  public:
    static T* getInstance()
    {
        if (!mInstance)
            mInstance = new T;
        return mInstance;
    }

    static inline T* mInstance = nullptr;
};

}  // namespace Util
