// ZTextPieces and TrimSpace: parts of a string as views, without a copy.
//
//   for (const std::string_view piece : ZTextPieces("red; green;; blue", ';'))
//       Use(TrimSpace(piece));                       // "red", "green", "", "blue"
//
// Both take any kind of string as a std::string_view. The views that they return are valid as long as its characters.
#pragma once

#include "core/strings/text.h"

#include <cstddef>
#include <string_view>

/// Returns the string without the white space at its start, at its end, or at both.
///
/// White space is the blank and the characters from tab to carriage return.
[[nodiscard]] constexpr std::string_view TrimSpaceAtStart(std::string_view text KX_LIFETIMEBOUND)
{
    while (!text.empty() && kx::detail::IsSpace(text.front()))
        text.remove_prefix(1);
    return text;
}
[[nodiscard]] constexpr std::string_view TrimSpaceAtEnd(std::string_view text KX_LIFETIMEBOUND)
{
    while (!text.empty() && kx::detail::IsSpace(text.back()))
        text.remove_suffix(1);
    return text;
}
[[nodiscard]] constexpr std::string_view TrimSpace(std::string_view text KX_LIFETIMEBOUND)
{
    return TrimSpaceAtEnd(TrimSpaceAtStart(text));
}

/// The pieces between the separators of a string, in order. Each step of a walk searches the next separator.
///
/// n separators make n + 1 pieces, some of which may be empty. So the empty string is one empty piece.
class ZTextPieces
{
public:
    /// Cuts nothing yet.
    constexpr ZTextPieces(std::string_view text KX_LIFETIMEBOUND, char cSeparator)
        : m_text(text), m_cSeparator(cSeparator)
    {
    }

    struct SEnd
    {
    };

    /// A position in the walk. It stays valid if the ZTextPieces is destroyed.
    class Iterator
    {
    public:
        using value_type = std::string_view;
        using difference_type = std::ptrdiff_t;

        constexpr Iterator(std::string_view text, char cSeparator) : m_rest(text), m_cSeparator(cSeparator) { Find(); }

        /// The current piece. Past the last one, an empty one.
        constexpr std::string_view operator*() const { return {m_rest.data(), m_nPiece}; }

        /// Moves to the next piece, or past the last one.
        constexpr Iterator& operator++()
        {
            m_bEnded = m_nPiece == m_rest.size();
            m_rest.remove_prefix(m_nPiece + (m_bEnded ? 0 : 1));
            Find();
            return *this;
        }
        constexpr void operator++(int) { ++*this; }

        constexpr bool operator==(SEnd) const { return m_bEnded; }

    private:
        constexpr void Find()
        {
            const char* pFound = std::char_traits<char>::find(m_rest.data(), m_rest.size(), m_cSeparator);
            m_nPiece = pFound != nullptr ? static_cast<std::size_t>(pFound - m_rest.data()) : m_rest.size();
        }

        std::string_view m_rest; // from the current piece on
        std::size_t m_nPiece = 0;
        char m_cSeparator;
        bool m_bEnded = false;
    };

    constexpr Iterator begin() const { return {m_text, m_cSeparator}; }
    constexpr SEnd end() const { return {}; }

private:
    std::string_view m_text;
    char m_cSeparator;
};
