// JSON in and out of dynamic objects.
//
//   ZDynamicObject settings;
//   json::SError error;
//   if (!json::Read(text, settings, &error))
//       Report(error.ToString());
//   settings.TrySetPath("window.width", 1920);
//   ZString result;
//   json::Write(settings, result, nullptr, {.m_nIndent = 2});
//
// - What is read is JSON as RFC 8259 has it, in UTF-8; a byte order mark at the start is skipped. Strings are stored as
//   UTF-8, and "\u0000" is a character like any other.
// - Numbers become float64, rounded to the nearest. A number beyond the range of float64 is an error.
// - Properties keep the order of the text. If a key is repeated, the last value wins, at the place of the first, as by
//   ZDynamicObject::Set.
// - Neither reading nor writing recurses, so text and tree may be nested to any depth.
// - Nothing is written to the result unless the whole operation succeeds. A callback or stream has received what was
//   written before the error.
//
// The functions may be called by any number of threads at the same time. The trees follow the rules of variants
// (core/dynamic/variant.h).
#pragma once

#include "core/dynamic/dynamicobject.h"

#include <concepts>
#include <iosfwd>
#include <string_view>
#include <type_traits>

/// Marks the public interface of the module runtime.json.
#if defined(KX_STATIC)
#define KX_JSON_API
#elif defined(KX_JSON_EXPORTS)
#define KX_JSON_API KX_EXPORT
#else
#define KX_JSON_API KX_IMPORT
#endif

namespace json
{
/// What is wrong, and where.
struct SError
{
    /// "line 2, column 12: A value is expected here."
    KX_JSON_API ZString ToString() const;

    const char* m_pszMessage = ""; ///< One sentence; it lives as long as the program.
    uint64 m_nOffset = 0; ///< Reading: of the byte from the start of the text. Like the next two, 0 on writing.
    uint64 m_nLine = 0;   ///< Counted from 1.
    uint64 m_nColumn = 0; ///< Counted from 1, in characters.
};

struct SReadOptions
{
    bool m_bComments = false;        ///< Accepts // and /* */ where white space may be.
    bool m_bTrailingCommas = false;  ///< Accepts a comma after the last element or property.
    bool m_bUniqueKeys = false;      ///< Refuses a key that is repeated in its object.
    bool m_bExactIntegers = false;   ///< Refuses an integer that a float64 cannot hold, instead of rounding it.
    uint32 m_nMaxDepth = UINT32_MAX; ///< How many arrays and objects may be inside each other.
};

/// How far ReadLines has come.
struct SProgress
{
    uint64 m_nValues = 0; ///< With the one that the function is called for.
    uint64 m_nBytes = 0;  ///< Of the whole text, up to the end of the line of that value. Reading can go on from there.
};

struct SWriteOptions
{
    /// Turns a value of a type that JSON has not into a string, number, bool or null; false if it cannot. Convert is
    /// one.
    using Converter = bool (*)(const ZVariant& value, ZDynamicObject& result);

    uint32 m_nIndent = 0;             ///< The spaces of each level; 0 writes everything in one line.
    bool m_bNullForNaN = false;       ///< Writes NaN and the infinities as null, instead of refusing them.
    bool m_bReplaceBadText = false;   ///< Writes U+FFFD for each byte that is not UTF-8, instead of refusing it.
    Converter m_pfnConvert = nullptr; ///< If null, such a value is refused.
};

/// A converter for values of the types T, which TDynamicValue stores as something that JSON has: &Convert<Version>.
template <DynamicValue... T>
bool Convert(const ZVariant& value, ZDynamicObject& result)
{
    const auto isStored = [&]<class TOne>(const TOne*)
    {
        const bool bThis = ZObjectRef::CanConvert(value.Type(), GetTypeID<TOne>());
        if (bThis)
            result = ZDynamicObject(*static_cast<const TOne*>(value.Data()));
        return bThis;
    };
    return (isStored(static_cast<const T*>(nullptr)) || ...);
}

/// Reads one JSON value. On an error returns false, fills in *pError if there is one, and leaves result untouched.
///
/// The text must be shorter than 4 GB. While it is read, that takes up to fifteen times its size in memory, besides the
/// tree: a text of numbers of one digit needs most.
KX_JSON_API bool Read(std::string_view text, ZDynamicObject& result, SError* pError = nullptr,
                      const SReadOptions& options = {});

/// Writes the tree. On an error returns false, fills in *pError if there is one, and leaves result untouched.
///
/// A number is the shortest text that reads back as the same value, and an integer has no fraction. Refused are, unless
/// an option says otherwise: NaN and infinities, strings and keys that are no UTF-8, values of types that JSON has not.
KX_JSON_API bool Write(const ZDynamicObject& tree, ZString& result, SError* pError = nullptr,
                       const SWriteOptions& options = {});

/// Writes the tree to a stream, in pieces.
KX_JSON_API bool Write(const ZDynamicObject& tree, std::ostream& stream, SError* pError = nullptr,
                       const SWriteOptions& options = {});
/// The part of a tree that a JSON Pointer (RFC 6901) leads to, null if it leads nowhere or is none.
///
/// "" is the tree itself, "/hold/0" the first element of the property "hold". In a step "~1" is "/" and "~0" is "~", so
/// every key can be reached, also one with a dot.
KX_JSON_API const ZDynamicObject* Find(const ZDynamicObject& tree, std::string_view pointer);
inline ZDynamicObject* Find(ZDynamicObject& tree, std::string_view pointer)
{
    return const_cast<ZDynamicObject*>(Find(std::as_const(tree), pointer));
}

/// Applies a merge patch (RFC 7396): properties of the patch replace those of the target, null removes one, and objects
/// are merged property by property. Any other patch replaces the target.
KX_JSON_API void MergePatch(ZDynamicObject& target, const ZDynamicObject& patch);
} // namespace json

