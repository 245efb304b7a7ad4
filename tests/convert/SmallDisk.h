#pragma once

// A real small disk for the tests of full and read-only disks: a tmpfs of a given size mounted on
// a folder. Mounting takes the superuser (or a container that allows it); where it can't be had,
// `mounted()` is false and the test takes another way.
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>

#include <sys/mount.h>

namespace converttest {

class SmallDisk {
public:
    SmallDisk(const std::filesystem::path &at, unsigned long bytes, bool readOnly = false) : m_at(at)
    {
        std::error_code ec;
        std::filesystem::create_directories(m_at, ec);
        const std::string options = "size=" + std::to_string(bytes) + ",mode=0777";
        if (::mount("tmpfs", m_at.c_str(), "tmpfs", readOnly ? MS_RDONLY : 0, options.c_str()) == 0)
            m_mounted = true;
        else
            m_why = std::strerror(errno);
    }
    ~SmallDisk()
    {
        if (m_mounted)
            ::umount2(m_at.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool mounted() const { return m_mounted; }
    const std::string &whyNot() const { return m_why; }
    std::string file(const std::string &name) const { return (m_at / name).string(); }

private:
    std::filesystem::path m_at;
    bool m_mounted = false;
    std::string m_why;
};

} // namespace converttest
