// Look-ups in keyed containers by arguments that are not of the key's class, without making a key.
//
// A container of ZString is searched by a std::string_view, by a std::string and by a C string. An ordered container is
// searched by everything that operator< compares with its keys in both directions, which must agree with the order of
// the keys. A hash container is searched by what its policy hashes and compares if the policy has a member type
// IsTransparent; see hashpolicy.h. An argument that converts to the key is converted.
#pragma once

#include "core/platform/platform.h"

#include <compare>
#include <type_traits>

class ZString;

namespace kx::detail
{
// A std::basic_string or std::basic_string_view of char, without the cost of their headers.
template <class K>
concept CStandardString = requires(const K& key, typename K::traits_type* pTraits, const char* pChars)
{
    pTraits->eq(*key.data(), *pChars);
    pChars = key.data();
    key.size();
};

// Characters by which a container of ZString is searched.
template <class TText, class K>
concept CTextFor =
    std::is_same_v<K, ZString> &&(CStandardString<TText> || std::is_convertible_v<const TText&, const char*>);

// Whether the argument becomes a key by itself, in any way in which it can be passed.
template <class TOther, class K>
concept CConvertsTo = std::is_convertible_v<TOther, const K&> || std::is_convertible_v<
    TOther&, const K&> || std::is_convertible_v<const TOther&, const K&>;

// Whether the arguments of an Emplace are one that becomes the element by itself.
template <class T, class... TArgs>
concept COneThatConverts = sizeof...(TArgs) == 1 && (CConvertsTo<TArgs, T> && ...);

template <class TOther, class K>
concept CComparesWith = !CConvertsTo<TOther, K> && (CTextFor<TOther, K> || requires(const K& key, const TOther& other) {
    static_cast<bool>(key < other);
    static_cast<bool>(other < key);
});

template <class TOther, class K, class TPolicy>
concept CHashesAs = !CConvertsTo<TOther, K> && requires(const K& key, const TOther& other)
{
    typename TPolicy::IsTransparent;
    uint32{TPolicy::Hash(other)};
    static_cast<bool>(TPolicy::Equals(key, other));
};

template <class K, class TPolicy, class... TArgs>
concept COneThatHashes = sizeof...(TArgs) == 1 && (CHashesAs<std::remove_cvref_t<TArgs>, K, TPolicy> && ...);

/// The characters of an argument that satisfies CTextFor, compared with a ZString as ZStrings are. Null is empty.
/// Calls std::strlen and std::memcmp by the compilers' names, which cost no header.
class ZLookUpText
{
public:
    template <class TText>
    explicit ZLookUpText(const TText& text)
    {
        if constexpr (CStandardString<TText>)
        {
            m_nLength = text.size();
            if (m_nLength != 0)
                m_pChars = text.data(); // of an empty view it may be null
        }
        else if (const char* pszText = text; pszText != nullptr)
        {
            m_pChars = pszText;
            m_nLength = __builtin_strlen(pszText);
        }
    }

    [[nodiscard]] const char* Chars() const { return m_pChars; }
    [[nodiscard]] uint64 Length() const { return m_nLength; }

    template <class K>
    [[nodiscard]] bool operator==(const K& key) const
    {
        return m_nLength == LengthOf(key) && __builtin_memcmp(m_pChars, key.ToCString(), m_nLength) == 0;
    }

    template <class K>
    [[nodiscard]] friend bool operator<(const K& key, const ZLookUpText& text)
    {
        return text.Compare(key) > 0;
    }
    template <class K>
    [[nodiscard]] bool operator<(const K& key) const
    {
        return Compare(key) < 0;
    }

    /// Returns a number that is negative, zero or positive, as this is less than, equal to or greater than the key.
    template <class K>
    [[nodiscard]] int Compare(const K& key) const
    {
        const uint64 nKeyLength = LengthOf(key);
        const int nOrder = __builtin_memcmp(m_pChars, key.ToCString(), m_nLength < nKeyLength ? m_nLength : nKeyLength);
        if (nOrder != 0)
            return nOrder;
        return m_nLength < nKeyLength ? -1 : m_nLength > nKeyLength;
    }

private:
    template <class K>
    static uint64 LengthOf(const K& key)
    {
        return static_cast<uint64>(key.Length());
    }

    const char* m_pChars = "";
    uint64 m_nLength = 0;
};

/// Whether a key and what it is looked up by are both strings, so that one comparison tells less, equal and greater.
template <class K, class TOther>
constexpr bool kComparesOnce =
    std::is_same_v<K, ZString> && (std::is_same_v<TOther, ZString> || std::is_same_v<TOther, ZLookUpText>);

/// Returns the order of the key and the other string.
template <class K, class TOther>
auto CompareOnce(const K& key, const TOther& other)
{
    if constexpr (std::is_same_v<TOther, ZLookUpText>)
        return 0 <=> other.Compare(key);
    else
        return key <=> other;
}

/// Returns what an ordered look-up compares with the keys: the argument, or its characters, which are counted once.
template <class K, class TOther>
decltype(auto) LookUpKey(const TOther& other)
{
    if constexpr (CTextFor<TOther, K>)
        return ZLookUpText(other);
    else
        return (other);
}
} // namespace kx::detail
