#pragma once

#include <unistd.h>

#include <filesystem>
#include <string>

namespace testsupport {

// A fresh folder under the system's temporary folder, removed with everything in it.
class TempDir {
public:
    explicit TempDir(const std::string &stem = "brasswick-test")
    {
        std::string pattern = (std::filesystem::temp_directory_path() / (stem + "-XXXXXX")).string();
        if (::mkdtemp(pattern.data()))
            m_path = pattern;
    }
    ~TempDir()
    {
        std::error_code ec;
        std::filesystem::remove_all(m_path, ec);
    }
    TempDir(const TempDir &) = delete;
    TempDir &operator=(const TempDir &) = delete;
    const std::filesystem::path &path() const { return m_path; }
    std::filesystem::path operator/(const std::string &name) const { return m_path / name; }

private:
    std::filesystem::path m_path;
};

} // namespace testsupport
