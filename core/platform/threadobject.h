// Inside kxbase: an object for each thread that is destroyed when the thread ends.
#pragma once

#include "core/platform/platform.h"

namespace kx::detail
{
#if defined(_WIN32)
/// The calling thread's value, null at first, of which there is one for the whole library. When a thread ends whose
/// value is not null, pfnEnd is called with it.
void* ThreadValue();
void SetThreadValue(void* pValue, void (*pfnEnd)(void*));

// The compiler's own thread-local objects are freed before their destructors are called there.
template <class T>
T& ThreadObject()
{
    if (ThreadValue() == nullptr)
        SetThreadValue(new T, [](void* pObject) { delete static_cast<T*>(pObject); });
    return *static_cast<T*>(ThreadValue());
}
#else
/// The calling thread's T, which the first call constructs. There is one T in the library.
template <class T>
T& ThreadObject()
{
    static thread_local T t_object;
    return t_object;
}
#endif
} // namespace kx::detail
