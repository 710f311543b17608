// What type identity needs of the object format: words of a module in one range, code that runs when a module is
// unloaded, and the names of types.
#pragma once

#include "core/platform/platform.h"

// The operand of an asm that is the name of a symbol. In code that may be loaded anywhere, AArch64 does not count an
// address as a constant. Where the name itself is not written, a register may have it: an object that is compiled while
// it is linked (-flto) can refer to a function of an object that is not.
#if defined(__aarch64__) && !defined(__clang__)
#define KX_SYMBOL(...) "S"(__VA_ARGS__)
#define KX_SYMBOL_OR_REGISTER(...) "Sr"(__VA_ARGS__)
#else
#define KX_SYMBOL(...) "i"(__VA_ARGS__)
#define KX_SYMBOL_OR_REGISTER(...) "ir"(__VA_ARGS__)
#endif

// Words that any source of a module may contribute to, and that the linker gathers into one range: a section whose name
// is a C identifier gets two boundary symbols. KX_GATHERED_WORD(section, type, name, function, pValue), in a class,
// declares such a word and the function that returns its address; all users of the word go through the function.
// KX_GATHERED_ALWAYS before it has the word gathered even if nothing uses it. Each word is at a multiple of 16, so
// there are null words between them, and a walk skips these. KX_GATHERED(type, section) declares the range, whose ends
// are KX_GATHER_BEGIN(section) and KX_GATHER_END(section): the module's own, and both null in a module that has no such
// word.
//
// KX_AT_UNLOAD(function) { ... } defines a function that is called when its module is unloaded, after the destructors
// of the module's objects. When the process ends, it is not called before the handlers of std::atexit have run.
//
// Each word is volatile, since the module that writes it is another one. For each, the linker keeps one of the copies
// that the sources have, and keeps it even if it drops what no code refers to. GCC 12 puts all variables of a section
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
            : KX_SYMBOL(&name), KX_SYMBOL(pValue));                                                                    \
    }                                                                                                                  \
    static type volatile* function()                                                                                   \
    {                                                                                                                  \
        asm inline("" : : KX_SYMBOL_OR_REGISTER(&function##Definition));                                               \
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
#define KX_AT_UNLOAD(function) KX_LOCAL __attribute__((destructor(101))) inline void function()

// Windows has no boundary symbols, but the linker sorts what has an initial value by the names of the symbols. The
// words are members of a template that has nothing else, so they are neighbours, between number 0 and number 2. These
// go through an empty instruction: a compiler that knows that they are two objects takes them for unequal, and a walk
// from one to the other would never end for it. GCC's optimisation of whole programs (-flto) drops the names, and
// --gc-sections drops what no code refers to, also where it is used always: neither can be had on Windows.
#elif defined(_WIN32)
// NOLINTBEGIN(bugprone-macro-parentheses): a type and a name cannot be in parentheses.
#define KX_GATHERED_WORD(section_name, type, name, function, pValue)                                                   \
    static type volatile* function()                                                                                   \
    {                                                                                                                  \
        return &section_name##Word<1, pValue>::ms_pWord;                                                               \
    }                                                                                                                  \
    static_assert(true)
#define KX_GATHERED_ALWAYS __attribute__((used))
#define KX_GATHERED(type, section_name)                                                                                \
    template <int nPlace, auto pValue>                                                                                 \
    struct section_name##Word                                                                                          \
    {                                                                                                                  \
        __attribute__((aligned(16))) inline static decltype(pValue) ms_pWord = pValue;                                 \
        template <class T>                                                                                             \
        static T* Unknown()                                                                                            \
        {                                                                                                              \
            T* pWord = reinterpret_cast<T*>(&ms_pWord);                                                                \
            asm("" : "+r"(pWord));                                                                                     \
            return pWord;                                                                                              \
        }                                                                                                              \
    };                                                                                                                 \
    inline type* section_name##Begin()                                                                                 \
    {                                                                                                                  \
        return section_name##Word<0, &kx::detail::g_cEnd>::template Unknown<type>() + 1;                               \
    }                                                                                                                  \
    inline type* section_name##End()                                                                                   \
    {                                                                                                                  \
        return section_name##Word<2, &kx::detail::g_cEnd>::template Unknown<type>();                                   \
    }                                                                                                                  \
    static_assert(true)
// NOLINTEND(bugprone-macro-parentheses)
#define KX_GATHER_BEGIN(section_name) section_name##Begin()
#define KX_GATHER_END(section_name) section_name##End()
// The handlers of std::atexit and the destructors of a module run in one list, and functions of GCC's attribute run
// before that list. So the first object of the module calls the function. A module whose process ends keeps what it has
// announced: values of its types may outlive it in the modules that are unloaded later.
#define KX_AT_UNLOAD(function)                                                                                         \
    inline void function();                                                                                            \
    KX_INIT_FIRST inline const kx::detail::TAtUnload<function> g_call##function;                                       \
    inline void function()

namespace kx::detail
{
// What the ends of a range point at: words without a value would be elsewhere.
inline char g_cEnd = 0;

/// Whether the process ends, and not only the module that has this address.
KX_API bool IsProcessEnding(const void* pInModule);

template <void (*pfnFunction)()>
struct TAtUnload
{
    ~TAtUnload()
    {
        if (!IsProcessEnding(this))
            pfnFunction();
    }
};
} // namespace kx::detail

// Compiled for macOS, but never run there.
#else
// NOLINTBEGIN(bugprone-macro-parentheses): a type and a name cannot be in parentheses.
#define KX_GATHERED_WORD(section_name, type, name, function, pValue)                                                   \
    __attribute__((section("__DATA," #section_name), used, aligned(16))) inline static type name = pValue;             \
    static type volatile* function()                                                                                   \
    {                                                                                                                  \
        return &name;                                                                                                  \
    }                                                                                                                  \
    static_assert(true)
#define KX_GATHERED_ALWAYS
#define KX_GATHERED(type, section_name)                                                                                \
    extern "C" KX_LOCAL type section_name##Begin[] asm("section$start$__DATA$" #section_name);                         \
    extern "C" KX_LOCAL type section_name##End[] asm("section$end$__DATA$" #section_name)
// NOLINTEND(bugprone-macro-parentheses)
#define KX_GATHER_BEGIN(section_name) section_name##Begin
#define KX_GATHER_END(section_name) section_name##End
#define KX_AT_UNLOAD(function) KX_LOCAL __attribute__((destructor)) inline void function()
#endif

// KX_TYPE_NAME(function, symbol, type), in a class: a static function that returns what typeid(type).name() returns.
// Also where there is no RTTI, on ELF: the name is the end of the symbol of a function void symbol(type) that the
// assembler is asked for, after the length and the name of that function. So modules with and without RTTI agree.
#if defined(__cpp_rtti)
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
            : KX_SYMBOL(&ms_ac##symbol), KX_SYMBOL(static_cast<void (*)(__VA_ARGS__)>(&symbol)));                      \
        return ms_ac##symbol + sizeof("_Z10" #symbol) - 1;                                                             \
    }
#else
#error "kxcore needs RTTI for dynamic values on this system: compile without -fno-rtti"
#endif
