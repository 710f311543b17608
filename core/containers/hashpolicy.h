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

#include "core/containers/hashbytes.h"

#include <type_traits>

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
