// Bytes as a file, for readers that take a path.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

namespace Tesk::fuzz {

/// A file of this process, in memory where the system has such a folder; it goes with its object.
class TemporaryFile
{
public:
    TemporaryFile(const char* extension, const std::uint8_t* data, std::size_t size)
        : path_(std::string(std::filesystem::exists("/dev/shm") ? "/dev/shm" : ".") + "/tesk_fuzz_" +
                std::to_string(getpid()) + "." + extension)
    {
        std::FILE* file = std::fopen(path_.c_str(), "wb");
        if (!file || std::fwrite(data, 1, size, file) != size || std::fclose(file) != 0) std::abort();
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::remove(path_.c_str()); }

    const char* Path() const { return path_.c_str(); }

private:
    std::string path_;
};

} // namespace Tesk::fuzz
