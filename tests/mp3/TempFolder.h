#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace mp3test {

// A fresh folder for one test, removed with everything in it afterwards.
class TempFolder {
public:
    TempFolder()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "mp3test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("mkdtemp failed");
        m_path = pattern;
    }
    ~TempFolder()
    {
        std::error_code ec;
        for (const auto &entry : std::filesystem::recursive_directory_iterator(m_path, ec))
            std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ec);
        std::filesystem::remove_all(m_path, ec);
    }
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;

    std::string file(std::string_view name) const { return (m_path / name).string(); }
    const std::filesystem::path &path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

inline void writeBytes(const std::string &path, std::string_view bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(out.good()) << path;
}

inline std::string readBytes(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The bytes at the start, then a hole up to `size`: a large file that takes no room on disk.
inline void writeSparse(const std::string &path, std::string_view start, std::uintmax_t size)
{
    writeBytes(path, start);
    std::filesystem::resize_file(path, size);
}

// A 128-byte ID3v1 tag from its parts, each padded with blanks to its width.
inline std::string id3v1(std::string_view magic, std::string_view title, std::string_view artist,
                         std::string_view album, std::string_view year, std::string_view comment, unsigned char genre)
{
    auto field = [](std::string_view s, size_t width) {
        std::string f(s.substr(0, width));
        f.resize(width, ' ');
        return f;
    };
    std::string tag(magic);
    tag += field(title, 30) + field(artist, 30) + field(album, 30) + field(year, 4) + field(comment, 30);
    tag += static_cast<char>(genre);
    return tag;
}

} // namespace mp3test
