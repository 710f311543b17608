#include "core/dynamic/dynamicobject.h"
#include "core/dynamic/typetable.h"

#include <cstring>
#include <string_view>
#include <unordered_map>

namespace
{
using detail::EStorage;

template <class T>
void Define(STypeID& identity, EStorage eStorage)
{
    static_assert(std::is_trivially_copyable_v<T> || !std::is_arithmetic_v<T>);
    identity.m_eStorage = eStorage;
    identity.m_nSize = sizeof(T);
    identity.m_nAlignment = alignof(T);
    identity.m_pOperations = &detail::TTypeOperations<T>::kOperations;
}

// The operations of the types that this module itself knows: nobody has to enter these.
struct SKnownType
{
    const char* m_pszName;
    void (*m_pfnDefine)(STypeID& identity, EStorage eStorage);
    EStorage m_eStorage;
};

template <class T>
SKnownType Known(EStorage eStorage)
{
    return {TTypeSlot<T>::Name(), &Define<T>, eStorage};
}

void DefineIfKnown(STypeID& identity, std::string_view name)
{
    static const SKnownType s_aKnown[] = {
        Known<int8>(EStorage::Word),
        Known<int16>(EStorage::Word),
        Known<int32>(EStorage::Word),
        Known<int64>(EStorage::Word),
        Known<uint8>(EStorage::Word),
        Known<uint16>(EStorage::Word),
        Known<uint32>(EStorage::Word),
        Known<uint64>(EStorage::Word),
        Known<float32>(EStorage::Word),
        Known<float64>(EStorage::Word),
        Known<bool>(EStorage::Word),
        Known<ZString>(EStorage::String),
        Known<ZDynamicObject>(EStorage::Other),
        Known<SDynamicObjectKeyValuePair>(EStorage::Other),
        Known<TArray<ZDynamicObject>>(EStorage::Array),
        Known<TArray<SDynamicObjectKeyValuePair>>(EStorage::Object),
    };
    for (const SKnownType& known : s_aKnown)
    {
        if (name == known.m_pszName)
            known.m_pfnDefine(identity, known.m_eStorage);
    }
}

// The identity under this name, new if there is none. The table is made by the first module that starts, when there is
// neither an allocator nor any other object of this module yet, and is never destroyed: slots point into it for as long
// as any code runs.
STypeID* FindIdentity(const STypeIDData& record)
{
    static auto& s_identities = *new std::unordered_map<std::string, STypeID>;
    const auto [found, bNew] = s_identities.try_emplace(record.m_pfnName());
    STypeID& identity = found->second;
    if (bNew)
    {
        static_cast<STypeIDData&>(identity) = record;
        identity.m_pTypeID = &identity;
        DefineIfKnown(identity, found->first);
    }
    return &identity;
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

void detail::FillTypeRecords(STypeEntry** ppFirst, STypeEntry** ppLast)
{
    for (; ppFirst != ppLast; ++ppFirst)
    {
        if (*ppFirst == nullptr)
            continue;
        const STypeEntry& entry = **ppFirst;
        entry.m_pType->m_pTypeID = reinterpret_cast<STypeID*>(*entry.m_ppSlot);
        if (entry.m_pBlock != nullptr)
        {
            STypeID* pArgument = reinterpret_cast<STypeID*>(*entry.m_ppArgument);
            STemplateBlock& block = *entry.m_pBlock;
            entry.m_pType->m_pElementTypeID = pArgument;
            block.m_pArgument = pArgument;
            const uint64 nName = std::strlen(block.m_acName) + 1;
            std::memset(block.m_acName + nName, 0, sizeof(block.m_acName) - nName);
        }
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
    detail::BreakUnless(pIdentity != nullptr);
    if (pIdentity == nullptr || pIdentity->m_pType != nullptr)
        return;
    pIdentity->m_pType = pType;
    if (pIdentity->m_eStorage != EStorage::Unknown)
        return;
    pIdentity->m_eStorage = EStorage::Other;
    pIdentity->m_nSize = pType->m_nSize;
    pIdentity->m_nAlignment = pType->m_nAlignment;
    pIdentity->m_pOperations = pType->m_pOperations;
}

const IType* ZTypeRegistry::Find(STypeID* pTypeID) const
{
    return pTypeID != nullptr ? pTypeID->m_pType : nullptr;
}
