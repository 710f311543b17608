// Choosing between two pointers without a branch, for searches whose turns the processor cannot predict.
//
// A conditional expression does not say that: GCC makes a branch of it in most loops, and Clang in some. On x86-64 the
// instruction is therefore written out. Elsewhere the compilers choose.
#pragma once

#include "core/platform/platform.h"

#include <type_traits>

namespace kx::detail
{
/// The integers that SelectIfLess compares.
template <class T>
concept CWord = std::is_integral_v<T> &&(sizeof(T) == 4 || sizeof(T) == 8);

/// Returns pLess if first is less than second, otherwise pOther.
/// The comparison is part of the selection, because a truth value between the two would delay each step of a search.
template <CWord TWord, class T>
KX_CHECK_INLINE T* SelectIfLess(TWord first, TWord second, T* pLess, T* pOther) noexcept
{
#if defined(__x86_64__)
    if constexpr (std::is_signed_v<TWord>)
    {
        asm("cmp {%[second], %[first]|%[first], %[second]}\n\t"
            "cmovl {%[pLess], %[pOther]|%[pOther], %[pLess]}"
            : [pOther] "+r"(pOther)
            : [first] "r"(first), [second] "r"(second), [pLess] "r"(pLess)
            : "cc");
    }
    else
    {
        asm("cmp {%[second], %[first]|%[first], %[second]}\n\t"
            "cmovb {%[pLess], %[pOther]|%[pOther], %[pLess]}"
            : [pOther] "+r"(pOther)
            : [first] "r"(first), [second] "r"(second), [pLess] "r"(pLess)
            : "cc");
    }
    return pOther;
#else
    return first < second ? pLess : pOther;
#endif
}
} // namespace kx::detail