/// Writes the tree as JSON for people to read: NaN is null, and U+FFFD replaces what is not UTF-8. A template, so that
/// it does not write whatever a tree can be made of.
template <std::same_as<ZDynamicObject> T>
std::ostream& operator<<(std::ostream& stream, const T& tree)
{
    json::Write(tree, stream, nullptr, {.m_nIndent = 2, .m_bNullForNaN = true, .m_bReplaceBadText = true});
    return stream;
}

namespace kx::detail
{
template <class TSignature>
class TCallback;

/// Refers to the caller's function while a call lasts.
template <class TResult, class... TArgs>
class TCallback<TResult(TArgs...)>
{
public:
    template <class TFunction>
    TCallback(TFunction& function) requires(!std::is_same_v<std::remove_const_t<TFunction>, TCallback>)
        : m_pFunction(const_cast<void*>(static_cast<const void*>(detail::PointerTo(function)))),
          m_pfnCall([](void* pFunction, TArgs... args) -> TResult
                    { return (*static_cast<TFunction*>(pFunction))(args...); })
    {
    }

    TResult operator()(TArgs... args) const { return m_pfnCall(m_pFunction, args...); }

private:
    void* m_pFunction;
    TResult (*m_pfnCall)(void* pFunction, TArgs... args);
};

KX_JSON_API bool ReadJsonLines(TCallback<uint64(char*, uint64)> source,
                               TCallback<bool(ZDynamicObject&, const json::SProgress&)> onValue, json::SError* pError,
                               const json::SReadOptions& options);
KX_JSON_API bool WriteJson(const ZDynamicObject& tree, TCallback<bool(std::string_view)> onPiece, json::SError* pError,
                           const json::SWriteOptions& options);
} // namespace kx::detail

namespace json
{
/// Reads a text that has one JSON value in each line, and calls bool onValue(ZDynamicObject&, const SProgress&) for
/// each of them. The value is the function's to keep. Blank lines are skipped. One line at a time is in memory, so the
/// whole may be larger than memory.
///
/// The text comes from uint64 source(char* pBuffer, uint64 nSize), which fills in the next bytes and returns their
/// number, 0 at the end. If onValue returns false, reading ends and the result is false. A wrong line ends it, too; the
/// values of the lines before it have been handed over. The error is placed in the whole text.
template <class TSource, class TFunction>
bool ReadLines(TSource&& source, TFunction&& onValue, SError* pError = nullptr,
               const SReadOptions& options = {}) requires std::is_invocable_r_v<uint64, TSource&, char*, uint64>
{
    return kx::detail::ReadJsonLines(source, onValue, pError, options);
}

/// Reads a text that is in memory, or mapped to it.
template <class TFunction>
bool ReadLines(std::string_view text, TFunction&& onValue, SError* pError = nullptr, const SReadOptions& options = {})
{
    const auto source = [&](char* pBuffer, uint64 nSize)
    {
        const uint64 nCopied = text.copy(pBuffer, nSize);
        text.remove_prefix(nCopied);
        return nCopied;
    };
    return ReadLines(source, onValue, pError, options);
}

/// Writes the tree to bool onPiece(std::string_view), in pieces of a few kilobytes. If the function returns false,
/// writing ends and the result is false.
template <class TFunction>
bool Write(const ZDynamicObject& tree, TFunction&& onPiece, SError* pError = nullptr,
           const SWriteOptions& options = {}) requires std::is_invocable_r_v<bool, TFunction&, std::string_view>
{
    return kx::detail::WriteJson(tree, onPiece, pError, options);
}
} // namespace json
