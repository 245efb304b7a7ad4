#pragma once

#include <string>
#include <vector>

#include "Wodim.h"
#include "WriteJob.h"

namespace platform::writer {

// The system's recorders, driven through wodim as a child process.
class WodimRecorder {
public:
    explicit WodimRecorder(std::string program);

    const std::string &program() const { return m_program; }
    bool available() const;
    // The drives wodim can reach: `--devices`, or `-scanbus` when that finds none.
    std::vector<WodimDevice> discover() const;
    // DiscState from `-atip` (see classifyDiscState); 1 when wodim can't be run or hangs.
    int probeDiscState(const WodimSettings &settings) const;
    // One track: a private copy of the wave (the caller's file may be overwritten as soon as the
    // track is done) with its .inf beside it, written with the session left open; then, when
    // the close flags are set at the end of the data, the fixation. The result is wodim's exit
    // code, or a WriteResult of the engine's own.
    int writeTrack(const TrackOrder &order, const WodimSettings &settings, WriteContext &ctx) const;

private:
    std::string m_program;
};

} // namespace platform::writer
