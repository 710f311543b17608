#include "core/dynamic/typeregistry.h"

#include "core/dynamic/typetable.h"
#include "core/platform/lock.h"

#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_map>

namespace
{
using kx::detail::STypeEntry;

// Protects the identities, the entries, and what is made of them. Modules are loaded by any thread.
constinit kx::detail::ZLock s_lock;
constinit bool s_bEnding = false;

// The identity under this name, new if there is none. The first module that starts makes the table, when there is
// neither an allocator nor any other object of this module yet. It is never destroyed: slots point into it as long as
// any code runs.
STypeID* FindIdentity(const STypeIDData& record)
{
    static auto& s_identities = *new std::unordered_map<std::string, STypeID>;
    const auto [found, bNew] = s_identities.try_emplace(record.m_pfnName());
    STypeID& identity = found->second;
    if (bNew)
    {
        static_cast<STypeIDData&>(identity) = record; // debugger views show the name by m_pfnName, which nobody calls
        identity.m_pTypeID = &identity;
    }
    return &identity;
}

STypeID& IdentityOf(const STypeEntry& entry)
{
    return *reinterpret_cast<STypeID*>(*entry.m_pfnSlot());
}

// Whether the entry brings the operations of values. Descriptions of what trees are made of are used only where a
// program enters them by hand; the library has operations of its own for these.
bool Describes(const STypeEntry& entry)
{
    return entry.m_bRegister || entry.m_pValue != nullptr;
}

// The first of the entries that the predicate holds for, null if there is none.
template <class TPredicate>
const IType* FirstType(const STypeID& identity, TPredicate predicate)
{
    for (const STypeEntry* pEntry = identity.m_pEntries; pEntry != nullptr; pEntry = pEntry->m_pNext)
    {
        if (predicate(*pEntry))
            return pEntry->m_pType;
    }
    return nullptr;
}

// Makes the type that of the values, unless there is a description that stays.
void Describe(STypeID& identity, const IType& type)
{
    if (identity.IsDescribed())
        return;
    identity.m_nSize = type.m_nSize;
    identity.m_nAlignment = type.m_nAlignment;
    identity.m_pOperations.store(type.m_pOperations, std::memory_order_release);
}

void Enter(STypeEntry& entry)
{
    STypeID& identity = IdentityOf(entry);
    const IType& type = *entry.m_pType;
    const bool bSame =
        !identity.IsDescribed() || (identity.m_nSize == type.m_nSize && identity.m_nAlignment == type.m_nAlignment);
    kx::detail::BreakUnless(bSame); // two modules have different types of one name
    if (!bSame)
        return;

    STypeEntry** ppLink = &identity.m_pEntries;
    while (*ppLink != nullptr)
        ppLink = &(*ppLink)->m_pNext;
    *ppLink = &entry;
    if (entry.m_pValue != nullptr)
        identity.m_pValue = entry.m_pValue;
    if (Describes(entry))
        Describe(identity, type);
    if (entry.m_bRegister && identity.m_pType.load(std::memory_order_relaxed) == nullptr)
        identity.m_pType.store(&type, std::memory_order_release);
}

// The next entries take over what is made of this one.
void Withdraw(STypeEntry& entry)
{
    STypeID& identity = IdentityOf(entry);
    STypeEntry** ppLink = &identity.m_pEntries;
    while (*ppLink != nullptr && *ppLink != &entry)
        ppLink = &(*ppLink)->m_pNext;
    if (*ppLink == nullptr)
        return;
    *ppLink = std::exchange(entry.m_pNext, nullptr);

    const IType& type = *entry.m_pType;
    if (identity.m_pType.load(std::memory_order_relaxed) == &type)
    {
        const IType* pNext = FirstType(identity, [](const STypeEntry& other) { return other.m_bRegister; });
        identity.m_pType.store(pNext, std::memory_order_release);
    }
    if (identity.m_pOperations.load(std::memory_order_relaxed) == type.m_pOperations)
    {
        const IType* pNext = FirstType(identity, Describes);
        identity.m_pOperations.store(pNext != nullptr ? pNext->m_pOperations : &kx::detail::g_withdrawnOperations,
                                     std::memory_order_release);
    }
}

// Calls function for the entries of a module, with the lock held.
template <class TFunction>
void ForEach(STypeEntry** ppFirst, STypeEntry** ppLast, TFunction function)
{
    const std::lock_guard lock(s_lock);
    for (; ppFirst != ppLast; ++ppFirst)
    {
        if (*ppFirst != nullptr)
            function(**ppFirst);
    }
}
} // namespace

