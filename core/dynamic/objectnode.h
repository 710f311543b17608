// Inside kxbase: what a variant holds for an array or an object.
//
//   ZDynamicObject          array node                         ZDynamicObject          object node
//   +--------+              +---------------------+            +--------+              +---------------------+
//   | m_pType|              | TArray of elements  |            | m_pType|              | TArray of pairs     |
//   | m_pData|------------->| next, source        |            | m_pData|------------->| next, source, index |--->
//   slots
//   +--------+              +---------------------+            +--------+              +---------------------+
//
// The array stands in front, so that the address of the node is that of the array, as for every value. Behind it are
// the links by which trees are copied and destroyed: a node that is still to be filled or to be destroyed stands in a
// list instead of on the stack, so the depth of a tree does not matter and no memory is needed for the walk.
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <string_view>

namespace detail
{
// Where in an object the keys are: a hash table of positions, open addressing, at most half full. An object has one as
// soon as it holds more than kUnindexed properties; the walk over fewer is faster.
class ZPropertyIndex
{
public:
    using Properties = TArray<SDynamicObjectKeyValuePair>;

    static constexpr uint32 kUnindexed = kUnindexedProperties;
    static constexpr uint32 kMissing = UINT32_MAX;

    ZPropertyIndex() = default;
    ~ZPropertyIndex() { Release(); }
    ZPropertyIndex(const ZPropertyIndex&) = delete;
    ZPropertyIndex& operator=(const ZPropertyIndex&) = delete;

    // The position of the key, kMissing if there is none. Not for objects of kUnindexed properties and fewer.
    uint32 Find(const Properties& properties, std::string_view key) const;

    // The last of the properties has been added, or the one at nPosition removed.
    void Added(const Properties& properties);
    void Removed(const Properties& properties, uint32 nPosition);

    // For properties that are all new.
    void Build(const Properties& properties);

    // Takes the place of an empty one, for a copy of the same properties.
    void CopyFrom(const ZPropertyIndex& other);

    // Whether every property is found where it is, and nothing else is in the index. For tests.
    bool Validate(const Properties& properties) const;

private:
    struct SSlot
    {
        uint32 m_nHash;
        uint32 m_nPosition; // kMissing in a free slot
    };

    void Insert(uint32 nHash, uint32 nPosition);
    void Allocate(uint32 nSlots);
    void Release();

    SSlot* m_pSlots = nullptr;
    uint32 m_nMask = 0;
};

struct SArrayNode
{
    TArray<ZDynamicObject> m_elements;
    SArrayNode* m_pNext = nullptr;
    const SArrayNode* m_pSource = nullptr;
};

struct SObjectNode
{
    TArray<SDynamicObjectKeyValuePair> m_properties;
    SObjectNode* m_pNext = nullptr;
    const SObjectNode* m_pSource = nullptr;
    ZPropertyIndex m_index = {};
};

// The first step of a tree's walk, for those that are no variant's members.
struct SVariantAccess
{
    // An object that takes over what lies at pData.
    static ZDynamicObject Adopted(STypeID* pType, void* pData) { return ZDynamicObject(pType, pData); }

    static SArrayNode* Array(const ZVariant& variant) { return static_cast<SArrayNode*>(variant.m_pData); }
    static SObjectNode* Object(const ZVariant& variant) { return static_cast<SObjectNode*>(variant.m_pData); }
};
} // namespace detail
