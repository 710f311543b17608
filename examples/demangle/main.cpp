// Copies standard input to standard output and replaces every decorated symbol in it, for example in the messages of a
// linker or the listing of a library:
//
//   unresolved external symbol ?doTheBar@Beta@Alpha@@QBEHHM@Z
//   unresolved external symbol int Alpha::Beta::doTheBar(int, float) const
//
// A symbol begins with "?" and extends as far as its characters can belong to one. A symbol that cannot be read stays
// as it is. Input of any length passes through the same few buffers: a long line comes in pieces, and a symbol that the
// end of a piece cuts is joined again. Every line of the output ends with "\n".
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
constexpr uint32 kMaxText = 32 * 1024;

void WriteOut(std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
}

class ZFilter
{
public:
    explicit ZFilter(bool bVerbose) : m_bVerbose(bVerbose) {}

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
    }

private:
    // Writes the symbol, which was held back because more of it could have come.
    void Flush()
    {
        m_text.clear();
        demangle(m_text, m_symbol, m_bVerbose);
        WriteOut(m_text);
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

    const bool m_bVerbose;
    int m_nOpen = 0;
    ZStackString<kMaxSymbol + 1> m_symbol;
    ZStackString<kMaxText> m_text;
};

int ReadInput(uint64, char* pTarget, uint32 nSize)
{
    return static_cast<int>(read(STDIN_FILENO, pTarget, nSize));
}

void Filter(bool bVerbose)
{
    static char s_acBuffer[kLineBuffer];
    ZLineReader reader(ReadInput, 0, s_acBuffer, sizeof(s_acBuffer));
    ZFilter filter(bVerbose);
    char* pLine = nullptr;
    uint32 nLength = 0;
    int nLast = 0;
    while (const int nLine = reader.GetNextLine(&pLine, &nLength))
    {
        if (nLast != 0 && nLast != nLine)
            filter.EndLine();
        filter.Write({pLine, nLength});
        nLast = nLine;
    }
    if (nLast != 0)
        filter.EndLine();
}
} // namespace

int main(int argc, char** argv)
{
    constexpr option kOptions[] = {
        {"verbose", no_argument, nullptr, 'v'}, {"help", no_argument, nullptr, 'h'}, {nullptr, 0, nullptr, 0}};
    constexpr char kUsage[] = "Usage: demangle [--verbose] < TEXT\n"
                              "Replaces the decorated symbols in a text by what they stand for.\n\n"
                              "  -v, --verbose  with calling conventions, access, class, struct and union\n"
                              "  -h, --help     this text\n";
    bool bVerbose = false;
    for (int cOption = 0; (cOption = getopt_long(argc, argv, "vh", kOptions, nullptr)) != -1;)
    {
        if (cOption != 'v')
        {
            std::fputs(kUsage, cOption == 'h' ? stdout : stderr);
            return cOption == 'h' ? 0 : 2;
        }
        bVerbose = true;
    }
    Filter(bVerbose);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
}
