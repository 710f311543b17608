// Inside kxbase: the codes of decorated names that mean a fixed string.
#pragma once

#include "core/platform/platform.h"

#include <array>
#include <string_view>

namespace kx::detail
{
/// The strings of the codes '0' to 'Z'.
///
/// An empty string means that there is no such code, or that it has operands and is read elsewhere.
class ZCodeTable
{
public:
    struct SCode
    {
        char m_code;
        std::string_view m_text;
    };

    template <size_t N>
    consteval ZCodeTable(const SCode (&codes)[N])
    {
        for (const SCode& code : codes)
            m_texts[static_cast<size_t>(code.m_code - kFirst)] = code.m_text;
    }

    constexpr std::string_view operator[](char code) const
    {
        const size_t nIndex = static_cast<size_t>(static_cast<unsigned char>(code)) - kFirst;
        return nIndex < m_texts.size() ? m_texts[nIndex] : std::string_view();
    }

private:
    static constexpr char kFirst = '0';

    std::array<std::string_view, 'Z' - kFirst + 1> m_texts;
};

inline constexpr ZCodeTable kTypes({
    {'C', "signed char"},
    {'D', "char"},
    {'E', "unsigned char"},
    {'F', "short"},
    {'G', "unsigned short"},
    {'H', "int"},
    {'I', "unsigned int"},
    {'J', "long"},
    {'K', "unsigned long"},
    {'M', "float"},
    {'N', "double"},
    {'O', "long double"},
    {'X', "void"},
});

/// After "_".
inline constexpr ZCodeTable kExtendedTypes({
    {'D', "__int8"},
    {'E', "unsigned __int8"},
    {'F', "__int16"},
    {'G', "unsigned __int16"},
    {'H', "__int32"},
    {'I', "unsigned __int32"},
    {'J', "__int64"},
    {'K', "unsigned __int64"},
    {'L', "__int128"},
    {'M', "unsigned __int128"},
    {'N', "bool"},
    {'P', "auto"},
    {'Q', "char8_t"},
    {'S', "char16_t"},
    {'T', "decltype(auto)"},
    {'U', "char32_t"},
    {'W', "wchar_t"},
});

/// The second code of a pair means the same for an exported function.
inline constexpr ZCodeTable kConventions({
    {'A', "__cdecl "},
    {'B', "__cdecl "},
    {'C', "__pascal "},
    {'D', "__pascal "},
    {'E', "__thiscall "},
    {'F', "__thiscall "},
    {'G', "__stdcall "},
    {'H', "__stdcall "},
    {'I', "__fastcall "},
    {'J', "__fastcall "},
    {'M', "__clrcall "},
    {'N', "__clrcall "},
    {'O', "__eabi "},
    {'P', "__eabi "},
    {'Q', "__vectorcall "},
    {'S', "__swiftcall "},
    {'W', "__swiftasynccall "},
});

/// After a "?", which a plain name does not have. The constructor and the destructor, 0 and 1, are read elsewhere. The
/// type of a conversion operator comes after the name.
inline constexpr ZCodeTable kOperators({
    {'2', "operator new"}, {'3', "operator delete"}, {'4', "operator="},   {'5', "operator>>"}, {'6', "operator<<"},
    {'7', "operator!"},    {'8', "operator=="},      {'9', "operator!="},  {'A', "operator[]"}, {'B', "operator"},
    {'C', "operator->"},   {'D', "operator*"},       {'E', "operator++"},  {'F', "operator--"}, {'G', "operator-"},
    {'H', "operator+"},    {'I', "operator&"},       {'J', "operator->*"}, {'K', "operator/"},  {'L', "operator%"},
    {'M', "operator<"},    {'N', "operator<="},      {'O', "operator>"},   {'P', "operator>="}, {'Q', "operator,"},
    {'R', "operator()"},   {'S', "operator~"},       {'T', "operator^"},   {'U', "operator|"},  {'V', "operator&&"},
    {'W', "operator||"},   {'X', "operator*="},      {'Y', "operator+="},  {'Z', "operator-="},
});

/// After "?_". What no program can name is in quotes. C, P and R are left out because they have operands.
inline constexpr ZCodeTable kSpecialOperators({
    {'0', "operator/="},
    {'1', "operator%="},
    {'2', "operator>>="},
    {'3', "operator<<="},
    {'4', "operator&="},
    {'5', "operator|="},
    {'6', "operator^="},
    {'7', "'vftable'"},
    {'8', "'vbtable'"},
    {'9', "'vcall'"},
    {'A', "'typeof'"},
    {'B', "'local static guard'"},
    {'D', "'vbase destructor'"},
    {'E', "'vector deleting destructor'"},
    {'F', "'default constructor closure'"},
    {'G', "'scalar deleting destructor'"},
    {'H', "'vector constructor iterator'"},
    {'I', "'vector destructor iterator'"},
    {'J', "'vector vbase constructor iterator'"},
    {'K', "'virtual displacement map'"},
    {'L', "'eh vector constructor iterator'"},
    {'M', "'eh vector destructor iterator'"},
    {'N', "'eh vector vbase constructor iterator'"},
    {'O', "'copy constructor closure'"},
    {'S', "'local vftable'"},
    {'T', "'local vftable constructor closure'"},
    {'U', "operator new[]"},
    {'V', "operator delete[]"},
    {'X', "'placement delete closure'"},
    {'Y', "'placement delete[] closure'"},
});

/// After "?__". Left out are E and F, the initializers and finalizers of variables, and K, the literal operators.
inline constexpr ZCodeTable kRareOperators({
    {'A', "'managed vector constructor iterator'"},
    {'B', "'managed vector destructor iterator'"},
    {'C', "'eh vector copy constructor iterator'"},
    {'D', "'eh vector vbase copy constructor iterator'"},
    {'G', "'vector copy constructor iterator'"},
    {'H', "'vector vbase copy constructor iterator'"},
    {'I', "'managed vector vbase copy constructor iterator'"},
    {'J', "'local static thread guard'"},
    {'L', "operator co_await"},
    {'M', "operator<=>"},
});

/// After "?_R". 0 and 1 are left out because they have operands.
inline constexpr ZCodeTable kRunTimeTypes({
    {'2', "'RTTI Base Class Array'"},
    {'3', "'RTTI Class Hierarchy Descriptor'"},
    {'4', "'RTTI Complete Object Locator'"},
});

/// The characters that have a one-digit code in a string literal, by digit.
inline constexpr char kLiteralCharacters[] = ",/\\:. \n\t'-";
} // namespace kx::detail
