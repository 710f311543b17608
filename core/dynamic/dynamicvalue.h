// TDynamicValue<T>: how values of a type are stored in a dynamic object, recognised and read back.
#pragma once

#include "core/dynamic/variant.h"
#include "core/values/guid.h"

#include <cmath>
#include <concepts>

/// Specialised for each storable type. A type of your own specialises this beside its definition, as
/// runtime/resource/dynamicresourceid.h does:
///
///   static ZVariant Store(const T& value);          what is held for the value
///   static bool Is(const ZVariant& held);           whether Get returns a T
///   static T Get(const ZVariant& held);             the value; triggers the debug break if there is none
///   static bool Equals(const ZVariant& held, const T& value);      optional; else Is and Get and the == of T
template <class T>
struct TDynamicValue;

/// The types that have it: all integers and floating-point numbers but long double, bool, ZString, ZGuid, and those
/// added beside it. Not char or a pointer: say which number or string is meant.
template <class T>
concept DynamicValue = requires
{
    &TDynamicValue<T>::Store;
};

namespace kx::detail
{
/// Converts a number by truncation towards zero. A number outside the range of the result, or NaN, becomes the lowest
/// value of the type, as the processors' own conversion has it, but on every processor.
inline int32 TruncateTo32(float64 fNumber)
{
    return std::fabs(fNumber) < 2147483648.0 ? static_cast<int32>(fNumber) : INT32_MIN;
}
inline int64 TruncateTo64(float64 fNumber)
{
    return std::fabs(fNumber) < 9223372036854775808.0 ? static_cast<int64>(fNumber) : INT64_MIN;
}

/// int8, int16 and int32 are converted through 32 bits and the unsigned types and int64 through 64; then the low bits
/// of the type are taken: 300 read as uint8 is 44, 2^32 - 1 read as int32 is -2^31.
template <class T>
T TruncateTo(float64 fNumber)
{
    if constexpr (std::is_floating_point_v<T>)
        return static_cast<T>(fNumber);
    else if constexpr (std::is_same_v<T, uint64>)
    {
        // The second half of the range is above that of int64; a negative number wraps.
        const bool bSecondHalf = fNumber >= 9223372036854775808.0 && fNumber < 18446744073709551616.0;
        return bSecondHalf ? static_cast<uint64>(fNumber) : static_cast<uint64>(TruncateTo64(fNumber));
    }
    else if constexpr (std::is_unsigned_v<T> || sizeof(T) == 8)
        return static_cast<T>(TruncateTo64(fNumber));
    else
        return static_cast<T>(TruncateTo32(fNumber));
}

/// Any number is stored as float64.
template <class T>
struct TDynamicNumber
{
    static ZVariant Store(T value) { return ZVariant(static_cast<float64>(value)); }
    KX_LOCAL static bool Is(const ZVariant& held)
    {
        return held.Type() == GetTypeID<float64>() || ZObjectRef::CanConvert(held.Type(), GetTypeID<T>());
    }
    KX_LOCAL static T Get(const ZVariant& held)
    {
        if (held.Type() == GetTypeID<float64>())
            return TruncateTo<T>(*static_cast<const float64*>(held.Data()));
        return held.As<T>();
    }
    KX_LOCAL static bool Equals(const ZVariant& held, T value)
    {
        if (held.Type() == GetTypeID<float64>())
            return *static_cast<const float64*>(held.Data()) == static_cast<float64>(value);
        return detail::EqualValues(held, ZVariantRef(value));
    }
};

/// Stored as it is.
template <class T>
struct TDynamicPlain
{
    static ZVariant Store(const T& value) { return ZVariant(value); }
    KX_LOCAL static bool Is(const ZVariant& held) { return ZObjectRef::CanConvert(held.Type(), GetTypeID<T>()); }

    /// Checks the type itself before As does, so a program that resumes after the debug break meets it twice.
    KX_LOCAL static T Get(const ZVariant& held)
    {
        detail::BreakUnless(Is(held));
        return held.As<T>();
    }
    KX_LOCAL static bool Equals(const ZVariant& held, const T& value)
    {
        return detail::EqualValues(held, ZVariantRef(value));
    }
};
} // namespace kx::detail

// clang-format off
template <> struct TDynamicValue<int8> : kx::detail::TDynamicNumber<int8> {};
template <> struct TDynamicValue<int16> : kx::detail::TDynamicNumber<int16> {};
template <> struct TDynamicValue<int32> : kx::detail::TDynamicNumber<int32> {};
template <> struct TDynamicValue<int64> : kx::detail::TDynamicNumber<int64> {};
template <> struct TDynamicValue<uint8> : kx::detail::TDynamicNumber<uint8> {};
template <> struct TDynamicValue<uint16> : kx::detail::TDynamicNumber<uint16> {};
template <> struct TDynamicValue<uint32> : kx::detail::TDynamicNumber<uint32> {};
template <> struct TDynamicValue<uint64> : kx::detail::TDynamicNumber<uint64> {};
template <> struct TDynamicValue<float32> : kx::detail::TDynamicNumber<float32> {};
template <> struct TDynamicValue<float64> : kx::detail::TDynamicNumber<float64> {};
template <> struct TDynamicValue<bool> : kx::detail::TDynamicPlain<bool> {};
template <> struct TDynamicValue<ZString> : kx::detail::TDynamicPlain<ZString> {};
// clang-format on

namespace kx::detail
{
/// An integer type that none of the fixed-width names means: long long or long, which depends on the system.
template <class T>
concept CUnnamedInt =
    kIsOneOf<T, long, unsigned long, long long, unsigned long long> && !kIsOneOf<T, int32, uint32, int64, uint64>;
} // namespace kx::detail

/// Such an integer is the fixed-width one of its size and sign.
template <kx::detail::CUnnamedInt T>
struct TDynamicValue<T>
{
    using Signed = std::conditional_t<sizeof(T) == 8, int64, int32>;
    using Named = std::conditional_t<std::is_signed_v<T>, Signed, std::make_unsigned_t<Signed>>;

    static ZVariant Store(T value) { return TDynamicValue<Named>::Store(static_cast<Named>(value)); }
    static bool Is(const ZVariant& held) { return TDynamicValue<Named>::Is(held); }
    static T Get(const ZVariant& held) { return static_cast<T>(TDynamicValue<Named>::Get(held)); }
    static bool Equals(const ZVariant& held, T value)
    {
        return TDynamicValue<Named>::Equals(held, static_cast<Named>(value));
    }
};

/// A ZGuid is stored as its text.
template <>
struct TDynamicValue<ZGuid>
{
    static ZVariant Store(const ZGuid& guid) { return ZVariant(guid.ToString()); }
    static bool Is(const ZVariant& held)
    {
        ZGuid guid;
        return TDynamicValue<ZString>::Is(held) && guid.FromString(*static_cast<const ZString*>(held.Data()));
    }
    static ZGuid Get(const ZVariant& held)
    {
        ZGuid guid;
        guid.FromString(TDynamicValue<ZString>::Get(held));
        return guid;
    }
};
