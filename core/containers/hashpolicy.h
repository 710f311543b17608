// How the hash containers hash and compare their keys, and how to use a key type of your own.
//
// A container uses its policy, a plain struct of two static functions:
//
//   struct SNoCasePolicy
//   {
//       static uint32 Hash(const K& key);                         // equal keys have equal hashes
//       static bool Equals(const K& first, const K& second);
//   };
//
// The default policies compare by == and hash by HashKey, a function that each key type may overload beside its class:
//
//   inline uint32 HashKey(const ZPath& path) { return HashBytes(path.Text(), path.Length()); }
//
// Integers, enumerations and pointers (as addresses, whatever they point at) need no overload, and the strings of the
// standard library have one here. A class without an overload is rejected by the compiler. If its bytes alone
// distinguish two keys, its HashKey may return HashBytes(&key, sizeof(key)); a class with pointers or views to what it
// compares must not.
//
// A policy may ask for more by member types, whatever they name:
//
// - IsTransparent: look-ups take every argument that does not convert to the key and that Hash and Equals (with the key
//   first) accept. Such an argument must have the hash of the keys that it equals. The default policies have it: they
//   accept characters for ZString keys.
// - MovesOnGrowth: a rehash moves keys and values instead of copying them, for values that are dear to copy.
//   TMovesOnGrowth adds it to a policy: THashMap<K, V, TMovesOnGrowth<TDefaultHashMapPolicy<K, V>>>.
#pragma once

#include "core/containers/hashbytes.h"
#include "core/containers/lookup.h"

#include <type_traits>

namespace kx::detail
{
template <class K>
concept CScalarKey = std::is_integral_v<K> || std::is_enum_v<K> || std::is_pointer_v<K>;

template <class K, class... TCharacters>
constexpr bool PointsAtOneOf()
{
    return std::is_pointer_v<K> && (std::is_same_v<std::remove_cv_t<std::remove_pointer_t<K>>, TCharacters> || ...);
}

template <class K>
concept CCharacterPointer = PointsAtOneOf<K, char, wchar_t, char8_t, char16_t, char32_t>();

/// Returns the number whose bytes, lowest first, are those of the key.
template <CScalarKey K>
uint64 WordOf(K key)
{
    if constexpr (std::is_pointer_v<K>)
        return detail::AddressOf(key);
    else
        return static_cast<uint64>(key);
}
} // namespace kx::detail

/// Returns the hash of the bytes of an integer, an enumeration value or an address.
template <kx::detail::CScalarKey K>
uint32 HashKey(const K& key) requires(!kx::detail::CCharacterPointer<K>)
{
    if constexpr (sizeof(K) <= sizeof(uint64))
        return kx::detail::HashWord<sizeof(K)>(kx::detail::WordOf(key));
    else
        return ::HashBytes(kx::detail::PointerTo(key), sizeof(K));
}

/// Returns the hash of the characters of a std::string_view or std::string, equal to that of a ZString of them.
template <kx::detail::CStandardString K>
uint32 HashKey(const K& key)
{
    return ::HashBytes(key.data(), key.size());
}

namespace kx::detail
{
template <class K>
struct TDefaultHashPolicy
{
    using IsTransparent = void;

    static uint32 Hash(const K& key)
    {
        static_assert(!CCharacterPointer<K>,
                      "a pointer to characters would be hashed and compared as an address: make the key a ZString or a "
                      "std::string_view, or pass the container a policy of your own");
        static_assert(
            CCharacterPointer<K> || requires { uint32{HashKey(key)}; },
            "this key has no hash: declare uint32 HashKey(const K&) beside the key's class (which may return "
            "HashBytes(&key, sizeof(key)) if the bytes alone distinguish two keys), or pass the container a policy of "
            "your own");
        if constexpr (!CCharacterPointer<K>)
            return HashKey(key);
    }

    static bool Equals(const K& first, const K& second) { return first == second; }

    template <CTextFor<K> TText>
    static uint32 Hash(const TText& text)
    {
        const ZLookUpText characters(text);
        return ::HashBytes(characters.Chars(), characters.Length());
    }
    template <CTextFor<K> TText>
    static bool Equals(const K& key, const TText& text)
    {
        return ZLookUpText(text) == key;
    }
};
} // namespace kx::detail

/// A policy whose containers move their elements when they grow.
template <class TPolicy>
struct TMovesOnGrowth : TPolicy
{
    using MovesOnGrowth = void;
};

/// The default policy of a map.
template <class K, class V>
struct TDefaultHashMapPolicy : kx::detail::TDefaultHashPolicy<K>
{
};

/// The default policy of a set.
template <class K>
struct TDefaultHashSetPolicy : kx::detail::TDefaultHashPolicy<K>
{
};
