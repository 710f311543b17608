// Inside runtime.json: the keys of texts. Most texts have few different ones, each many times, so the characters of a
// key are stored once for the process, and the properties refer to them as to a literal. That saves an allocation for
// each property, when it is read, copied and destroyed.
//
// The store has a fixed size, so that no text can fill the memory with keys that nobody uses any more. A key that finds
// no space is copied for each property.
#pragma once

#include "core/strings/string.h"

#include <string_view>

namespace json
{
/// The keys that one reader has met. Each takes one of the slots, and the last one that takes it stays.
class ZKeys
{
public:
    ZString Get(std::string_view key)
    {
        if (key.empty() || key.size() > kMaxSize)
            return ZString(key);
        const uint64 nHash = Hash(key);
        SSlot& slot = m_aSlots[nHash % kSlots];
        if (std::string_view(slot.m_pChars, slot.m_nSize) != key)
            slot = {Stored(key, nHash), static_cast<uint32>(key.size())};
        if (slot.m_pChars != nullptr)
            return kx::detail::SStringAccess::Refer(slot.m_pChars, slot.m_nSize);
        slot = {};
        return ZString(key);
    }

private:
    struct SSlot
    {
        const char* m_pChars = nullptr;
        uint32 m_nSize = 0;
    };

    static constexpr uint64 kSlots = 256;
    static constexpr std::size_t kMaxSize = 64;

    static uint64 Hash(std::string_view key);

    // The stored characters of the key; null if there is no space for them.
    static const char* Stored(std::string_view key, uint64 nHash);

    SSlot m_aSlots[kSlots];
};
} // namespace json
