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
#pragma once

#include "core/containers/hashbytes.h"

#include <type_traits>

namespace kx::detail
{
template <class K>
concept CScalarKey = std::is_integral_v<K> || std::is_enum_v<K> || std::is_pointer_v<K>;

// A std::basic_string or std::basic_string_view of char, without the cost of their headers.
template <class K>
concept CStandardString = requires(const K& key, typename K::traits_type* pTraits, const char* pChars)
{
    pTraits->eq(*key.data(), *pChars);
    pChars = key.data();
    key.size();
};

template <class K, class... TCharacters>
constexpr bool PointsAtOneOf()
{
    return std::is_pointer_v<K> && (std::is_same_v<std::remove_cv_t<std::remove_pointer_t<K>>, TCharacters> || ...);
}

template <class K>
concept CCharacterPointer = PointsAtOneOf<K, char, wchar_t, char8_t, char16_t, char32_t>();
} // namespace kx::detail

/// Returns the hash of the bytes of an integer, an enumeration value or an address.
template <kx::detail::CScalarKey K>
uint32 HashKey(const K& key) requires(!kx::detail::CCharacterPointer<K>)
{
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
};
} // namespace kx::detail

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
