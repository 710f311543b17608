// The parsers of values beside the standard library, Boost and libuuid.
#include "bench/support.h"
#include "core/values/guid.h"
#include "core/values/linesource.h"
#include "core/values/version.h"

#include <boost/uuid/string_generator.hpp>
#include <boost/uuid/uuid.hpp>
#include <boost/uuid/uuid_io.hpp>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <uuid/uuid.h>
#include <vector>

namespace
{
// ---- Identifiers. A turn prints or reads kBatch random ones and sums one byte of each.

std::vector<std::string> GuidTexts()
{
    std::mt19937_64 random(1);
    std::vector<std::string> texts;
    for (int64 i = 0; i < kBatch; ++i)
    {
        const uint64 nFirst = random();
        texts.emplace_back(ZGuid(nFirst, random()).ToString().ToCString());
    }
    return texts;
}

template <class TGuid>
uint8 LastByte(const TGuid& guid)
{
    uint8 aBytes[16];
    std::memcpy(aBytes, &guid, sizeof(aBytes));
    return aBytes[15];
}

struct SOwnGuid
{
    using Guid = ZGuid;
    using Text = ZString;
    static void Read(const ZString& text, ZGuid& guid) { guid.FromString(text); }
    static void Write(const ZGuid& guid, char (&acText)[37]) { guid.WriteTo(acText); }
    static ZString Print(const ZGuid& guid) { return guid.ToString(); }
};

struct SBoostGuid
{
    using Guid = boost::uuids::uuid;
    using Text = std::string;
    static void Read(const std::string& text, Guid& guid) { guid = boost::uuids::string_generator()(text); }
    static void Write(const Guid& guid, char (&acText)[37]) { boost::uuids::to_chars(guid, acText, std::end(acText)); }
    static std::string Print(const Guid& guid) { return boost::uuids::to_string(guid); }
};

// Has no string of its own: prints into a buffer and makes no copy of it.
struct SLibUuid
{
    using Guid = uuid_t;
    using Text = std::string;
    static void Read(const std::string& text, uuid_t& guid) { uuid_parse(text.c_str(), guid); }
    static void Write(const uuid_t& guid, char (&acText)[37]) { uuid_unparse_lower(guid, acText); }
    static std::string_view Print(const uuid_t& guid)
    {
        static char acText[37];
        uuid_unparse_lower(guid, acText);
        return {acText, 36};
    }
};

template <class TContestant>
void ReadGuid(benchmark::State& state)
{
    std::vector<typename TContestant::Text> texts;
    int64 nSum = 0;
    for (const std::string& text : GuidTexts())
    {
        texts.emplace_back(std::string_view(text));
        nSum += std::stoi(text.substr(34), nullptr, 16);
    }
    RunBatches(state, nSum,
               [&](size_t i)
               {
                   typename TContestant::Guid guid;
                   TContestant::Read(texts[i], guid);
                   return LastByte(guid);
               });
}

// print(guid) returns the last character that it printed.
template <class TContestant, class TPrint>
void PrintGuids(benchmark::State& state, TPrint print)
{
    struct SGuid
    {
        typename TContestant::Guid m_guid;
    };
    std::vector<SGuid> guids;
    int64 nSum = 0;
    for (const std::string& text : GuidTexts())
    {
        TContestant::Read(typename TContestant::Text(std::string_view(text)), guids.emplace_back().m_guid);
        nSum += text.back();
    }
    RunBatches(state, nSum, [&](size_t i) { return print(guids[i].m_guid); });
}

template <class TContestant>
void PrintGuid(benchmark::State& state)
{
    PrintGuids<TContestant>(state, [](const auto& guid) { return std::string_view(TContestant::Print(guid)).back(); });
}

template <class TContestant>
void WriteGuid(benchmark::State& state)
{
    PrintGuids<TContestant>(state,
                            [](const auto& guid)
                            {
                                char acText[37];
                                TContestant::Write(guid, acText);
                                return acText[35];
                            });
}

template <class TContestant>
void RegisterGuid(const char* pszContestant)
{
    RegisterAt("GUID, read", pszContestant, ReadGuid<TContestant>, {36});
    RegisterAt("GUID, write into a buffer", pszContestant, WriteGuid<TContestant>, {36});
    RegisterAt("GUID, make a string", pszContestant, PrintGuid<TContestant>, {36});
}

// ---- Version numbers.

bool OwnVersion(const std::string& text, Version& version)
{
    return version::FromString(text.c_str(), &version);
}

bool OwnVersionView(const std::string& text, Version& version)
{
    return version::FromString(text, &version);
}

bool ScanVersion(const std::string& text, Version& version)
{
    version = {};
    unsigned char nMajor = 0;
    unsigned char nMinor = 0;
    unsigned short nPatch = 0;
    unsigned int nBuild = 0;
    const int nParts = std::sscanf(text.c_str(), "%hhu.%hhu.%hu.%u", &nMajor, &nMinor, &nPatch, &nBuild);
    version = {{nMajor, nMinor, nPatch, nBuild}};
    return nParts >= 2;
}

// The same rules, for a string whose end is known. The type of a part bounds its number and excludes a sign.
bool FromCharsVersion(const std::string& text, Version& version)
{
    version = {};
    const char* p = text.data();
    const char* const pEnd = p + text.size();
    while (p != pEnd && (*p == ' ' || (*p >= '\t' && *p <= '\r')))
        ++p;
    Version read{};
    const auto part = [&](auto& number)
    {
        const auto result = std::from_chars(p, pEnd, number);
        p = result.ptr;
        return result.ec == std::errc();
    };
    const auto dot = [&] { return p != pEnd && *p++ == '.'; };
    bool bRead = part(read.major) && dot() && part(read.minor);
    if (bRead && dot())
        bRead = part(read.patch) && (!dot() || part(read.build));
    if (bRead)
        version = read;
    return bRead;
}

template <bool (*pRead)(const std::string&, Version&)>
void ReadVersion(benchmark::State& state)
{
    std::mt19937 random(1);
    std::vector<std::string> texts;
    int64 nSum = 0;
    for (int64 i = 0; i < kBatch; ++i)
    {
        const int64 nMajor = static_cast<int64>(random() % 20);
        std::string text = std::to_string(nMajor);
        for (int64 nPart = 1; nPart < state.range(0); ++nPart)
            text += '.' + std::to_string(random() % (nPart == 3 ? 100000 : 40));
        texts.push_back(text);
        nSum += nMajor;
    }
    RunBatches(state, nSum,
               [&](size_t i)
               {
                   Version version;
                   pRead(texts[i], version);
                   return version.major;
               });
}

// ---- Lines. The file of 10 MB is in memory after the first reading. Each contestant has a buffer of 64 KB.

constexpr size_t kFileSize = 10'000'000;
constexpr size_t kBuffer = 65536;

// A file whose lines have n characters on average.
class ZLineFile
{
public:
    explicit ZLineFile(int64 n) : m_path(std::filesystem::temp_directory_path() / ("lines." + std::to_string(getpid())))
    {
        std::mt19937 random(1);
        std::string text;
        while (text.size() < kFileSize)
        {
            text.append(random() % static_cast<size_t>(2 * n + 1), 'x');
            text += '\n';
            ++m_nLines;
        }
        m_nLineBytes = static_cast<int64>(text.size()) - m_nLines;
        std::ofstream(m_path) << text;
    }
    ~ZLineFile() { std::filesystem::remove(m_path); }
    ZLineFile(const ZLineFile&) = delete;
    ZLineFile& operator=(const ZLineFile&) = delete;

