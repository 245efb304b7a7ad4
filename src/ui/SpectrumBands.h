#pragma once

#include <vector>

namespace ui {

// The bars a spectrum shows from the bins of one analysis: the lowest 1/`frequencyScale` of the
// band (where music has its energy) spread over the bars, one bin a bar where there is room,
// otherwise neighbouring bins joined at their loudest. The first bin (0 Hz, the signal's offset)
// is left out: it is no tone. At most `maxBars` bars; none without bins or room.
std::vector<double> spectrumBars(const std::vector<float> &bins, int frequencyScale, int maxBars);

// How many bars of one pixel at least, `space` pixels apart, fit into `width` pixels.
int spectrumBarRoom(int width, int space);

} // namespace ui
