// What depends on the compiler or the machine, and nothing else: fixed-width names, the export macros, the debug break.
// No file outside of this folder has an #if on a compiler or a system.
#pragma once

// These come before all else, so that a compiler or machine that does not fit is named by the first message.
#if !defined(__GNUC__)
#error "kxcore needs GCC or Clang: type identity depends on their attributes and on the C++ ABI that they share"
#elif __cplusplus < 202002L
#error "kxcore needs C++20: compile with -std=c++20 or a later standard"
#elif __SIZEOF_POINTER__ != 8
#error "kxcore needs pointers of 8 bytes: the layouts of the containers are fixed for them"
#elif __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "kxcore needs little-endian words: values overlay them"
#elif !defined(__ELF__) && !defined(_WIN32) && !defined(__MACH__)
#error "kxcore does not know this object format: add it to core/platform/gather.h"
#elif !defined(__x86_64__) && !defined(__aarch64__)
#error "kxcore does not know this processor: add its breakpoint instruction to core/platform/platform.h"
#endif

#include <cstdint>

using int8 = std::int8_t;
using int16 = std::int16_t;
using int32 = std::int32_t;
using int64 = std::int64_t;
using uint8 = std::uint8_t;
using uint16 = std::uint16_t;
using uint32 = std::uint32_t;
using uint64 = std::uint64_t;
using float32 = float;
using float64 = double;

static_assert(sizeof(float32) == 4 && sizeof(float64) == 8, "float32 and float64 must be the IEEE 754 formats");

// KX_EXPORT marks what a shared library offers, KX_IMPORT the same declaration seen from outside. Everything is
// compiled with hidden visibility, so a declaration without the mark stays inside its module. KX_LOCAL stays inside its
// module even where a user compiles with another visibility.
//
// On Windows a mark on a class would also import its static constants, which no library has. So only a class with
// virtual functions is marked as a whole; of any other class, the functions and objects that a source defines.
// KX_VISIBLE on such a class lets a class of a user's library that is visible have it as a member.
#if defined(_WIN32)
#define KX_EXPORT __declspec(dllexport)
#define KX_IMPORT __declspec(dllimport)
#define KX_LOCAL
#define KX_VISIBLE
#else
#define KX_EXPORT __attribute__((visibility("default")))
#define KX_IMPORT __attribute__((visibility("default")))
#define KX_LOCAL __attribute__((visibility("hidden")))
#define KX_VISIBLE __attribute__((visibility("default")))
#endif

// The public interface of the module kxbase. A build of static libraries defines KX_STATIC, also for its users: nothing
// is exported or imported then.
#if defined(KX_STATIC)
#define KX_API
#elif defined(KX_BASE_EXPORTS)
#define KX_API KX_EXPORT
#else
#define KX_API KX_IMPORT
#endif

// KX_NOINLINE keeps a rare path (growth, say) out of the caller's hot code. KX_RESTRICT promises that what is reached
// through a pointer parameter is reached through no other one while the function runs. KX_CHECK_INLINE is for
// BreakUnless and what iterators check: inlined at every optimisation level, and shown by a debugger as the line that
// calls it.
// KX_PRINTF(nFormat, nFirst) lets the compiler hold the arguments of a function to its printf format; a member function
// counts its object as the first one. KX_STACK_ALLOC(nBytes) is memory that the calling function gives back on return.
// KX_KNOWN(value) says whether the compiler knows the value once everything is inlined; it may always say no.
// KX_PURE marks a function that only reads, so that the caller may keep in registers what it has read before the call.
// KX_THREAD_LOCAL declares a thread-local variable of a library that is loaded with the program, and so can be reached
// without a call.
// KX_EXTENSION precedes what all compilers have and the standard has not: a struct without a name in a union.
// KX_INIT_FIRST has an object initialised before all others of its module; on macOS, which has no such order, before
// those that follow it in its source.
#define KX_NOINLINE __attribute__((noinline))
#define KX_RESTRICT __restrict__
#define KX_CHECK_INLINE inline __attribute__((always_inline, artificial))
#if defined(__clang__)
#define KX_PRINTF(nFormat, nFirst) __attribute__((format(printf, nFormat, nFirst)))
#else
#define KX_PRINTF(nFormat, nFirst) __attribute__((format(gnu_printf, nFormat, nFirst)))
#endif
#define KX_STACK_ALLOC(nBytes) __builtin_alloca(nBytes)
#define KX_KNOWN(value) __builtin_constant_p(value)
#define KX_PURE __attribute__((pure))
#if defined(__ELF__)
#define KX_THREAD_LOCAL __attribute__((tls_model("initial-exec"))) thread_local
#else
#define KX_THREAD_LOCAL thread_local
#endif
#define KX_EXTENSION __extension__
#if defined(__MACH__)
#define KX_INIT_FIRST
#else
#define KX_INIT_FIRST __attribute__((init_priority(101)))
#endif

// KX_ASAN is defined in a source that is compiled with AddressSanitizer.
#if defined(__SANITIZE_ADDRESS__)
#define KX_ASAN
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KX_ASAN
#endif
#endif

// KX_LIFETIMEBOUND after a parameter, or after the parameters of a member function, says that the result refers to the
// argument, or to the object. A compiler that knows it warns if these are temporaries and the result outlives them.
#if defined(__has_cpp_attribute)
#if __has_cpp_attribute(clang::lifetimebound)
#define KX_LIFETIMEBOUND [[clang::lifetimebound]]
#endif
#endif
#if !defined(KX_LIFETIMEBOUND)
#define KX_LIFETIMEBOUND
#endif

// The breakpoint instruction, after which a debugger can resume.
#if defined(__x86_64__)
#define KX_BREAK_INSTRUCTION "int3"
#else
#define KX_BREAK_INSTRUCTION "brk #0xf000"
#endif

namespace kx::detail
{
/// Triggers the debug break, the processor's breakpoint instruction, unless the condition is true. In every build.
/// Without a debugger the process ends abnormally. With one, execution can resume, and the caller goes on as if the
/// check had passed. So the code after a check must stay alive, which rules out __builtin_trap and any hint that the
/// condition is always true.
//
// The instruction must not count as a write to memory, or every loop with a check in it would reload what it had in
// registers. For GCC, the colons say that it clobbers nothing. Clang takes every volatile asm for such a write, so
// there it is none: its operand comes from a volatile variable and goes back to it, so the asm stays where it is.
KX_CHECK_INLINE void BreakUnless(bool bCondition) noexcept
{
    if (!bCondition) [[unlikely]]
    {
#if defined(__clang__)
        volatile char cMark = 0;
        char c = cMark;
        asm(KX_BREAK_INSTRUCTION : "+r"(c));
        cMark = c;
#else
        asm volatile(KX_BREAK_INSTRUCTION : :);
#endif
    }
}

/// Returns an address as a number. The compiler may assume that pointer arithmetic does not wrap and that pointers into
/// different objects are never compared, so a check on the two ends of a buffer compares numbers.
template <class T>
inline std::uintptr_t AddressOf(const T* pObject) noexcept
{
    return reinterpret_cast<std::uintptr_t>(pObject);
}

/// Has the processor fetch what is at the address, which may be null, because it will be read soon. A walk that spends
/// its time waiting for memory then waits for several places at once.
inline void Prefetch(const void* pMemory) noexcept
{
    __builtin_prefetch(pMemory);
}

/// Returns the address of an object whose class may overload unary &, like std::addressof but without the 50,000 lines
/// of `<memory>`.
template <class T>
inline T* PointerTo(T& object) noexcept
{
    return __builtin_addressof(object);
}
} // namespace kx::detail
