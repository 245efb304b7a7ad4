#pragma once

#include <array>
#include <string_view>

namespace mp3 {

// The 148 genre names of cIDV3, by index 0 to 147.
const std::array<std::string_view, 148> &idv3GenreNames();

// The genre names of cMP3Info as one text, separated by "|"; it has spellings of its own.
std::string_view mp3InfoGenreText();

} // namespace mp3
