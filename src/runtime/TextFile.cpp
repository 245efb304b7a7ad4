#include "TextFile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

#include "Conversions.h"
#include "Paths.h"
#include "RuntimeError.h"
#include "Strings.h"

namespace fs = std::filesystem;

namespace rt {

namespace {

constexpr int ErrBadFileMode = 54;

bool folderExists(const fs::path &file)
{
    const fs::path folder = file.has_parent_path() ? file.parent_path() : fs::path(".");
    std::error_code ec;
    return fs::is_directory(folder, ec);
}

// The platform's error for a failed open: a missing folder is 76, a missing file to read 53,
// anything else (a folder in the way, no permission) 75.
[[noreturn]] void raiseOpenError(const fs::path &p, int err, bool reading)
{
    if (!folderExists(p))
        raise(ErrPathNotFound);
    if (err == ENOENT && reading)
        raise(ErrFileNotFound);
    raise(ErrPathFileAccess);
}

bool isDirectory(const fs::path &p)
{
    std::error_code ec;
    return fs::is_directory(p, ec);
}

// A file without any write permission stands for the read-only attribute: opening it to write
// fails, whoever runs the program (root included), and the file is left as it was.
void refuseReadOnly(const fs::path &p)
{
    struct stat st {};
    if (::stat(p.c_str(), &st) == 0 && S_ISREG(st.st_mode) && (st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0)
        raise(ErrPathFileAccess);
}

} // namespace

std::string printNumberText(double number) { return Str(number) + " "; }

// ---- TextFile ----

TextFile::TextFile(std::string_view logicPath, Mode mode) { open(logicPath, mode); }

TextFile::~TextFile()
{
    try {
        close();
    } catch (const RuntimeError &) {
        // A file left open goes to disk at the end as well; a failure then has nobody to tell.
    }
}

void TextFile::open(std::string_view logicPath, Mode mode)
{
    if (m_file)
        raise(ErrFileAlreadyOpen);
    if (logicPath.empty())
        raise(ErrBadFileNameOrNumber);
    const fs::path p = nativePath(logicPath);
    const bool reading = mode == Mode::Input;
    if (isDirectory(p))
        raise(ErrPathFileAccess);
    if (mode == Mode::Output) {
        // A file written anew is gathered in memory and replaces the old one only when it is
        // closed, through a temporary file and a rename: a crash never leaves half a file.
        if (!folderExists(p))
            raise(ErrPathNotFound);
        // The rename would replace a read-only file as well; opening one for output fails.
        refuseReadOnly(p);
        std::FILE *f = ::open_memstream(&m_pendingBytes, &m_pendingSize);
        if (!f)
            raise(7); // Out of memory
        m_file = f;
        m_mode = mode;
        m_replacing = p;
        return;
    }
    if (mode == Mode::Append)
        refuseReadOnly(p);
    const char *how = mode == Mode::Input ? "rb" : "ab";
    std::FILE *f = std::fopen(p.c_str(), how);
    if (!f)
        raiseOpenError(p, errno, reading);
    m_file = f;
    m_mode = mode;
}

void TextFile::close()
{
    if (!m_file)
        return;
    std::fclose(m_file);
    m_file = nullptr;
    if (m_replacing.empty())
        return;
    const std::string bytes(m_pendingBytes ? m_pendingBytes : "", m_pendingSize);
    std::free(m_pendingBytes);
    m_pendingBytes = nullptr;
    m_pendingSize = 0;
    const fs::path target = std::move(m_replacing);
    m_replacing.clear();
    if (!writeFileAtomically(target, bytes))
        raise(ErrPathFileAccess);
}

void TextFile::requireOpen() const
{
    if (!m_file)
        raise(ErrBadFileNameOrNumber);
}

void TextFile::print(std::string_view text)
{
    requireOpen();
    if (m_mode == Mode::Input)
        raise(ErrBadFileMode);
    const std::string bytes = toAnsi(text);
    if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), m_file) != bytes.size())
        raise(57); // Device I/O error
}

void TextFile::printLine(std::string_view text)
{
    print(text);
    print("\r\n");
}

void TextFile::printNumberLine(double number) { printLine(printNumberText(number)); }

int TextFile::peekByte()
{
    const int c = std::fgetc(m_file);
    if (c != EOF)
        std::ungetc(c, m_file);
    return c;
}

int TextFile::getByte() { return std::fgetc(m_file); }

bool TextFile::eof()
{
    requireOpen();
    if (m_mode != Mode::Input)
        return true;
    return peekByte() == EOF;
}

