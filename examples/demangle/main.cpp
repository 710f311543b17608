// Copies standard input to standard output and replaces every decorated symbol in it, for example in the messages of a
// linker or the listing of a library:
//
//   unresolved external symbol ?doTheBar@Beta@Alpha@@QBEHHM@Z
//   unresolved external symbol int Alpha::Beta::doTheBar(int, float) const
//
// Frames of stack traces and lines of nm pass through in the same way. With --modern, symbols with templates name the
// entities that the encoders of today mean.
//
// A symbol begins with "?" and extends as far as its characters can belong to one. A symbol that cannot be read stays
// as it is. Input of any length passes through the same few buffers: a long line comes in pieces, and a symbol that the
// end of a piece cuts is joined again. Every line of the output ends with "\n", and is written at once, so that a log
// can be followed.
#include "core/values/demangle.h"
#include "core/values/linereader.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <getopt.h>
#include <string_view>
#include <unistd.h>

namespace
{
constexpr uint32 kLineBuffer = 4096;
constexpr uint32 kMaxSymbol = 4096; // longer than compilers write
constexpr uint32 kMaxText = 1024 * 1024;
constexpr uint32 kMaxStack = 4 * 1024 * 1024; // half of what the main thread has

void WriteOut(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

class ZFilter
{
public:
    ZFilter(bool bVerbose, bool bModern)
        : m_options{.m_bVerbose = bVerbose, .m_bModern = bModern, .m_nStack = kMaxStack, .m_memory = m_acText}
    {
    }

    // Writes the next piece of a line.
    void Write(std::string_view piece)
    {
        while (!piece.empty())
        {
            const size_t nTaken = m_symbol.size() == 0 ? SkipText(piece) : TakeSymbol(piece);
            piece.remove_prefix(nTaken);
        }
    }

    void EndLine()
    {
        Flush();
        WriteOut("\n");
        std::fflush(stdout);
    }

private:
    // Writes the symbol, which was held back because more of it could have come.
    void Flush()
    {
        const SDemangled demangled = demangle(m_acText, m_symbol, m_options);
        const bool bRead = demangled.m_result == EDemangled::kRead;
        WriteOut(bRead ? std::string_view(m_acText, demangled.m_nLength) : std::string_view(m_symbol));
        m_symbol.clear();
        m_nOpen = 0;
    }

    size_t SkipText(std::string_view piece)
    {
        const size_t nText = std::min(piece.find('?'), piece.size());
        WriteOut(piece.substr(0, nText));
        if (nText == piece.size())
            return nText;
        m_symbol.appendChar('?');
        return nText + 1;
    }

    size_t TakeSymbol(std::string_view piece)
    {
        size_t nTaken = 0;
        while (nTaken < piece.size() && Continues(piece[nTaken]) && m_symbol.size() < kMaxSymbol)
            m_symbol.appendChar(piece[nTaken++]);
        if (nTaken < piece.size())
            Flush();
        return nTaken;
    }

    // Angle brackets are part of names such as "<lambda_1>"; those around a symbol are not.
    bool Continues(char c)
    {
        if (c == '<')
            ++m_nOpen;
        if (c == '>')
            return m_nOpen-- > 0;
        const unsigned char nCode = static_cast<unsigned char>(c);
        return std::isalnum(nCode) != 0 || nCode >= 0x80 || std::string_view("<?@$_").find(c) != std::string_view::npos;
    }

    const SDemangleOptions m_options;
    int m_nOpen = 0;
    ZStackString<kMaxSymbol + 1> m_symbol;
    char m_acText[kMaxText];
};

int ReadInput(uint64, char* pTarget, uint32 nSize)
{
    return static_cast<int>(read(STDIN_FILENO, pTarget, nSize));
}

void Filter(bool bVerbose, bool bModern)
{
    static char s_acBuffer[kLineBuffer];
    ZLineReader reader(ReadInput, 0, s_acBuffer, sizeof(s_acBuffer));
    static ZFilter s_filter(bVerbose, bModern);
    char* pLine = nullptr;
    uint32 nLength = 0;
    int nLast = 0;
    while (const int nLine = reader.GetNextLine(&pLine, &nLength))
    {
        if (nLast != 0 && nLast != nLine)
            s_filter.EndLine();
        s_filter.Write({pLine, nLength});
        nLast = nLine;
    }
    if (nLast != 0)
        s_filter.EndLine();
}
} // namespace

int main(int argc, char** argv)
{
    constexpr option kOptions[] = {{"verbose", no_argument, nullptr, 'v'},
                                   {"modern", no_argument, nullptr, 'm'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {nullptr, 0, nullptr, 0}};
    constexpr char kUsage[] = "Usage: demangle [--verbose] [--modern] < TEXT\n"
                              "Replaces the decorated symbols in a log by what they mean.\n\n"
                              "  -v, --verbose  with calling conventions, access, class, struct and union\n"
                              "  -m, --modern   with the tables of names that the encoders of today use\n"
                              "  -h, --help     this text\n";
    bool bVerbose = false;
    bool bModern = false;
    for (int cOption = 0; (cOption = getopt_long(argc, argv, "vmh", kOptions, nullptr)) != -1;)
    {
        if (cOption != 'v' && cOption != 'm')
        {
            std::fputs(kUsage, cOption == 'h' ? stdout : stderr);
            return cOption == 'h' ? 0 : 2;
        }
        (cOption == 'v' ? bVerbose : bModern) = true;
    }
    Filter(bVerbose, bModern);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
