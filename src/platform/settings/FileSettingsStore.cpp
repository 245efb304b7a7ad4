#include "FileSettingsStore.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"

namespace platform::settings {

namespace {

std::string lower(std::string s)
{
    std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
    return s;
}

// Values may hold any text: line ends and backslashes are escaped on disk.
std::string escape(const std::string &s)
{
    std::string out;
    for (char c : s) {
        switch (c) {
        case '\\': out += "\\\\"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '=': out += "\\e"; break;
        default: out += c;
        }
    }
    return out;
}

// A name must not look like a comment or a section when it starts its line, nor vanish when empty.
std::string escapeName(const std::string &s)
{
    if (s.empty())
        return "\\0";
    const std::string e = escape(s);
    return e[0] == '#' || e[0] == ';' || e[0] == '[' ? "\\" + e : e;
}

std::string unescape(const std::string &s)
{
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] == '\\' && i + 1 < s.size()) {
            const char n = s[++i];
            if (n == '0')
                continue;
            out += n == 'n' ? '\n' : n == 'r' ? '\r' : n == 'e' ? '=' : n;
        } else {
            out += s[i];
        }
    }
    return out;
}

// The stored name that matches without regard to case, or the name itself.
std::string findName(const FileSettingsStore::Values &values, const std::string &name)
{
    const std::string wanted = lower(name);
    for (const auto &[stored, value] : values) {
        if (lower(stored) == wanted)
            return stored;
    }
    return name;
}

} // namespace

namespace {

std::filesystem::path configFolder()
{
    std::filesystem::path base;
    if (const char *xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg)
        base = xdg;
    else if (const char *home = std::getenv("HOME"); home && *home)
        base = std::filesystem::path(home) / ".config";
    else
        base = std::filesystem::temp_directory_path();
    return base;
}

} // namespace

std::filesystem::path FileSettingsStore::defaultFile()
{
    return configFolder() / "velmora-works" / "registry.ini";
}

std::filesystem::path FileSettingsStore::extractionFile()
{
    return configFolder() / "mervane" / "dac.ini";
}

FileSettingsStore::FileSettingsStore(std::filesystem::path file)
    : m_file(std::move(file))
{
}

std::map<std::string, FileSettingsStore::Values> FileSettingsStore::parse(const std::string &text)
{
    std::map<std::string, Values> sections;
    std::string section;
    bool inSection = false;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line.empty() || line[0] == ';' || line[0] == '#')
            continue;
        if (line.front() == '[' && line.back() == ']') {
            section = lower(line.substr(1, line.size() - 2));
            inSection = true;
            sections[section];
            continue;
        }
        const size_t eq = line.find('=');
        if (!inSection || eq == std::string::npos || eq == 0)
            continue;
        Values &values = sections[section];
        const std::string name = unescape(line.substr(0, eq));
        values[findName(values, name)] = unescape(line.substr(eq + 1));
    }
    return sections;
}

std::string FileSettingsStore::serialise(const std::map<std::string, Values> &sections)
{
    std::string out;
    for (const auto &[section, values] : sections) {
        out += "[" + section + "]\n";
        for (const auto &[name, value] : values)
            out += escapeName(name) + "=" + escape(value) + "\n";
        out += "\n";
    }
    return out;
}

std::map<std::string, FileSettingsStore::Values> FileSettingsStore::load() const
{
    std::ifstream in(m_file, std::ios::binary);
    if (!in)
        return {};
    std::ostringstream text;
    text << in.rdbuf();
    return parse(text.str());
}

void FileSettingsStore::OpenKey(int32_t root, const std::string &subKey)
{
    if (root != HKEY_CURRENT_USER)
        rt::raise(rt::ErrInvalidCall);
    m_section = lower("HKCU\\" + subKey);
    m_open = true;
}

std::string FileSettingsStore::ReadValue(const std::string &name)
{
    if (!m_open)
        rt::raise(rt::ErrInvalidCall);
    const auto sections = load();
    const auto section = sections.find(m_section);
    if (section == sections.end())
        return {};
    const auto value = section->second.find(findName(section->second, name));
    return value == section->second.end() ? std::string() : value->second;
}

void FileSettingsStore::WriteValue(const std::string &name, const std::string &value, int32_t type)
{
    // Every kind is kept as text: numbers in decimal, binary values as hex digits.
    if (!m_open || (type != REG_SZ && type != REG_DWORD && type != REG_BINARY))
        rt::raise(rt::ErrInvalidCall);
    auto sections = load();
    Values &values = sections[m_section];
    values[findName(values, name)] = value;
    std::error_code ec;
    std::filesystem::create_directories(m_file.parent_path(), ec);
    if (!rt::writeFileAtomically(m_file, serialise(sections)))
        rt::raise(rt::ErrPathFileAccess);
}

void FileSettingsStore::CloseKey()
{
    m_open = false;
}

} // namespace platform::settings
