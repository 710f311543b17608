// Inside kxbase: reading a std::FILE* byte by byte. The file is locked once for many bytes and not for each.
#pragma once

#include <cstdio>

namespace kx::detail
{
class ZFileLock
{
public:
    explicit ZFileLock(std::FILE* pFile) : m_pFile(pFile)
    {
#if defined(_WIN32)
        _lock_file(m_pFile);
#else
        flockfile(m_pFile);
#endif
    }
    ~ZFileLock()
    {
#if defined(_WIN32)
        _unlock_file(m_pFile);
#else
        funlockfile(m_pFile);
#endif
    }
    ZFileLock(const ZFileLock&) = delete;
    ZFileLock& operator=(const ZFileLock&) = delete;

    /// Returns the next byte, or EOF.
    int GetByte()
    {
#if defined(_WIN32)
        return _getc_nolock(m_pFile);
#else
        return getc_unlocked(m_pFile);
#endif
    }

private:
    std::FILE* m_pFile;
};
} // namespace kx::detail