constinit const STypeOperations kx::detail::g_withdrawnOperations = {
    .Construct = [](void*) { UsedTypeOfUnloadedModule(); },
    .CopyConstruct = [](void*, const void*) { UsedTypeOfUnloadedModule(); },
    .Destruct = [](void*) { UsedTypeOfUnloadedModule(); },
    .Assign = [](void*, const void*) { UsedTypeOfUnloadedModule(); },
    .Equals =
        [](const void*, const void*)
    {
        UsedTypeOfUnloadedModule();
        return false;
    },
    .m_apReserved = {},
};

KX_NOINLINE void kx::detail::UsedTypeOfUnloadedModule()
{
    BreakUnless(false);
}

void SharedInitTypeIDs(STypeIDData** ppFirst, STypeIDData** ppLast)
{
    const std::lock_guard lock(s_lock);
    for (; ppFirst != ppLast; ++ppFirst)
    {
        STypeIDData* pRecord = *ppFirst;
        if (pRecord == nullptr)
            continue;
        if (pRecord->m_pTypeID == nullptr)
            pRecord->m_pTypeID = FindIdentity(*pRecord);
        *ppFirst = pRecord->m_pTypeID;
    }
}

void kx::detail::FillTypeRecords(STypeEntry** ppFirst, STypeEntry** ppLast)
{
    // The types of values that outlive main stay described while the process ends.
    static const int s_nRegistered = std::atexit([] { s_bEnding = true; });
    static_cast<void>(s_nRegistered);

    ForEach(ppFirst, ppLast,
            [](STypeEntry& entry)
            {
                entry.m_pType->m_pTypeID = &IdentityOf(entry);
                if (entry.m_pBlock != nullptr)
                {
                    STypeID* pArgument = reinterpret_cast<STypeID*>(*entry.m_pfnArgument());
                    STemplateBlock& block = *entry.m_pBlock;
                    entry.m_pType->m_pElementTypeID = pArgument;
                    block.m_pArgument = pArgument;
                    const uint64 nName = std::strlen(block.m_acName) + 1;
                    std::memset(block.m_acName + nName, 0, sizeof(block.m_acName) - nName);
                }
                Enter(entry);
            });
}

void kx::detail::WithdrawTypeRecords(STypeEntry** ppFirst, STypeEntry** ppLast)
{
    if (!s_bEnding)
        ForEach(ppFirst, ppLast, Withdraw);
}

ZTypeRegistry& GetTypeRegistry()
{
    constinit static ZTypeRegistry s_registry;
    return s_registry;
}

void ZTypeRegistry::Register(IType* pType)
{
    STypeID* pIdentity = pType->m_pTypeID;
    kx::detail::BreakUnless(pIdentity != nullptr);
    if (pIdentity == nullptr)
        return;
    const std::lock_guard lock(s_lock);
    if (pIdentity->m_pType.load(std::memory_order_relaxed) != nullptr)
        return;
    for (STypeEntry* pEntry = pIdentity->m_pEntries; pEntry != nullptr; pEntry = pEntry->m_pNext)
    {
        if (pEntry->m_pType == pType)
            pEntry->m_bRegister = true;
    }
    pIdentity->m_pType.store(pType, std::memory_order_release);
    Describe(*pIdentity, *pType);
}

const IType* ZTypeRegistry::Find(STypeID* pTypeID) const
{
    return pTypeID != nullptr ? pTypeID->m_pType.load(std::memory_order_acquire) : nullptr;
}
