// SPDX-License-Identifier: GPL-3.0-or-later
// usage: read_heads THREADS FOLDER
// Opens every file below the folder, reads its first 64 KiB and closes it: the least work that any
// import can do. Prints the number of files and bytes.
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr std::size_t kHead = 64u << 10;

std::vector<std::string> filesBelow(const char* folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files.push_back(entry.path().string());
    return files;
}

std::uint64_t readHead(const std::string& path, std::vector<char>& buffer) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return 0;
    const ssize_t count = ::pread(fd, buffer.data(), buffer.size(), 0);
    ::close(fd);
    return count > 0 ? static_cast<std::uint64_t>(count) : 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    const std::vector<std::string> files = filesBelow(argv[2]);
    std::atomic<std::size_t> next = 0;
    std::atomic<std::uint64_t> bytes = 0;
    const auto work = [&] {
        std::vector<char> buffer(kHead);
        for (std::size_t i = next++; i < files.size(); i = next++)
            bytes += readHead(files[i], buffer);
    };
    std::vector<std::thread> threads;
    for (int extra = std::atoi(argv[1]); extra > 1; --extra)
        threads.emplace_back(work);
    work();
    for (std::thread& thread : threads)
        thread.join();
    std::printf("%zu files, %llu bytes\n", files.size(),
                static_cast<unsigned long long>(bytes.load()));
    return files.empty() ? 1 : 0;
}
