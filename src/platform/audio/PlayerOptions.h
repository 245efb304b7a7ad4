#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>

namespace platform::audio {

// Where the player's sound goes.
struct PlayerOptions {
    // When set, the player always plays into its silent sink and records every sample it plays,
    // after the equaliser and the volume, in `played.wav` in this folder.
    std::optional<std::filesystem::path> soundFolder;
    // Never try the sound card (the silent sink keeps the time).
    bool silentOnly = false;
    // The silent sink's pace: 1 real time, 0 as fast as the chain runs (measurements only).
    double silentSpeed = 1.0;

    // The program's options: BRASSWICK_SOUND_DIR names the sound folder (the scenario driver and
    // the tests set it); without it, the sound card, else the silent sink.
    static PlayerOptions fromEnvironment()
    {
        PlayerOptions o;
        if (const char *dir = std::getenv("BRASSWICK_SOUND_DIR"); dir && *dir)
            o.soundFolder = std::filesystem::path(dir);
        return o;
    }
};

} // namespace platform::audio
