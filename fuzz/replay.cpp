// SPDX-License-Identifier: MIT
// Runs a fuzz target over the files of the folders named on the command line.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

int main(int argc, char* argv[])
{
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[i])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
            const std::vector<uint8_t> input(bytes.begin(), bytes.end());
            LLVMFuzzerTestOneInput(input.data(), input.size());
            ++files;
        }
    }
    std::printf("%d inputs replayed\n", files);
    return files > 0 ? 0 : 1;
}
