// Runs a fuzz body on every file of a folder, and on the file cut at each of its bytes. A fault aborts.
#include "core/platform/platform.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8* pData, std::size_t nSize);

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    int nFiles = 0;
    for (const auto& file : std::filesystem::directory_iterator(argv[1]))
    {
        // What was printed last tells where it aborted.
        std::puts(file.path().string().c_str());
        std::fflush(stdout);
        std::ifstream stream(file.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(stream), {});
        for (std::size_t nSize = 0; nSize <= bytes.size(); ++nSize)
        {
            // A block of the exact size, so that a sanitizer sees a read behind the end.
            const std::vector<uint8> input(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(nSize));
            LLVMFuzzerTestOneInput(input.data(), nSize);
        }
        ++nFiles;
    }
    std::printf("%d files\n", nFiles);
    return nFiles == 0 ? 1 : 0;
}
