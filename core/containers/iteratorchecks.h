// Checks in iterators, for debugging.
//
// With KX_CHECK_ITERATORS defined for a whole source, * and -> of an iterator at the end trigger the debug break. This
// covers the ordered and the hash containers, TSList and TBlockArray. The end of a TList looks like a node, and the
// iterators of TArray and TMaxArray are pointers.
//
// Layouts and symbols stay the same, and sources with and without the macro may be linked together: the operators are
// always inlined, so each source has its own. A function template that both kinds of sources instantiate has the checks
// of one of them.
#pragma once

#include "core/platform/platform.h"

#if defined(KX_CHECK_ITERATORS)
#define KX_BREAK_IF_AT_END(bAtEnd) kx::detail::BreakUnless(!(bAtEnd))
#else
#define KX_BREAK_IF_AT_END(bAtEnd) static_cast<void>(0)
#endif