    const char* Path() const { return m_path.c_str(); }
    // The count that a contestant should reach: the characters of all lines plus the lines.
    int64 Count() const { return m_nLineBytes + m_nLines; }

private:
    std::filesystem::path m_path;
    int64 m_nLines = 0;
    int64 m_nLineBytes = 0;
};

template <class TContestant>
void ReadLines(benchmark::State& state)
{
    const ZLineFile file(state.range(0));
    std::vector<char> buffer(kBuffer);
    for (auto _ : state)
    {
        TContestant contestant(file.Path(), buffer);
        int64 nCount = 0;
        for (int64 nLength = contestant.Next(); nLength >= 0; nLength = contestant.Next())
            nCount += nLength + 1;
        Consume(state, nCount, file.Count());
    }
}

class ZOpenFile
{
public:
    ZOpenFile(const char* pszPath, std::vector<char>& buffer) : m_pFile(std::fopen(pszPath, "r"))
    {
        std::setvbuf(m_pFile, buffer.data(), _IOFBF, buffer.size());
    }
    ~ZOpenFile() { std::fclose(m_pFile); }
    ZOpenFile(const ZOpenFile&) = delete;
    ZOpenFile& operator=(const ZOpenFile&) = delete;

protected:
    std::FILE* m_pFile;
};

// Reads from the descriptor and does not use the file's own buffer.
class ZOwnLines : ZOpenFile
{
public:
    ZOwnLines(const char* pszPath, std::vector<char>& buffer)
        : ZOpenFile(pszPath, buffer),
          m_reader(&ReadLineDescriptor, LineSource(fileno(m_pFile)), buffer.data(), static_cast<uint32>(buffer.size()))
    {
    }
    int64 Next()
    {
        char* pLine = nullptr;
        uint32 nLength = 0;
        return m_reader.GetNextLine(&pLine, &nLength) == 0 ? -1 : int64{nLength};
    }

private:
    ZLineReader m_reader;
};

// Reads from the file, which has the buffer. The reader's own holds a line.
class ZOwnFileLines : ZOpenFile
{
public:
    ZOwnFileLines(const char* pszPath, std::vector<char>& buffer)
        : ZOpenFile(pszPath, buffer), m_reader(&ReadLineFile, LineSource(m_pFile), m_acLine, sizeof(m_acLine))
    {
    }
    int64 Next()
    {
        char* pLine = nullptr;
        uint32 nLength = 0;
        return m_reader.GetNextLine(&pLine, &nLength) == 0 ? -1 : int64{nLength};
    }

private:
    char m_acLine[4096];
    ZLineReader m_reader;
};

class ZGetLine3 : ZOpenFile
{
public:
    using ZOpenFile::ZOpenFile;
    ~ZGetLine3() { std::free(m_pLine); }
    int64 Next()
    {
        const ssize_t nLength = getline(&m_pLine, &m_nSize, m_pFile);
        return nLength < 0 ? -1 : nLength - 1;
    }

private:
    char* m_pLine = nullptr;
    size_t m_nSize = 0;
};

class ZFGets : ZOpenFile
{
public:
    using ZOpenFile::ZOpenFile;
    int64 Next()
    {
        if (std::fgets(m_acLine, sizeof(m_acLine), m_pFile) == nullptr)
            return -1;
        return static_cast<int64>(std::strlen(m_acLine)) - 1;
    }

private:
    char m_acLine[kBuffer];
};

class ZStdGetLine
{
public:
    ZStdGetLine(const char* pszPath, std::vector<char>& buffer)
    {
        m_file.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        m_file.open(pszPath);
    }
    int64 Next() { return std::getline(m_file, m_line) ? static_cast<int64>(m_line.size()) : -1; }

private:
    std::ifstream m_file;
    std::string m_line;
};
} // namespace

