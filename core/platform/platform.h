// What depends on the compiler or the machine, and nothing else: fixed-width names, the export macros, the debug break.
// This is the one file of the library with an #if on a compiler or a system.
#pragma once

#include <cstdint>
#if defined(_MSC_VER)
#include <malloc.h>
#endif

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

static_assert(sizeof(void*) == 8, "kxcore needs 64-bit pointers: the layouts of the containers are pinned for them");
static_assert(sizeof(float32) == 4 && sizeof(float64) == 8, "float32 and float64 must be the IEEE 754 formats");
#if defined(__BYTE_ORDER__)
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "kxcore needs little-endian words: values overlay them");
#endif

// KX_EXPORT marks what a shared library offers, KX_IMPORT the same declaration seen from outside. Everything is
// compiled with hidden visibility, so a declaration without the mark stays inside its module. KX_LOCAL stays inside its
// module even where a user compiles with another visibility.
#if defined(_WIN32)
#define KX_EXPORT __declspec(dllexport)
#define KX_IMPORT __declspec(dllimport)
#define KX_LOCAL
#else
#define KX_EXPORT __attribute__((visibility("default")))
#define KX_IMPORT __attribute__((visibility("default")))
#define KX_LOCAL __attribute__((visibility("hidden")))
#endif

// The public interface of the module kxbase.
#if defined(KX_BASE_EXPORTS)
#define KX_API KX_EXPORT
#else
#define KX_API KX_IMPORT
#endif

// KX_NOINLINE keeps a rare path (growth, say) out of the caller's hot code. KX_RESTRICT promises that what is reached
// through a pointer parameter is reached through no other one while the function runs. KX_CHECK_INLINE is for
// BreakUnless alone: inlined at every optimisation level, and shown by a debugger as the line that calls it.
// KX_PRINTF(nFormat, nFirst) lets the compiler hold the arguments of a function to its printf format; a member function
// counts its object as the first one. KX_STACK_ALLOC(nBytes) is memory that the calling function gives back on return.
// KX_KNOWN(value) says whether the compiler knows the value once everything is inlined; it may always say no.
// KX_PURE marks a function that only reads, so that the caller may keep in registers what it has read before the call.
// KX_THREAD_LOCAL declares a thread-local variable of a library that is loaded with the program, and so can be reached
// without a call.
// KX_EXTENSION stands before what all compilers have and the standard has not: a struct without a name in a union.
#if defined(_MSC_VER) && !defined(__clang__)
#define KX_NOINLINE __declspec(noinline)
#define KX_RESTRICT __restrict
#define KX_CHECK_INLINE __forceinline
#define KX_PRINTF(nFormat, nFirst)
#define KX_STACK_ALLOC(nBytes) _alloca(nBytes)
#define KX_KNOWN(value) false
#define KX_PURE
#define KX_THREAD_LOCAL thread_local
#define KX_EXTENSION
#else
#define KX_NOINLINE __attribute__((noinline))
#define KX_RESTRICT __restrict__
#define KX_CHECK_INLINE inline __attribute__((always_inline, artificial))
#define KX_PRINTF(nFormat, nFirst) __attribute__((format(printf, nFormat, nFirst)))
#define KX_STACK_ALLOC(nBytes) __builtin_alloca(nBytes)
#define KX_KNOWN(value) __builtin_constant_p(value)
#define KX_PURE __attribute__((pure))
#if defined(__ELF__)
#define KX_THREAD_LOCAL __attribute__((tls_model("initial-exec"))) thread_local
#else
#define KX_THREAD_LOCAL thread_local
#endif
#define KX_EXTENSION __extension__
#endif

// Words that any source of a module may contribute to, and that the linker gathers into one range: a section whose name
// is a C identifier gets two boundary symbols. KX_GATHERED_WORD(section, type, name, function, pValue), in a class,
// declares such a word and the function that returns its address; all users of the word go through the function.
// KX_GATHERED_ALWAYS before it has the word gathered even if nothing uses it. Each word lies on a multiple of 16, so
// null words stand between them, and a walk skips these. KX_GATHERED(type, section) declares the range, whose ends are
// KX_GATHER_BEGIN(section) and KX_GATHER_END(section): the module's own, and both null in a module that has no such
// word.
//
// KX_INIT_FIRST has an object initialised before all others of its module. KX_AT_UNLOAD has a function called when its
// module is unloaded, after the destructors of the module's objects, and also when the process ends, after the handlers
// of std::atexit.
//
// Each word is volatile, since the module that writes it is another one. For each, the linker keeps one of the copies
// that the sources bring, and keeps it even if it drops what no code refers to. GCC 12 puts all variables of a section
// into one group, so that two sources with different ones clash, and cannot ask for the second; there a function that
// is compiled wherever the word is used, and never called, has the assembler define it. An empty instruction refers to
// that function.
#if defined(__ELF__)
#if defined(__clang__)
// NOLINTBEGIN(bugprone-macro-parentheses): a type and a name cannot be in parentheses.
#define KX_GATHERED_WORD(section_name, type, name, function, pValue)                                                   \
    KX_GATHERED_VARIABLE(section_name) inline static type name = pValue;                                               \
    static type volatile* function()                                                                                   \
    {                                                                                                                  \
        return &name;                                                                                                  \
    }                                                                                                                  \
    static_assert(true)
