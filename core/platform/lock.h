// Inside kxbase: a lock that needs no initialiser of its own, so that modules that start before this one may use it.
#pragma once

#include "core/platform/platform.h"

#include <mutex>

namespace kx::detail
{
#if defined(_WIN32)
// The standard library's lock is initialised when the program starts.
class ZLock
{
public:
    constexpr ZLock() = default;
    void lock();
    void unlock();

private:
    void* m_pSystemLock = nullptr; // an SRWLOCK
};
#else
using ZLock = std::mutex;
#endif
} // namespace kx::detail