int main(int argc, char** argv)
{
    RegisterGuid<SOwnGuid>("ZGuid");
    RegisterGuid<SBoostGuid>("boost::uuid");
    RegisterGuid<SLibUuid>("libuuid");
    RegisterAt("version", "version::FromString", ReadVersion<OwnVersion>, {2, 3, 4});
    RegisterAt("version", "sscanf", ReadVersion<ScanVersion>, {2, 3, 4});
    RegisterAt("version", "std::from_chars", ReadVersion<FromCharsVersion>, {2, 3, 4});
    RegisterAt("version, view", "version::FromString", ReadVersion<OwnVersionView>, {2, 3, 4});
    RegisterAt("version, view", "std::from_chars", ReadVersion<FromCharsVersion>, {2, 3, 4});
    RegisterAt("lines, 10 MB", "ZLineReader", ReadLines<ZOwnLines>, {10, 40, 300});
    RegisterAt("lines, 10 MB", "getline(3)", ReadLines<ZGetLine3>, {10, 40, 300});
    RegisterAt("lines, 10 MB", "fgets", ReadLines<ZFGets>, {10, 40, 300});
    RegisterAt("lines, 10 MB", "std::getline", ReadLines<ZStdGetLine>, {10, 40, 300});
    RegisterAt("lines of a FILE*, 10 MB", "ReadLineFile", ReadLines<ZOwnFileLines>, {10, 40, 300});
    RegisterAt("lines of a FILE*, 10 MB", "getline(3)", ReadLines<ZGetLine3>, {10, 40, 300});
    RegisterAt("lines of a FILE*, 10 MB", "fgets", ReadLines<ZFGets>, {10, 40, 300});
    return RunBenchmarks(argc, argv);
}
