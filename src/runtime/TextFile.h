#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace rt {

// A text file of the program's own: Windows-1252 on disk, lines ended by CR LF. A file opened
// for Output replaces the old one only when it is closed, atomically; a read-only file is never
// replaced. Text in memory is UTF-8. Errors are run-time errors: 53 for
// a missing file on input, 75 when the file is read-only or can't be created (76 when its
// folder is missing), 62 when input runs past the end, 52 for a closed file.
class TextFile {
public:
    enum class Mode { Input, Output, Append };

    TextFile() = default;
    TextFile(std::string_view logicPath, Mode mode);
    ~TextFile();
    TextFile(const TextFile &) = delete;
    TextFile &operator=(const TextFile &) = delete;

    void open(std::string_view logicPath, Mode mode);
    void close();
    bool isOpen() const { return m_file != nullptr; }

    // Print #n, text  -> text and CR LF.
    void printLine(std::string_view text = {});
    // Print #n, number -> the print statement's form: " 3 " (sign or blank, digits, one blank), CR LF.
    void printNumberLine(double number);
    // Write without line end (Print #n, x;).
    void print(std::string_view text);

    // Line Input #n: one line without its CR LF (a lone CR or LF also ends a line).
    std::string lineInput();
    // Input #n: one comma-delimited field; quoted fields keep commas, leading blanks are skipped.
    std::string inputField();
    // EOF(n)
    bool eof();

private:
    int peekByte();
    int getByte();
    void requireOpen() const;

    std::FILE *m_file = nullptr;
    Mode m_mode = Mode::Input;
    // Output: the bytes wait in memory for close(), which replaces the file at once.
    char *m_pendingBytes = nullptr;
    size_t m_pendingSize = 0;
    std::filesystem::path m_replacing;
};

// The print statement's text of a number: a blank or "-", the digits, and one trailing blank.
std::string printNumberText(double number);

// Get/Put of a file opened for binary access; positions count from 1.
class BinaryFile {
public:
    enum class Mode { Read, ReadWrite };

    BinaryFile() = default;
    BinaryFile(std::string_view logicPath, Mode mode);
    ~BinaryFile();
    BinaryFile(const BinaryFile &) = delete;
    BinaryFile &operator=(const BinaryFile &) = delete;

    void open(std::string_view logicPath, Mode mode);
    void close();
    bool isOpen() const { return m_file != nullptr; }

    // LOF
    int64_t length() const;
    // Get: reads up to count bytes at the 1-based position; position below 1 is error 63.
    // Bytes past the end of the file are read as NUL, as the platform's Get fills its buffer.
    std::string get(int64_t position, size_t count);
    // Get of one byte.
    int getByte(int64_t position);
    // Put: writes the bytes at the 1-based position, growing the file when needed.
    void put(int64_t position, std::string_view bytes);

private:
    void requireOpen() const;
    std::FILE *m_file = nullptr;
    bool m_writable = false;
};

} // namespace rt
