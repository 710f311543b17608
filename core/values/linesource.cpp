#include "core/values/linesource.h"

#include "core/platform/file.h"

#include <cerrno>
#if __has_include(<unistd.h>)
#include <unistd.h>
#else
#include <io.h>
#endif

int ReadLineFile(uint64 nFile, char* pTarget, uint32 nSize)
{
    // std::fread would wait for nSize bytes, and std::fgets does not tell a NUL in the line from its end.
    kx::detail::ZFileLock file(reinterpret_cast<std::FILE*>(nFile));
    uint32 nRead = 0;
    int nByte = 0;
    while (nRead != nSize && nByte != '\n' && (nByte = file.GetByte()) != EOF)
        pTarget[nRead++] = static_cast<char>(nByte);
    return static_cast<int>(nRead);
}

int ReadLineDescriptor(uint64 nDescriptor, char* pTarget, uint32 nSize)
{
    int nRead = 0;
    do
        nRead = static_cast<int>(read(static_cast<int>(nDescriptor), pTarget, nSize));
    while (nRead < 0 && errno == EINTR);
    return nRead;
}

int ReadLineText(uint64 nText, char* pTarget, uint32 nSize)
{
    std::string_view& rest = *reinterpret_cast<std::string_view*>(nText);
    const std::size_t nRead = rest.copy(pTarget, nSize);
    rest.remove_prefix(nRead);
    return static_cast<int>(nRead);
}
