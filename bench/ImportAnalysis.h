#pragma once

#include <benchmark/benchmark.h>
#include <string>

#include "mp3/FrameScan.h"
#include "mp3/cIDV3.h"

// What an import does to measure one file: three frame scans and one tag-and-header reading.
inline const mp3::BitrateTable &bitrateTable()
{
    static const mp3::BitrateTable filled = [] {
        mp3::BitrateTable t;
        t.fill();
        return t;
    }();
    return filled;
}

inline void analyse(const std::string &path)
{
    for (int k = 0; k < 3; ++k)
        benchmark::DoNotOptimize(mp3::scanMp3File(path, bitrateTable()));
    mp3::cIDV3 id;
    id.setFileName(path);
    benchmark::DoNotOptimize(id.InfoString());
}
