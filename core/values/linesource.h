// Ready-made sources for ZLineReader: a file, a descriptor, and characters in memory.
//
//   char acBuffer[4096];
//   ZLineReader reader(&ReadLineFile, LineSource(pFile), acBuffer, sizeof(acBuffer));
//
// The function and the kind of LineSource belong together.
#pragma once

#include "core/values/linereader.h"

#include <cstdio>
#include <string_view>

/// Reads from a `std::FILE*`, up to the end of a line, so that a line that was typed is returned at once.
///
/// An error ends the data like the end of the file; `std::ferror` tells them apart.
KX_API int ReadLineFile(uint64 nFile, char* pTarget, uint32 nSize);

/// Reads from a descriptor of the system what is there, which is the fastest way for a large file. An error ends the
/// data. A call that a signal interrupts is repeated.
KX_API int ReadLineDescriptor(uint64 nDescriptor, char* pTarget, uint32 nSize);

/// Reads from the std::string_view at the address, and moves its start past what was read.
KX_API int ReadLineText(uint64 nText, char* pTarget, uint32 nSize);

/// Returns the value that the constructor of ZLineReader takes for the function of that kind. The caller keeps the
/// file, descriptor or std::string_view open or alive as long as the reader is used.
inline uint64 LineSource(std::FILE* pFile)
{
    return kx::detail::AddressOf(pFile);
}
inline uint64 LineSource(int nDescriptor)
{
    return static_cast<uint64>(nDescriptor);
}
inline uint64 LineSource(std::string_view* pText)
{
    return kx::detail::AddressOf(pText);
}
