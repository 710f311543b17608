// ZRuntimeResourceID: the 64-bit name of a resource at run time.
#pragma once

#include "core/containers/hashbytes.h"
#include "core/platform/platform.h"

/// Marks the public interface of the module runtime.resource.
#if defined(KX_STATIC)
#define KX_RESOURCE_API
#elif defined(KX_RESOURCE_EXPORTS)
#define KX_RESOURCE_API KX_EXPORT
#else
#define KX_RESOURCE_API KX_IMPORT
#endif

/// The identity of a resource: a value of two 32-bit words, the high half first.
///
/// All bits set is the identity of no resource.
class KX_VISIBLE ZRuntimeResourceID
{
public:
    /// The identity of no resource.
    constexpr ZRuntimeResourceID() = default;

    /// Returns the identity with this number.
    KX_RESOURCE_API static ZRuntimeResourceID Create(uint64 nNumber);

    /// The number from which Create would make this identity.
    constexpr uint64 GetNumber() const { return uint64{m_nHigh} << 32 | m_nLow; }

    KX_RESOURCE_API bool operator==(const ZRuntimeResourceID& other) const;

private:
    uint32 m_nHigh = UINT32_MAX;
    uint32 m_nLow = UINT32_MAX;
};

static_assert(sizeof(ZRuntimeResourceID) == 8 && alignof(ZRuntimeResourceID) == 4, "two 32-bit words");

/// The hash of the hash containers, that of the 8 bytes.
inline uint32 HashKey(const ZRuntimeResourceID& id)
{
    return HashBytes(&id, sizeof(id));
}
