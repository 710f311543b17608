// ZLineReader: cuts a stream of bytes into lines, in a buffer of the caller's.
//
//   m_pBuffer         m_pBegin                    m_pEnd       m_pLimit
//      |                 |                           |             |
//      v                 v                           v             v
//      +-----------------+---------------------------+-------------+---+
//      | handed out      | t e x t \r \n t e x t     | room        |   |      nBufferSize bytes
//      +-----------------+---------------------------+-------------+---+
//
//   A line ends at "\n" or "\r\n". It is handed out where it lies, its line end overwritten by a NUL, so nothing is
//   allocated and no text is copied; only what is left when the buffer has been cut up moves to its front. The last
//   byte is kept for the terminator of a piece that fills the rest.
//
// A line that does not fit with its line end comes in pieces of nBufferSize - 1 characters, which share its number. Two
// consequences:
//
// - A line of exactly nBufferSize - 1 characters is followed by an empty piece: when it was cut, its end was not in
// sight.
// - A piece never ends between "\r" and "\n". A "\r" that is the last byte of a full buffer may be half of a line end,
//   so it is held back, the piece is one character shorter, and the "\r" begins the next one or ends the line.
//
// Every byte is data: any other "\r", bytes of 0x80 and more, and a NUL, which counts as a character though the piece
// as a C string ends there. But a single NUL that is all there is at the end of the data is the terminator of a text
// that was handed over with it, and no line. Text behind the last line end is the last line.
#pragma once

#include "core/platform/platform.h"

class KX_API ZLineReader
{
public:
    // The source of the data: writes up to nSize bytes to pTarget and returns how many, fewer being no sign of the end.
    // 0 or less ends the data for good; there is no further call. More than nSize takes the debug break, and resumed
    // counts as nSize. nUser is what the constructor was given, wide enough for a pointer. nSize is from 1 to 2^31 - 1.
    using ReadFunction = int (*)(uint64 nUser, char* pTarget, uint32 nSize);

    // Reads nothing yet. The buffer must outlive the reader and belongs to it alone. The longest piece has nBufferSize
    // - 1 characters.
    //
    // Fewer than 3 bytes leave no room for a piece beside a "\r" that is held back: they take the debug break, as does
    // a null function or buffer. Resumed, the reader is at the end of its data.
    ZLineReader(ReadFunction pRead, uint64 nUser, char* pBuffer, uint32 nBufferSize);

    ZLineReader(const ZLineReader&) = delete;
    ZLineReader& operator=(const ZLineReader&) = delete;

    // The next line or piece of one: *ppLine is its text, NUL-terminated in the buffer and valid until the next call,
    // *pLength the number of its characters, and the result its line number, from 1 on. At the end of the data the
    // result is 0, as of every later call, with null and 0.
    //
    // The source is asked only when no line end is in the buffer, and not again once there is one: a line that was
    // typed is not kept waiting for the next one. What comes out does not depend on how the source portions the data.
    //
    // Linear in the bytes read. The number of a line beyond the 2^31 - 1st stays at that.
    int GetNextLine(char** ppLine, uint32* pLength);

private:
    char* FindNewline(char* pFrom) const;
    char* Fill();

    ReadFunction m_pRead;
    uint64 m_nUser;
    char* m_pBuffer;
    char* m_pBegin; // what is held: [m_pBegin, m_pEnd)
    char* m_pEnd;
    char* m_pLimit;
    int m_nLine = 1;
    bool m_bHeldBack = false; // *m_pBegin is a "\r" with a terminator in its place
    bool m_bEnded = false;    // the source has no more
};
