// Changes settings in a JSON file, or prints them if there are no changes:
//
//   settings game.json window.width=1920 player.name=Walnut 'keys=["w", "a"]'
//
// What follows the first "=" is a JSON value, or a string if it is not JSON. The last step of a path may be new; the
// others must exist. The new text is written beside the file, which it then replaces: whatever goes wrong, the file has
// either the old settings or the new ones.
#include "runtime/json/json.h"

#include <cstdio>
#include <fstream>
#include <getopt.h>
#include <iterator>
#include <string>
#include <string_view>
#include <unistd.h>

namespace
{
constexpr json::SWriteOptions kReadable{.m_nIndent = 2};

int Fail(std::string_view what, const ZString& why)
{
    std::fprintf(stderr, "settings: %.*s: %s\n", static_cast<int>(what.size()), what.data(), why.ToCString());
    return 1;
}

// Applies "path=value" and returns the exit status.
int Apply(ZDynamicObject& settings, std::string_view change)
{
    const size_t nEquals = change.find('=');
    if (nEquals == std::string_view::npos)
        return Fail(change, "not of the form path=value");
    const std::string_view path = change.substr(0, nEquals);
    ZDynamicObject value = ZString(change.substr(nEquals + 1));
    json::Read(change.substr(nEquals + 1), value);
    return settings.TrySetPath(ZString(path), value) ? 0 : Fail(path, "there is no object for it to be in");
}

// Whether all of the settings are on the disk under that name.
bool Store(const ZDynamicObject& settings, const std::string& path, json::SError& error)
{
    std::FILE* pFile = std::fopen(path.c_str(), "w");
    if (pFile == nullptr)
        return false;
    const auto put = [&](std::string_view piece)
    { return std::fwrite(piece.data(), 1, piece.size(), pFile) == piece.size(); };
    const bool bStored = json::Write(settings, put, &error, kReadable) && std::fputc('\n', pFile) != EOF
                         && std::fflush(pFile) == 0 && fsync(fileno(pFile)) == 0;
    return (std::fclose(pFile) == 0) && bStored;
}

int Save(const ZDynamicObject& settings, const std::string& path)
{
    const std::string next = path + ".new";
    json::SError error{"cannot be written"};
    if (Store(settings, next, error) && std::rename(next.c_str(), path.c_str()) == 0)
        return 0;
    std::remove(next.c_str());
    return Fail(path, error.ToString());
}

int Run(const char* pszFile, char** ppszChanges)
{
    std::ifstream file(pszFile, std::ios::binary);
    if (!file)
        return Fail(pszFile, "cannot be read");
    const std::string text(std::istreambuf_iterator<char>(file), {});
    ZDynamicObject settings;
    json::SError error;
    if (!json::Read(text, settings, &error))
        return Fail(pszFile, error.ToString());
    if (*ppszChanges == nullptr)
    {
        ZString printed;
        json::Write(settings, printed, nullptr, kReadable);
        return std::puts(printed.ToCString()) < 0 ? 1 : 0;
    }
    for (; *ppszChanges != nullptr; ++ppszChanges)
    {
        if (const int nStatus = Apply(settings, *ppszChanges))
            return nStatus;
    }
    return Save(settings, pszFile);
}
} // namespace

int main(int argc, char** argv)
{
    const option aOptions[] = {{"help", no_argument, nullptr, 'h'}, {}};
    const int nOption = getopt_long(argc, argv, "h", aOptions, nullptr);
    const bool bHelp = nOption == 'h';
    if (nOption != -1 || optind >= argc)
    {
        std::fputs(
            "Usage: settings FILE [PATH=VALUE...]\n"
            "Changes the JSON file; prints it if there is no change. PATH: keys joined by dots. VALUE: JSON, or\n"
            "else a string.\n",
            bHelp ? stdout : stderr);
        return bHelp ? 0 : 2;
    }
    const ZMemAllocatorScope scope;
    return Run(argv[optind], argv + optind + 1);
}
