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
// Types without an overload are hashed by their bytes, if the bytes alone distinguish two keys: integers, enumerations,
// pointers (as addresses, whatever they point at), and structs of these without padding. Any other type is rejected by
// the compiler.
#pragma once

#include "core/platform/platform.h"

#include <type_traits>

/// Returns the 32-bit FNV-1a hash of nSize bytes, lowest address first, but with signed bytes.
/// A byte of 0x80 or more flips the upper 24 bits as well, so the hashes of such keys differ from published FNV-1a. The
/// iteration order of the hash containers depends on these values.
inline uint32 HashBytes(const void* pBytes, uint64 nSize)
{
    uint32 nHash = 0x811C9DC5;
    // int8 and not char, which is unsigned on some processors.
    for (const int8* pByte = static_cast<const int8*>(pBytes); nSize != 0; ++pByte, --nSize)
        nHash = (nHash ^ static_cast<uint32>(*pByte)) * 16777619;
    return nHash;
}

/// Returns the hash of a key that consists of its bytes alone.
template <class K>
uint32 HashKey(const K& key) requires std::has_unique_object_representations_v<K>
{
    return ::HashBytes(kx::detail::PointerTo(key), sizeof(K));
}

namespace kx::detail
{
template <class K>
struct TDefaultHashPolicy
{
    static uint32 Hash(const K& key)
    {
        static_assert(
            requires { uint32{HashKey(key)}; },
            "this key is more than its bytes: declare uint32 HashKey(const K&) beside the key's class, or pass the "
            "container a policy of your own");
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
