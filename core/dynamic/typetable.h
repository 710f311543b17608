// Inside kxbase: what an identity is.
#pragma once

#include "core/dynamic/typeoperations.h"

namespace kx::detail
{
struct SValueOperations;
} // namespace kx::detail

/// A module's slot points at a record before the merge and at this afterwards. It begins like a record, so that merging
/// a slot again finds what is there already.
struct STypeID : STypeIDData
{
    kx::detail::ETypeKind Kind() const { return static_cast<kx::detail::ETypeKind>(m_nKind >> 16); }

    /// Null until a module has described the type; no value of it can be kept before.
    const STypeOperations* m_pOperations = nullptr;
    const kx::detail::SValueOperations* m_pValue = nullptr; ///< See core/dynamic/heldvalue.h.
    const IType* m_pType = nullptr;                         ///< As entered into the registry.
    uint16 m_nSize = 0;
    uint16 m_nAlignment = 0;
};