std::string TextFile::lineInput()
{
    requireOpen();
    if (m_mode != Mode::Input)
        raise(ErrBadFileMode);
    if (peekByte() == EOF)
        raise(ErrInputPastEnd);
    std::string bytes;
    for (;;) {
        const int c = getByte();
        if (c == EOF || c == '\n')
            break;
        if (c == '\r') {
            if (peekByte() == '\n')
                getByte();
            break;
        }
        bytes += static_cast<char>(c);
    }
    return fromAnsi(bytes);
}

// Input #: leading blanks and tabs go; a quoted field runs to its closing quote and whatever
// follows it up to the next comma or line end is dropped; an unquoted field runs to the next
// comma or line end and loses its trailing blanks. The delimiter is consumed, CR LF as one.
std::string TextFile::inputField()
{
    requireOpen();
    if (m_mode != Mode::Input)
        raise(ErrBadFileMode);
    if (peekByte() == EOF)
        raise(ErrInputPastEnd);
    int c = peekByte();
    while (c == ' ' || c == '\t') {
        getByte();
        c = peekByte();
    }
    auto endOfLine = [&](int ch) {
        if (ch == '\r' && peekByte() == '\n')
            getByte();
    };
    std::string bytes;
    if (c == '"') {
        getByte();
        for (;;) {
            c = getByte();
            if (c == EOF || c == '"')
                break;
            bytes += static_cast<char>(c);
        }
        if (c == '"') {
            for (;;) {
                c = getByte();
                if (c == EOF || c == ',' || c == '\n')
                    break;
                if (c == '\r') {
                    endOfLine(c);
                    break;
                }
            }
        }
        return fromAnsi(bytes);
    }
    for (;;) {
        c = getByte();
        if (c == EOF || c == ',' || c == '\n')
            break;
        if (c == '\r') {
            endOfLine(c);
            break;
        }
        bytes += static_cast<char>(c);
    }
    while (!bytes.empty() && (bytes.back() == ' ' || bytes.back() == '\t'))
        bytes.pop_back();
    return fromAnsi(bytes);
}

// ---- BinaryFile ----

BinaryFile::BinaryFile(std::string_view logicPath, Mode mode) { open(logicPath, mode); }

BinaryFile::~BinaryFile()
{
    if (m_file)
        std::fclose(m_file);
}

// Binary access for writing creates a missing file, as the platform's Binary mode does.
void BinaryFile::open(std::string_view logicPath, Mode mode)
{
    if (m_file)
        raise(ErrFileAlreadyOpen);
    if (logicPath.empty())
        raise(ErrBadFileNameOrNumber);
    const fs::path p = nativePath(logicPath);
    if (isDirectory(p))
        raise(ErrPathFileAccess);
    std::FILE *f = std::fopen(p.c_str(), mode == Mode::Read ? "rb" : "r+b");
    if (!f && mode == Mode::ReadWrite && errno == ENOENT)
        f = std::fopen(p.c_str(), "w+b");
    if (!f)
        raiseOpenError(p, errno, true);
    m_file = f;
    m_writable = mode == Mode::ReadWrite;
}

void BinaryFile::close()
{
    if (m_file) {
        std::fclose(m_file);
        m_file = nullptr;
    }
}

void BinaryFile::requireOpen() const
{
    if (!m_file)
        raise(ErrBadFileNameOrNumber);
}

int64_t BinaryFile::length() const
{
    requireOpen();
    std::fflush(m_file);
    struct stat st {};
    if (::fstat(fileno(m_file), &st) != 0)
        raise(57);
    return static_cast<int64_t>(st.st_size);
}

std::string BinaryFile::get(int64_t position, size_t count)
{
    requireOpen();
    if (position < 1)
        raise(ErrBadRecordNumber);
    std::string out(count, '\0');
    if (count == 0)
        return out;
    if (fseeko(m_file, static_cast<off_t>(position - 1), SEEK_SET) != 0)
        return out;
    std::fread(out.data(), 1, count, m_file);
    std::clearerr(m_file);
    return out;
}

int BinaryFile::getByte(int64_t position)
{
    return static_cast<unsigned char>(get(position, 1)[0]);
}

void BinaryFile::put(int64_t position, std::string_view bytes)
{
    requireOpen();
    if (position < 1)
        raise(ErrBadRecordNumber);
    if (!m_writable)
        raise(ErrPathFileAccess);
    if (bytes.empty())
        return;
    if (fseeko(m_file, static_cast<off_t>(position - 1), SEEK_SET) != 0
        || std::fwrite(bytes.data(), 1, bytes.size(), m_file) != bytes.size())
        raise(57); // Device I/O error
    std::fflush(m_file);
}

} // namespace rt
