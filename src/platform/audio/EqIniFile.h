#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform::audio {

// The equaliser's gains in a section of an ini file:
//
//     [EqData]
//     Bands=15
//     Band0=-3.5
//     ...
//     Band14=6
//
// one line a band, its index from 0 and its gain in dB as a plain decimal number.

// The gains found in the section, by band index. Nothing when the file is missing, holds no
// such section, or is garbled (a band whose value is not a number, text that is not an ini
// file): then no gain may change.
std::optional<std::map<int, double>> readEqGains(const std::filesystem::path &file, const std::string &section);

// The file with the section holding these gains, other sections as they were. Written through a
// temporary file and a rename; false when that fails (the old file is untouched).
bool writeEqGains(const std::filesystem::path &file, const std::string &section, const std::vector<double> &gains);

} // namespace platform::audio
