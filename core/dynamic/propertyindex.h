// Inside kxbase: where in an object the keys are.
#pragma once

#include "core/strings/string.h"

#include <string_view>

namespace kx::detail
{
/// A hash table of positions, open addressing, at most half full. An object has one as soon as it has more than
/// kUnindexed properties; searching fewer in order is faster. Finding and adding take constant time on average, and
/// removing takes time linear in the present number of properties.
///
/// The hash is fast and known to everybody. When many keys collide, which somebody must have chosen for that, the index
/// is built again with a seeded hash, and keeps it.
class ZPropertyIndex
{
public:
    /// The keys of an object: the first members of its properties, which are kPropertySize bytes apart.
    struct SKeys
    {
        const ZString& operator[](uint32 n) const
        {
            return *reinterpret_cast<const ZString*>(m_pFirst + uint64{n} * kPropertySize);
        }

        const char* m_pFirst;
        uint32 m_nSize;
    };

    static constexpr uint64 kPropertySize = 32;
    static constexpr uint32 kUnindexed = 12;
    static constexpr uint32 kMissing = UINT32_MAX;

    ZPropertyIndex() = default;
    ~ZPropertyIndex() { Release(); }
    ZPropertyIndex(const ZPropertyIndex&) = delete;
    ZPropertyIndex& operator=(const ZPropertyIndex&) = delete;

    /// The position of the first property of that key, kMissing if there is none. Not for objects of kUnindexed
    /// properties and fewer.
    uint32 Find(SKeys keys, std::string_view key) const;

    /// To be called after the last of the properties was added.
    void Added(SKeys keys);

    /// To be called before the property at the position is removed.
    void Removing(SKeys keys, uint32 nPosition);

    /// Makes the index of an object whose properties are all new. Returns false, and makes none, if a key occurs twice.
    /// That is not looked at if there are kUnindexed properties or fewer.
    bool TryBuild(SKeys keys);

    /// The same for an array that was made by hand, where keys may occur twice: the first one is found.
    void Build(SKeys keys);
    bool MayRepeatKeys() const { return m_bMayRepeatKeys; }

    /// Makes an empty index the copy of another one, for a copy of the same properties.
    void CopyFrom(const ZPropertyIndex& other);

    /// Whether every property is found where it is, and nothing else is in the index. For tests.
    bool Validate(SKeys keys) const;

private:
    // A free slot is all zero: the position counts from 1.
    struct SSlot
    {
        uint32 m_nHash;
        uint32 m_nNumber;
    };

    uint32 Next(uint32 nSlot) const { return (nSlot + 1) & m_nMask; }
    static constexpr uint32 kLongRun = 128;

    uint32 HashOf(std::string_view key) const;
    bool InsertAll(SKeys keys, bool bRefuseRepeated);
    uint32 Insert(uint32 nHash, uint32 nNumber);
    SSlot* NewSlots() const;
    void Allocate(uint32 nSize);
    void Resize(uint32 nSize);
    void Release();

    SSlot* m_pSlots = nullptr;
    uint32 m_nMask = 0;
    bool m_bMayRepeatKeys = false;
    bool m_bSeeded = false;
};
} // namespace kx::detail
