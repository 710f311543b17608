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

#include <string_view>

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
/// stashed for it exceed 32 KB. So out receives the complete result or the symbol, never a part.
///
/// Names are sequences of any bytes but '@'. Bytes above 0x7F are copied unchanged, and so is NUL, which only a
/// std::string_view can contain. A null string is the empty string and appends nothing. The symbol may be in out.
///
/// If the result does not fit in out, it is cut by the rule of append: the old characters make space, and the first
/// characters of the result stay.
///
/// No allocation. A symbol is read in one pass without backtracking. The time is linear in the length of the symbol and
/// of the result, times at most the depth. The call takes 33 KB of stack, of which a common symbol touches about 4 KB.
/// The deepest symbols that are read take up to 110 KB in all, or 190 KB if the library is compiled without
/// optimisation.
KX_API void demangle(ZStackStringBase& out, const char* mangled, bool verbose);
KX_API void demangle(ZStackStringBase& out, std::string_view mangled, bool verbose);
