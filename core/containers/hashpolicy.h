// How the hash containers hash and compare their keys, and how a key type of your own joins in.
//
// A container asks its policy, a plain struct of two static functions:
//
//   struct SNoCasePolicy
//   {
//       static uint32 Hash(const K& key);                         // equal keys have equal hashes
//       static bool Equals(const K& first, const K& second);
//   };
//
// The default policies compare by == and hash by HashKey, a function for which each key type may have its own overload
// beside it:
//
//   inline uint32 HashKey(const ZPath& path) { return HashBytes(path.Text(), path.Length()); }
//
// Types without one are hashed by their bytes, if these are all that tells two keys apart: integers, enumerations,
// pointers (as addresses, whatever they point at), and structs of these without padding. Any other type is refused.
#pragma once

#include "core/platform/platform.h"

#include <type_traits>

// 32-bit FNV-1a over nSize bytes, the lowest first, but with signed bytes: one of 0x80 or more flips the upper 24 bits
// as well, so such keys hash otherwise than by the published function. The order of every walk hangs on these values.
// int8 and not char, which is unsigned on some processors.
inline uint32 HashBytes(const void* pBytes, uint64 nSize)
{
    uint32 nHash = 0x811C9DC5;
    for (const int8* pByte = static_cast<const int8*>(pBytes); nSize != 0; ++pByte, --nSize)
        nHash = (nHash ^ static_cast<uint32>(*pByte)) * 16777619;
    return nHash;
}

// The hash of a key that is its bytes.
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

// The policy of a map that names none.
template <class K, class V>
struct TDefaultHashMapPolicy : kx::detail::TDefaultHashPolicy<K>
{
};

// The policy of a set that names none.
template <class K>
struct TDefaultHashSetPolicy : kx::detail::TDefaultHashPolicy<K>
{
};
