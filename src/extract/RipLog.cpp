#include "RipLog.h"

#include <cstdio>

#include "runtime/Paths.h"

namespace extract {

namespace {

std::string hex8(uint32_t v)
{
    char buf[16];
    std::snprintf(buf, sizeof buf, "%08X", v);
    return buf;
}

// A position as minutes, seconds and frames: "03:52.40".
std::string msf(int64_t frames)
{
    char buf[32];
    std::snprintf(buf, sizeof buf, "%02lld:%02lld.%02lld", static_cast<long long>(frames / 4500),
                  static_cast<long long>(frames / 75 % 60), static_cast<long long>(frames % 75));
    return buf;
}

std::string padLeft(const std::string &s, size_t width)
{
    return s.size() >= width ? s : std::string(width - s.size(), ' ') + s;
}

std::string copyModeName(int mode)
{
    switch (mode) {
    case platform::CdReader::cmNormal: return "normal";
    case platform::CdReader::cmBurst: return "burst";
    case platform::CdReader::cmSectorSync: return "sector synchronisation";
    }
    return std::to_string(mode);
}

} // namespace

void RipLog::begin(std::filesystem::path file, Run run)
{
    m_file = std::move(file);
    m_run = std::move(run);
    m_tracks.clear();
    m_result.clear();
    save();
}

void RipLog::trackStarted(int number, const std::string &file, int32_t start, int32_t length)
{
    if (!active())
        return;
    Track t;
    t.number = number;
    t.file = file;
    t.start = start;
    t.length = length;
    m_tracks.push_back(std::move(t));
    save();
}

void RipLog::trackError(const std::string &what)
{
    if (!active() || m_tracks.empty() || m_tracks.back().ended)
        return;
    m_tracks.back().errors.push_back(what);
    save();
}

void RipLog::trackEnded(std::optional<platform::TrackChecksums> sums)
{
    if (!active() || m_tracks.empty() || m_tracks.back().ended)
        return;
    m_tracks.back().ended = true;
    m_tracks.back().sums = std::move(sums);
    save();
}

void RipLog::runEnded(const std::string &result)
{
    if (!active())
        return;
    m_result = result;
    save();
    m_file.clear();
}

std::string RipLog::text() const
{
    std::string out = "MP3 Brasswick rip log\n";
    out += "Started: " + m_run.started + "\n";
    out += "Drive: " + m_run.drive + (m_run.driveName.empty() ? std::string() : " (" + m_run.driveName + ")") + "\n";
    out += "Copy mode: " + copyModeName(m_run.copyMode) + "\n";
    out += "Read offset correction: none\n";
    if (m_run.discId)
        out += "Disc id (freedb): " + hex8(static_cast<uint32_t>(*m_run.discId)) + "\n";
    out += "\nTable of contents\n";
    out += "  Track  Start     Length    First sector  Last sector  Type\n";
    for (const platform::CdTrack &t : m_run.toc) {
        out += "  " + padLeft(std::to_string(t.Number), 5) + "  " + msf(t.Start) + "  " + msf(t.Length) + "  " +
               padLeft(std::to_string(t.Start), 12) + "  " + padLeft(std::to_string(t.Start + t.Length - 1), 11) + "  " +
               (t.IsAudio ? "audio" : "data") + "\n";
    }
    if (!m_run.toc.empty()) {
        const platform::CdTrack &last = m_run.toc.back();
        out += "  Lead-out at sector " + std::to_string(last.Start + last.Length) + "\n";
    }
    for (const Track &t : m_tracks) {
        out += "\nTrack " + std::to_string(t.number) + "\n";
        out += "  File: " + t.file + "\n";
        out += "  Sectors: " + std::to_string(t.start) + " to " + std::to_string(t.start + t.length - 1) + " (" +
               std::to_string(t.length) + ", " + msf(t.length) + ")\n";
        if (t.sums) {
            out += "  CRC32: " + hex8(t.sums->crc32) + "\n";
            if (t.sums->accurateRipV1 && t.sums->accurateRipV2) {
                out += "  AccurateRip v1: " + hex8(*t.sums->accurateRipV1) + "\n";
                out += "  AccurateRip v2: " + hex8(*t.sums->accurateRipV2) + "\n";
            } else {
                out += "  AccurateRip: not computed (the file is not 44100 Hz, 16-bit stereo)\n";
            }
        } else if (t.ended && t.errors.empty()) {
            out += "  CRC32: not computed (the file could not be read)\n";
        }
        for (const std::string &e : t.errors)
            out += "  Error: " + e + "\n";
        out += std::string("  Result: ") +
               (!t.ended ? "copying" : t.errors.empty() && t.sums ? "copied without errors" : t.errors.empty() ? "copied" : "not completed") +
               "\n";
    }
    if (!m_result.empty())
        out += "\nResult: " + m_result + "\n";
    return out;
}

void RipLog::save() const
{
    if (!m_file.empty())
        rt::writeFileAtomically(m_file, text());
}

} // namespace extract
