#pragma once

#include <string>
#include <string_view>

#include "runtime/Integer.h"
#include "runtime/ResumeNext.h"

namespace mp3 {

// Bit rates in kbit/s held by the layout window: column = layer code Or (version * 4) with layer
// codes 3, 2, 1 for Layers I, II, III; row = the header's bit rate index. Columns 0 and 4 and
// rows 0 and 15 stay 0.
class BitrateTable {
public:
    // All cells 0 until fill() runs, as before the window has loaded.
    BitrateTable() = default;
    // Fills the table from its 14 literal rows; done once when the window loads.
    void fill();
    // The cell; outside 0..7 / 0..15 is error 9.
    rt::Integer cell(int column, int row) const;

private:
    rt::Integer m_cells[8][16];
};

// Reads a stream four bits later than it stands: from three characters (bytes) a, b, c the two
// ((a And 15) * 16) Or ((b And 240) / 16) and ((b And 15) * 16) Or ((c And 240) / 16).
// Fewer than three characters is error 5.
std::string shift_those_bits(std::string_view s);

// What one run of Getmp3data / Getmp3data2 leaves behind.
struct FrameScanResult {
    // Str(Int(seconds)), with its leading blank: " 243". Getmp3data returns this and adds it to ctList3.
    std::string secondsText;
    double seconds = 0;
    // False when no row of the sample-rate list matched: the value then reads 0.
    bool sampleRateSet = false;
    rt::Long sampleRate;
    // Int(frames).
    double frames = 0;
    // Bit rate in bit/s of the analysed frame; Form5 keeps it in its member of this name.
    rt::Long LastBitrate;
    // "yes" when the error handler ran at least once, else "". The handler only ever sets the
    // window's member, so Form5 copies it only when it is "yes".
    std::string ScanErrorMark;
    // The report text nothing shows, lines separated by a line feed.
    std::string report;

    // Label5's caption after Getmp3data2: "Sample Rate:" + Str(sample rate).
    std::string sampleRateCaption() const;
    // Label4(0)'s caption after Getmp3data2: "Calculated Frames:" + Str(Int(frames)).
    std::string framesCaption() const;
};

// The measure of a file from its first 4096 bytes and its length. Never throws a run-time
// error: every failing step is passed over as the window's error handler does.
FrameScanResult scanMp3File(std::string_view path, const BitrateTable &table);

// The same on the bytes already read: `block` is the 4096-byte buffer, or empty when the read
// failed (other lengths work, but the reading never hands them over); `fileLength` is the
// file's length, 0 when it couldn't be taken; `errorsSoFar` tells that the reading already went
// through the error handler.
FrameScanResult scanMp3Block(std::string_view block, double fileLength, const BitrateTable &table,
                             bool errorsSoFar = false);

namespace detail {

// The header text the search finds: two characters from a byte-aligned sync, three behind a
// half-byte one, empty when there is none. With statementByStatement every position goes
// through the error handling as the window's loop did; otherwise a full buffer is searched on
// its bytes up to where a step could fail. Both give the same text and the same errors.
std::string frameHeaderText(std::string_view block, rt::ResumeNext &next, bool statementByStatement);

} // namespace detail

} // namespace mp3