// NOLINTEND(bugprone-macro-parentheses)
#define KX_GATHERED_VARIABLE(section_name) __attribute__((section(#section_name), aligned(16), retain))
#else
#define KX_GATHERED_WORD(section_name, type, name, function, pValue)                                                   \
    static void function##Definition()                                                                                 \
    {                                                                                                                  \
        asm(".ifndef %c0\n\t"                                                                                          \
            ".pushsection " #section_name ",\"awGR\",%%progbits,%c0,comdat\n\t"                                        \
            ".weak %c0\n\t"                                                                                            \
            ".hidden %c0\n\t"                                                                                          \
            ".type %c0, %%object\n\t"                                                                                  \
            ".size %c0, 8\n\t"                                                                                         \
            ".balign 16\n"                                                                                             \
            "%c0:\n\t"                                                                                                 \
            ".quad %c1\n\t"                                                                                            \
            ".balign 16\n\t"                                                                                           \
            ".popsection\n\t"                                                                                          \
            ".endif"                                                                                                   \
            :                                                                                                          \
            : "i"(&name), "i"(pValue));                                                                                \
    }                                                                                                                  \
    static type volatile* function()                                                                                   \
    {                                                                                                                  \
        asm inline("" : : "i"(&function##Definition));                                                                 \
        return &name;                                                                                                  \
    }                                                                                                                  \
    static type name
#endif
#define KX_GATHERED_ALWAYS __attribute__((used))
#define KX_GATHERED(type, section_name)                                                                                \
    extern "C" KX_LOCAL __attribute__((weak)) type __start_##section_name[];                                           \
    extern "C" KX_LOCAL __attribute__((weak)) type __stop_##section_name[]
#define KX_GATHER_BEGIN(section_name) __start_##section_name
#define KX_GATHER_END(section_name) __stop_##section_name
#define KX_INIT_FIRST __attribute__((init_priority(101)))
#define KX_AT_UNLOAD __attribute__((destructor(101)))
#endif

// KX_TYPE_NAME(function, symbol, type), in a class: a static function that returns what typeid(type).name() returns.
// Also where there is no RTTI: the name is the end of the symbol of a function void symbol(type) that the assembler is
// asked for, after the length and the name of that function. So modules with and without RTTI agree.
#if defined(__GXX_RTTI) || defined(__cpp_rtti) || defined(_CPPRTTI)
#include <typeinfo>
#define KX_TYPE_NAME(function, symbol, ...)                                                                            \
    static const char* function()                                                                                      \
    {                                                                                                                  \
        return typeid(__VA_ARGS__).name();                                                                             \
    }
#elif defined(__ELF__)
#define KX_TYPE_NAME(function, symbol, ...)                                                                            \
    static const char ms_ac##symbol[];                                                                                 \
    static const char* function()                                                                                      \
    {                                                                                                                  \
        static_assert(sizeof(#symbol) == 11, "the symbol begins with _Z10 and the name");                              \
        asm(".ifndef %c0\n\t"                                                                                          \
            ".pushsection .rodata.%c0,\"aG\",%%progbits,%c0,comdat\n\t"                                                \
            ".weak %c0\n\t"                                                                                            \
            ".hidden %c0\n\t"                                                                                          \
            ".type %c0, %%object\n"                                                                                    \
            "%c0:\n\t"                                                                                                 \
            ".string \"%c1\"\n\t"                                                                                      \
            ".size %c0, .-%c0\n\t"                                                                                     \
            ".popsection\n\t"                                                                                          \
            ".endif"                                                                                                   \
            :                                                                                                          \
            : "i"(&ms_ac##symbol), "i"(static_cast<void (*)(__VA_ARGS__)>(&symbol)));                                  \
        return ms_ac##symbol + sizeof("_Z10" #symbol) - 1;                                                             \
    }
#endif

namespace kx::detail
{
// Stops at the processor's breakpoint instruction unless bCondition holds. Without a debugger the process ends
// abnormally; with one, execution can resume, and then the caller goes on as if the check had passed. So the code
// behind a check must stay alive, which rules out __builtin_trap and any hint that the condition always holds. The
// checks are part of every build.
//
// The colons say that the instruction clobbers nothing. Without them it would count as a write to all memory, and every
// loop with a check in it would reload what it had in registers.
KX_CHECK_INLINE void BreakUnless(bool bCondition) noexcept
{
    if (!bCondition) [[unlikely]]
    {
#if defined(_MSC_VER) && !defined(__clang__)
        __debugbreak();
#elif defined(__x86_64__)
        asm volatile("int3" : :);
#elif defined(__aarch64__)
        asm volatile("brk #0xf000" : :);
#else
#error "kxcore: add the breakpoint instruction of this processor here"
#endif
    }
}

// An address as a number. The compiler may assume that pointer arithmetic does not wrap and that pointers into
// different objects are never compared, so a check on the two ends of a buffer compares numbers.
template <class T>
inline std::uintptr_t AddressOf(const T* pObject) noexcept
{
    return reinterpret_cast<std::uintptr_t>(pObject);
}

// Has the processor fetch what is at the address, which may be null, since it is going to be read soon: where a walk
// spends its time waiting for memory, it then waits for several places at once.
inline void Prefetch(const void* pMemory) noexcept
{
#if defined(_MSC_VER) && !defined(__clang__)
    static_cast<void>(pMemory);
#else
    __builtin_prefetch(pMemory);
#endif
}

// std::addressof without the 50,000 lines of <memory>: the address of an object whose class may overload unary &.
template <class T>
inline T* PointerTo(T& object) noexcept
{
    return __builtin_addressof(object);
}
} // namespace kx::detail
