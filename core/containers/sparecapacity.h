// The spare capacity of a TArray, as AddressSanitizer sees it: an access past the last element is reported, even if the
// buffer is longer. Without that sanitizer, nothing in here makes any code.
//
// All modules that change the size of an array must be built with the sanitizer, or none, or accesses to elements that
// a module without it has added are reported. Where that cannot be had, define KX_NO_ASAN_ANNOTATIONS for all sources.
// So must a program whose allocator takes memory back without a call of Free.
#pragma once

#include "core/platform/platform.h"

#if defined(KX_ASAN) && !defined(KX_NO_ASAN_ANNOTATIONS)
#define KX_ANNOTATE_SPARE_CAPACITY
#include <sanitizer/common_interface_defs.h>
#endif

namespace kx::detail
{
/// In the buffer [pBegin, pCapacityEnd), moves the start of the spare capacity from pOldEnd to pNewEnd.
/// There is none if the start is pCapacityEnd. That is how a buffer comes from its allocator and how it has to go back.
///
/// The sanitizer keeps track of words of 8 bytes, so parts of words at the two ends of the buffer stay accessible.
/// Other blocks may share these words.
template <class T>
void MoveSpareStart([[maybe_unused]] const T* pBegin, [[maybe_unused]] const T* pCapacityEnd,
                    [[maybe_unused]] const T* pOldEnd, [[maybe_unused]] const T* pNewEnd) noexcept
{
#if defined(KX_ANNOTATE_SPARE_CAPACITY)
    const std::uintptr_t nFirst = (detail::AddressOf(pBegin) + 7) / 8 * 8;
    const std::uintptr_t nLast = detail::AddressOf(pCapacityEnd) / 8 * 8;
    if (nFirst >= nLast)
        return;
    const auto clamped = [=](const T* pElement)
    {
        const std::uintptr_t nAddress = detail::AddressOf(pElement);
        return reinterpret_cast<const void*>(nAddress < nFirst ? nFirst : nAddress < nLast ? nAddress : nLast);
    };
    __sanitizer_annotate_contiguous_container(reinterpret_cast<const void*>(nFirst),
                                              reinterpret_cast<const void*>(nLast), clamped(pOldEnd), clamped(pNewEnd));
#endif
}
} // namespace kx::detail
