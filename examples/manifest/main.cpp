// Reads a list of assets, checks it, and prints it in order with the bytes of each kind:
//
//   manifest FILE
//
// A line is an asset: its path, its kind, its size in bytes, and the paths of what it needs. "#" starts a comment.
//
//   ships/walnut.mesh; mesh; 90112; ships/walnut.png, metal.mat
#include "core/containers/hashmap.h"
#include "core/containers/map.h"
#include "core/containers/maxarray.h"
#include "core/dynamic/format.h"
#include "core/strings/stringfunc.h"
#include "core/values/linesource.h"

#include <algorithm>
#include <cstdio>

KX_USE_PROCESS_HEAP;

namespace
{
struct SAsset
{
    ZString m_kind;
    uint64 m_nBytes = 0;
    TArray<ZString> m_needs = {};
};

using Assets = THashMap<ZString, SAsset>;

// Adds the asset of a line, if there is one. Returns what is wrong with the line, or the empty string.
ZString AddLine(std::string_view line, Assets& assets)
{
    line = TrimSpace(line.substr(0, line.find('#')));
    if (line.empty())
        return {};
    TMaxArray<std::string_view, 4> fields;
    for (const std::string_view field : ZTextPieces(line, ';'))
    {
        if (fields.Size() == 4)
            return "has more than four fields";
        fields.Add(TrimSpace(field));
    }
    uint64 nBytes = 0;
    if (fields.Size() < 3 || !IntFromString(fields[2], &nBytes))
        return "has no size";
    const auto [asset, bNew] = assets.Emplace(fields[0], ZString(fields[1]), nBytes);
    if (!bNew)
        return ZString::Format("repeats {0}, a {1}", fields[0], asset->Value().m_kind);
    if (fields.Size() == 4)
        asset->Value().m_needs.AddRange(ZTextPieces(fields[3], ','));
    return {};
}

// Prints the assets and returns whether each has what it needs.
bool Print(const Assets& assets)
{
    TArray<Assets::const_iterator> sorted;
    TMap<ZString, uint64> bytesOfKind;
    for (auto pos = assets.Begin(); pos != assets.End(); ++pos)
    {
        sorted.Add(pos);
        bytesOfKind[pos->Value().m_kind] += pos->Value().m_nBytes;
    }
    std::ranges::sort(sorted, {}, [](const auto& pos) -> const ZString& { return pos->Key(); });
    bool bComplete = true;
    for (const auto& pos : sorted)
    {
        const auto& [path, asset] = *pos;
        std::puts(ZString::Format("{0}: {1}, {2} bytes", path, asset.m_kind, asset.m_nBytes).ToCString());
        for (const ZString& need : asset.m_needs)
        {
            if (assets.Contains(need.Trim()))
                continue;
            std::puts(ZString::Format("  needs {0}, which is missing", need.Trim()).ToCString());
            bComplete = false;
        }
    }
    for (const auto& [kind, nBytes] : bytesOfKind)
        std::puts(ZString::Format("all of kind {0}: {1} bytes", kind, nBytes).ToCString());
    return bComplete;
}
} // namespace

int main(int argc, char** argv)
{
    std::FILE* pFile = argc == 2 ? std::fopen(argv[1], "r") : nullptr;
    if (pFile == nullptr)
    {
        std::fputs("Usage: manifest FILE\nChecks and prints a list of assets.\n", stderr);
        return 2;
    }
    char acBuffer[4096];
    ZLineReader reader(ReadLineFile, LineSource(pFile), acBuffer, sizeof(acBuffer));
    Assets assets;
    bool bRight = true;
    char* pLine = nullptr;
    uint32 nLength = 0;
    while (const int nLine = reader.GetNextLine(&pLine, &nLength))
    {
        const ZString error = AddLine({pLine, nLength}, assets);
        bRight = bRight && error.IsEmpty();
        if (!error.IsEmpty())
            std::puts(ZString::Format("line {0} {1}", nLine, error).ToCString());
    }
    std::fclose(pFile);
    return Print(assets) && bRight ? 0 : 1;
}
