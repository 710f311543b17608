#include "runtime/json/keys.h"

#include <cstring>
#include <mutex>

namespace json
{
namespace
{
// Open addressing, at most half full. The module is never unloaded, because trees may outlive its last use.
struct SStore
{
    static constexpr uint32 kSlots = 8192;
    static constexpr uint32 kCharacters = 128 * 1024;

    std::mutex m_mutex;
    uint32 m_nKeys = 0;
    uint32 m_nUsed = 1;           // of the characters; no key is at 0
    uint32 m_anKeys[kSlots] = {}; // where the characters are; 0 in a free slot
    char m_acCharacters[kCharacters] = {};
};

constinit SStore g_store;
} // namespace

uint64 ZKeys::Hash(std::string_view key)
{
    // The first and the last eight bytes, and the size.
    uint64 nFirst = 0;
    uint64 nLast = 0;
    if (key.size() >= sizeof(nFirst))
    {
        std::memcpy(&nFirst, key.data(), sizeof(nFirst));
        std::memcpy(&nLast, key.data() + key.size() - sizeof(nLast), sizeof(nLast));
    }
    else
    {
        for (const char c : key)
            nFirst = nFirst << 8 | static_cast<uint8>(c);
    }
    const uint64 nMixed = (nFirst ^ (nLast << 29 | nLast >> 35) ^ key.size()) * 0x9E3779B97F4A7C15;
    return nMixed >> 40;
}

const char* ZKeys::Stored(std::string_view key, uint64 nHash)
{
    SStore& store = g_store;
    const std::lock_guard lock(store.m_mutex);
    uint64 nSlot = nHash % SStore::kSlots;
    for (; store.m_anKeys[nSlot] != 0; nSlot = (nSlot + 1) % SStore::kSlots)
    {
        const char* pStored = store.m_acCharacters + store.m_anKeys[nSlot];
        if (std::strncmp(pStored, key.data(), key.size()) == 0 && pStored[key.size()] == '\0')
            return pStored;
    }
    // A key with a NUL in it looks like a shorter one.
    if (store.m_nKeys == SStore::kSlots / 2 || SStore::kCharacters - store.m_nUsed <= key.size()
        || key.find('\0') != std::string_view::npos)
        return nullptr;
    char* pNew = store.m_acCharacters + store.m_nUsed;
    std::memcpy(pNew, key.data(), key.size());
    store.m_anKeys[nSlot] = store.m_nUsed;
    store.m_nUsed += static_cast<uint32>(key.size()) + 1;
    ++store.m_nKeys;
    return pNew;
}
} // namespace json
