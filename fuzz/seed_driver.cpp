// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz target over the files and folders given, and over cut and bent copies of each, so
// that the tests exercise it without libFuzzer.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::uintmax_t kLargestSeed = 1u << 20;

void runWithVariants(std::vector<std::uint8_t> bytes) {
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    for (std::size_t parts = 2; parts <= 16; parts *= 2)
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size() / parts);
    std::uint32_t state = 12345; // fixed, so that a failure repeats
    for (int round = 0; round < 16 && !bytes.empty(); ++round) {
        state = state * 1664525u + 1013904223u;
        bytes[state % std::min<std::size_t>(bytes.size(), 512)] =
            static_cast<std::uint8_t>(state >> 24);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
}

int runFile(const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::file_size(path, error) > kLargestSeed || error)
        return 0;
    std::ifstream file(path, std::ios::binary);
    runWithVariants({std::istreambuf_iterator<char>(file), {}});
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i]))
                if (entry.is_regular_file())
                    count += runFile(entry.path());
        } else {
            count += runFile(argv[i]);
        }
    }
    std::printf("%d seeds\n", count);
    return count > 0 ? 0 : 1;
}
