// A hash for keys that an attacker may choose, and policies that use it in the hash containers.
//
// HashBytes is fixed: whoever knows it can send keys of one bucket, and then every insertion walks all earlier ones.
// SeededHash mixes in a secret that differs from process to process, so nobody outside knows which keys collide.
//
//   THashMap<ZString, ZHandler, TSeededHashMapPolicy<ZString, ZHandler>> handlersByName;
//
// The iteration order of such a container differs from process to process too.
#pragma once

#include "core/containers/lookup.h"
#include "core/platform/platform.h"

#include <string_view>
#include <type_traits>

/// The secret that a seeded hash mixes with the bytes.
struct SHashSeed
{
    uint64 m_nFirst;
    uint64 m_nSecond;
};

/// Returns the seed of this process, which is drawn from the system on the first call and stays the same.
/// All modules get the same seed, so a container may pass from one to another. Any thread may call it at any time, even
/// before main. Ends the process by std::terminate if the system has no random numbers.
KX_API const SHashSeed& GetHashSeed() noexcept;

/// Returns the SipHash-1-3 of nSize bytes with the seed as its key. pBytes may be null if nSize is 0.
/// All 64 bits are equally good, so a caller that needs 32 takes the lower ones.
KX_API uint64 SeededHash(const void* pBytes, uint64 nSize, const SHashSeed& seed = GetHashSeed()) noexcept;

namespace kx::detail
{
template <class K>
concept CText = std::is_convertible_v<const K&, std::string_view> && !std::is_pointer_v<std::decay_t<K>>;

template <class K>
struct TSeededHashPolicy
{
    using IsTransparent = void;

    static uint32 Hash(const K& key)
    {
        static_assert(CText<K> || std::is_integral_v<K> || std::is_enum_v<K>,
                      "a seeded policy hashes strings, integers and enumerations: for other keys, pass the container a "
                      "policy of your own that calls SeededHash");
        if constexpr (CText<K>)
        {
            const std::string_view text = key;
            return static_cast<uint32>(::SeededHash(text.data(), text.size()));
        }
        else
            return static_cast<uint32>(::SeededHash(kx::detail::PointerTo(key), sizeof(K)));
    }

    static bool Equals(const K& first, const K& second) { return first == second; }

    template <CTextFor<K> TText>
    static uint32 Hash(const TText& text)
    {
        const ZLookUpText characters(text);
        return static_cast<uint32>(::SeededHash(characters.Chars(), characters.Length()));
    }
    template <CTextFor<K> TText>
    static bool Equals(const K& key, const TText& text)
    {
        return ZLookUpText(text) == key;
    }
};
} // namespace kx::detail

/// The policy of a map whose keys an attacker may choose.
template <class K, class V>
struct TSeededHashMapPolicy : kx::detail::TSeededHashPolicy<K>
{
};

/// The policy of a set whose keys an attacker may choose.
template <class K>
struct TSeededHashSetPolicy : kx::detail::TSeededHashPolicy<K>
{
};
