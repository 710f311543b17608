// ZLineReader: splits a stream of bytes into lines, in a buffer of the caller.
//
//   m_pBuffer         m_pBegin                    m_pEnd       m_pLimit
//      |                 |                           |             |
//      v                 v                           v             v
//      +-----------------+---------------------------+-------------+---+
//      | handed out      | t e x t \r \n t e x t     | free        |   |      nBufferSize bytes
//      +-----------------+---------------------------+-------------+---+
//
//   A line ends at LF ("\n") or CR LF ("\r\n"). It is returned in place, and a NUL overwrites its line end. So nothing
//   is allocated and no character is copied. Only the incomplete line that is left at the end of the buffer moves to
//   the front. The last byte is reserved for the terminator of a piece that fills the rest.
//
// A line that does not fit together with its line end comes in pieces of nBufferSize - 1 characters, which share its
// number. Two consequences:
//
// - A line of exactly nBufferSize - 1 characters is followed by an empty piece, because its end was not yet read when
//   it was cut.
// - A piece never ends between CR and LF. A CR in the last byte of a full buffer may be half of a line end, so it is
//   held back: the piece is one character shorter, and the CR begins the next piece or ends the line.
//
// Every byte is data: any other CR, bytes of 0x80 and more, and NUL. A NUL counts as a character, although the piece as
// a C string ends there. There is one exception: a single NUL that is all there is at the end of the data is not a
// line, but the terminator of a string that was passed with it. Characters after the last line end are the last line.
#pragma once

#include "core/platform/platform.h"

/// Splits a stream of bytes into lines; see the head of this file.
class KX_VISIBLE ZLineReader
{
public:
    /// The source of the data: writes up to nSize bytes to pTarget and returns their number.
    ///
    /// Fewer than nSize bytes do not mean the end. 0 or less ends the data for good, and the function is not called
    /// again. More than nSize triggers the debug break; if execution resumes, it counts as nSize. nUser is the value
    /// that the constructor received, wide enough for a pointer. nSize is from 1 to 2^31 - 1. core/values/linesource.h
    /// has such functions for files and for characters in memory.
    using ReadFunction = int (*)(uint64 nUser, char* pTarget, uint32 nSize);

    /// Reads nothing yet.
    ///
    /// The buffer must outlive the reader and belongs to it alone. The longest piece has nBufferSize - 1 characters.
    ///
    /// Fewer than 3 bytes have no space for a piece and a CR that is held back. They trigger the debug break, and so
    /// does a null function or buffer. If execution resumes, the reader is at the end of its data.
    KX_API ZLineReader(ReadFunction pRead, uint64 nUser, char* pBuffer KX_LIFETIMEBOUND, uint32 nBufferSize);

    ZLineReader(const ZLineReader&) = delete;
    ZLineReader& operator=(const ZLineReader&) = delete;

    /// Yields the next line, or the next piece of one, and returns its line number, counted from 1.
    ///
    /// *ppLine points to its characters, NUL-terminated in the buffer and valid until the next call. *pLength is their
    /// number. At the end of the data, this and every later call returns 0 and stores null and 0.
    ///
    /// Calls the source only if the buffer has no line end, and stops as soon as it has one. So a line that was typed
    /// does not wait for the next one. How the source splits the data does not affect the lines.
    ///
    /// Linear in the bytes read. Line numbers stop at 2^31 - 1.
    KX_API int GetNextLine(char** ppLine, uint32* pLength);

private:
    KX_API char* FindNewline(char* pFrom) const;
    KX_API char* Fill();

    ReadFunction m_pRead;
    uint64 m_nUser;
    char* m_pBuffer;
    char* m_pBegin; // [m_pBegin, m_pEnd) was read but not yet returned
    char* m_pEnd;
    char* m_pLimit;
    int m_nLine = 1;
    bool m_bHeldBack = false; // *m_pBegin is a "\r" that a terminator has overwritten
    bool m_bEnded = false;    // the source has no more data
};
