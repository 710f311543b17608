// demangle: the readable declaration of a decorated linker symbol.
//
//   "?doTheBar@Beta@Alpha@@QBEHHM@Z"    verbose    int __thiscall public: Alpha::Beta::doTheBar(int, float) const
//                                       plain      int Alpha::Beta::doTheBar(int, float) const
//
// It reads functions, thunks, variables, operators, templates, string literals, and the tables of virtual functions and
// of run-time types, in the 32-bit and the 64-bit form. It does not read types of managed code, based pointers,
// floating-point template arguments, and names that their compiler had to replace by a hash.
//
// What compilers and linkers append to a part or a copy of a function is in brackets: "void f(void) [.cold]". String
// literals do not tell char16_t and char32_t from char, so these two are guessed from the bytes.
//
// The result is for people and cannot be compiled. The calling convention and the access follow the return type. A
// return type that is a pointer to a function is written in one piece. What has no name is in quotes, as in
// "Alpha::'vftable'". Private members read "privat: ", a spelling that is kept for users who compare results.
#pragma once

#include "core/strings/stack_string.h"

#include <span>
#include <string_view>

/// What demangle writes, and what it may use.
struct SDemangleOptions
{
    /// With calling conventions, access and the keywords class, struct and union.
    bool m_bVerbose = false;

    /// Numbers the names as the encoders of today do, which begin new tables for each template. So symbols with
    /// templates name the right entities.
    ///
    /// The default form has one table of names for the whole symbol. There, names after a template can be others than
    /// the encoder meant: the last parameter of "?f@@YAXV?$A@D@N@@V12@@Z" is the class N::A<char>, and reads N::A.
    bool m_bModern = false;

    /// The bytes of stack that the modern form may take, beside the 33 KB that it takes if m_memory is empty.
    ///
    /// They limit how deep the symbol may nest. A level takes up to 600 bytes, or 1.2 KB without optimisation; 4 KB are
    /// reserved. The default form is limited to 128 levels instead.
    uint32 m_nStack = 96 * 1024;

    /// The memory for the result and for the pieces that are stashed for it. If it is empty, there are 32 KB on the
    /// stack.
    std::span<char> m_memory = {};
};

/// What became of a symbol.
enum class EDemangled : uint8
{
    kRead,
    kNotASymbol, ///< It is damaged, or the name of a C function or variable, or has a form that is not read.
    kCut,        ///< It was read, but the buffer has only the first characters.
    kTooLarge,   ///< It needs more stack or memory than the options have.
};

struct SDemangled
{
    EDemangled m_result;
    uint64 m_nLength; ///< of the complete declaration, without the terminator; 0 if it was not read
};

/// Appends the readable declaration of the symbol to out.
///
/// The verbose form names calling conventions, access and the keywords class, struct and union; the plain form omits
/// them.
///
/// A string that does not begin with "?" is the name of a C function or variable. It loses one leading "_", if there is
/// one, and is otherwise appended unchanged.
///
/// A symbol that cannot be read is appended unchanged and whole. Such a symbol is damaged; or it has a form that is not
/// read (see above); or it nests types, templates and scopes more than 128 deep; or its result and the pieces that are
/// stashed for it exceed 32 KB. The options give the modern form other limits. So out receives the complete result or
/// the symbol, never a part.
///
/// Names are sequences of any bytes but '@'. Bytes above 0x7F are copied unchanged, and so is NUL, which only a
/// std::string_view can contain. A null string is the empty string and appends nothing. The symbol may be in out.
///
/// If the result does not fit in out, it is cut by the rule of append: the old characters make space, and the first
/// characters of the result stay.
///
/// No allocation. A symbol is read in one pass without backtracking; only the modern form reads the scopes of up to
/// eight templates of variables twice. The time is linear in the length of the symbol and of the result, times at most
/// the depth. The call takes 33 KB of stack, of which a common symbol touches about 4 KB. The deepest symbols that are
/// read take up to 110 KB in all, or 190 KB if the library is compiled without optimisation.
KX_API void demangle(ZStackStringBase& out, const char* mangled, bool verbose);
KX_API void demangle(ZStackStringBase& out, std::string_view mangled, bool verbose);
KX_API void demangle(ZStackStringBase& out, std::string_view mangled, const SDemangleOptions& options);

/// Writes the readable declaration into a buffer, NUL-terminated, and says whether that worked.
///
/// Writes the empty string for what is not a symbol or not read. Writes nothing if the buffer has no bytes. The symbol
/// and the memory of the options may be in the buffer, but the symbol may not be in that memory.
[[nodiscard]] KX_API SDemangled demangle(std::span<char> out, std::string_view mangled,
                                         const SDemangleOptions& options = {});
