// demangle: the readable declaration that a decorated linker symbol stands for.
//
//   "?doTheBar@Beta@Alpha@@QBEHHM@Z"    verbose    int __thiscall public: Alpha::Beta::doTheBar(int, float) const
//                                       plain      int Alpha::Beta::doTheBar(int, float) const
//
// Read are functions, thunks, variables, operators, templates, string literals and the tables of virtual functions and
// of run-time types, in the 32-bit form and in the 64-bit one. Not read are the types of managed code, based pointers,
// floating template arguments, and names that their compiler had to replace by a hash.
//
// The text is meant for people and cannot be compiled: the calling convention and the access stand behind the return
// type, a return type that is a pointer to a function is written in one piece, and what has no name is put in quotes,
// as in "Alpha::'vftable'". Private members read "privat: ", a spelling that is kept for whoever compares texts.
#pragma once

#include "core/strings/stack_string.h"

#include <string_view>

// Appends the readable text of the symbol to out. A verbose text names calling conventions, access and the keywords
// class, struct and union; the other one leaves them away.
//
// A text that does not begin with "?" is the name of a C function or variable: it loses one "_" in front, if there is
// one, and is otherwise appended as it is.
//
// A symbol that cannot be read is appended as it is, whole: one that is damaged, or in a form that is not read (see
// above), or nests types, templates and scopes more than 128 deep, or whose text, with the pieces that are kept while
// it is put together, outgrows 32 KB. So what out gets is the text of the complete symbol or the symbol, never a piece.
//
// Names are sequences of any bytes but "@"; those above 0x7F are copied as they are. So is NUL, which only the second
// form can hold. A null text is the empty one, and appends nothing. The symbol may lie in out.
//
// What does not fit in out is cut by the rule of append: the first characters of the new text stay, and the old text
// makes room.
//
// No allocation. A symbol is read in one pass without going back, in time linear in its length and the length of the
// text, times the depth at most. Takes 33 KB of stack, of which a common symbol touches some 4 KB, and up to 70 KB more
// for symbols that are nested as deep as is read.
KX_API void demangle(ZStackStringBase& out, const char* mangled, bool verbose);
KX_API void demangle(ZStackStringBase& out, std::string_view mangled, bool verbose);
