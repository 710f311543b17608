// Inside kxbase: what an identity is.
#pragma once

#include "core/dynamic/typeoperations.h"

#include <atomic>

namespace kx::detail
{
struct SValueOperations;

/// Each triggers the debug break in UsedTypeOfUnloadedModule.
extern const STypeOperations g_withdrawnOperations;
} // namespace kx::detail

/// A module's slot points at a record before the merge and at this afterwards. It begins like a record, so that merging
/// a slot again finds what is there already.
///
/// What depends on the modules that are loaded is atomic: a module may come or go while other threads use values of the
/// type that another module describes, too.
struct STypeID : STypeIDData
{
    kx::detail::ETypeKind Kind() const { return static_cast<kx::detail::ETypeKind>(m_nKind >> 16); }

    /// Whether values of the type can be made.
    bool IsDescribed() const
    {
        const STypeOperations* pOperations = m_pOperations.load(std::memory_order_acquire);
        return pOperations != nullptr && pOperations != &kx::detail::g_withdrawnOperations;
    }

    const STypeOperations& Operations() const { return *m_pOperations.load(std::memory_order_acquire); }

    /// Null until a module has described the type, g_withdrawnOperations if no module does so any more.
    std::atomic<const STypeOperations*> m_pOperations = nullptr;
    const kx::detail::SValueOperations* m_pValue = nullptr; ///< See core/dynamic/heldvalue.h.
    std::atomic<const IType*> m_pType = nullptr;            ///< As entered into the registry.
    kx::detail::STypeEntry* m_pEntries = nullptr;           ///< Of the modules that are loaded, in order of loading.
    uint16 m_nSize = 0;
    uint16 m_nAlignment = 0;
};
