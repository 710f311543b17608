#include "core/dynamic/typeregistry.h"

#include "core/dynamic/typetable.h"

#include <cstring>
#include <string>
#include <unordered_map>

namespace
{
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
        static_cast<STypeIDData&>(identity) = record;
        identity.m_pTypeID = &identity;
    }
    return &identity;
}

// The first description of a type stays.
void Describe(STypeID& identity, const IType& type, const kx::detail::SValueOperations* pValue)
{
    if (identity.m_pOperations != nullptr)
        return;
    identity.m_pOperations = type.m_pOperations;
    identity.m_pValue = pValue;
    identity.m_nSize = type.m_nSize;
    identity.m_nAlignment = type.m_nAlignment;
}
} // namespace

void SharedInitTypeIDs(STypeIDData** ppFirst, STypeIDData** ppLast)
{
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
    for (; ppFirst != ppLast; ++ppFirst)
    {
        if (*ppFirst == nullptr)
            continue;
        const STypeEntry& entry = **ppFirst;
        STypeID* pIdentity = reinterpret_cast<STypeID*>(*entry.m_ppSlot);
        entry.m_pType->m_pTypeID = pIdentity;
        if (entry.m_pBlock != nullptr)
        {
            STypeID* pArgument = reinterpret_cast<STypeID*>(*entry.m_ppArgument);
            STemplateBlock& block = *entry.m_pBlock;
            entry.m_pType->m_pElementTypeID = pArgument;
            block.m_pArgument = pArgument;
            const uint64 nName = std::strlen(block.m_acName) + 1;
            std::memset(block.m_acName + nName, 0, sizeof(block.m_acName) - nName);
        }
        if (entry.m_pValue != nullptr)
            Describe(*pIdentity, *entry.m_pType, entry.m_pValue);
        if (entry.m_bRegister)
            GetTypeRegistry().Register(entry.m_pType);
    }
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
    if (pIdentity == nullptr || pIdentity->m_pType != nullptr)
        return;
    pIdentity->m_pType = pType;
    Describe(*pIdentity, *pType, nullptr);
}

const IType* ZTypeRegistry::Find(STypeID* pTypeID) const
{
    return pTypeID != nullptr ? pTypeID->m_pType : nullptr;
}
