#pragma once

#include <cstdio>
#include <filesystem>
#include <mutex>
#include <string>

namespace platform::writer {

// The record of a burn a user can send with a report: one plain-text file a burn in a folder of
// the user's state ($XDG_STATE_HOME/brasswick, else ~/.local/state/brasswick), named
// burn-YYYYMMDD-HHMMSS.log, with last.log naming the newest. The newest `keep` burn logs are kept.
// Lines go to the file as they come, from any thread; a log that can't be written is given up in
// silence, as a burn never fails for its log.
class BurnLog {
public:
    static constexpr int defaultKeep = 20;

    explicit BurnLog(std::filesystem::path folder, int keep = defaultKeep);
    ~BurnLog();
    BurnLog(const BurnLog &) = delete;
    BurnLog &operator=(const BurnLog &) = delete;

    // $XDG_STATE_HOME/brasswick, else ~/.local/state/brasswick.
    static std::filesystem::path defaultFolder();

    // Starts a new log file with its heading unless one is open; true when one is open after.
    bool begin(const std::string &heading);
    bool isOpen() const;
    // One line, as it is (a line end is added).
    void line(const std::string &text);
    // Ends the log with a last line; the next begin starts a new file.
    void end(const std::string &lastLine);
    // The file being written, or the last one written.
    std::filesystem::path file() const;

private:
    void removeOld();

    std::filesystem::path m_folder;
    int m_keep;
    mutable std::mutex m_mutex;
    std::FILE *m_out = nullptr;
    std::filesystem::path m_file;
};

// The local time as "YYYY-MM-DD HH:MM:SS".
std::string burnLogTime();

} // namespace platform::writer
