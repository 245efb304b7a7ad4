#pragma once
// A folder of the fuzzing process's own in memory, for the files the readers under test open.
// On a disk every rewrite of a file waits for the file system, which halves the pace; the folder
// goes when the process ends.
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>

namespace fuzzing {

inline const std::filesystem::path &scratchFolder()
{
    struct Folder {
        std::filesystem::path path = std::filesystem::path("/dev/shm") / ("brasswick-fuzz-" + std::to_string(::getpid()));
        Folder() { std::filesystem::create_directories(path); }
        ~Folder()
        {
            std::error_code ec;
            std::filesystem::remove_all(path, ec);
        }
    };
    static const Folder folder;
    return folder.path;
}

} // namespace fuzzing
