#include "cIDV3.h"

#include <optional>

#include "GenreTables.h"
#include "runtime/Conversions.h"
#include "runtime/Format.h"
#include "runtime/Paths.h"
#include "runtime/ResumeNext.h"
#include "runtime/Strings.h"
#include "runtime/TextFile.h"

namespace mp3 {

namespace {

// A read-only file is not opened for writing, whoever runs the program.
void requireWritable(const std::string &fileName)
{
    if (rt::isReadOnly(fileName))
        rt::raise(rt::ErrPathFileAccess);
}

// A fixed string of the platform: cut to its width, filled up with blanks.
std::string fixedWidth(std::string_view text, int width)
{
    std::string bytes = rt::toAnsi(text);
    bytes.resize(static_cast<size_t>(width), ' ');
    return bytes;
}

// Only blanks go: NULs another tagger left in a field stay part of the value.
std::string trimmedField(const std::string &bytes)
{
    const size_t last = bytes.find_last_not_of(' ');
    return rt::fromAnsi(last == std::string::npos ? std::string_view() : std::string_view(bytes).substr(0, last + 1));
}

// Get/Put at position 0 or before is the platform's "Bad record number".
void requirePosition(int64_t position)
{
    if (position < 1)
        rt::raise(rt::ErrBadRecordNumber);
}

// The bytes as a text of "0" and "1", most significant bit first, with the leading zeros left out.
std::string bitText(std::string_view bytes)
{
    std::string bits;
    for (unsigned char byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            if (byte & (1u << bit))
                bits += '1';
            else if (!bits.empty())
                bits += '0';
        }
    }
    return bits;
}

// The opposite: each "1" is worth 2 to the power of its distance from the end.
double bitValue(std::string_view bits)
{
    double value = 0;
    double weight = 1;
    for (size_t i = bits.size(); i-- > 0;) {
        if (bits[i] == '1')
            value += weight;
        weight *= 2;
    }
    return value;
}

// A field of the header text by 1-based character position, as a number.
int bitField(const std::string &bits, size_t position, size_t length)
{
    if (position > bits.size())
        return 0;
    return static_cast<int>(bitValue(std::string_view(bits).substr(position - 1, length)));
}

rt::BinaryFile &openedFile(std::optional<rt::BinaryFile> &file)
{
    if (!file)
        rt::raise(rt::ErrBadFileNameOrNumber);
    return *file;
}

} // namespace

cIDV3::cIDV3() { reset(); }

void cIDV3::reset()
{
    m_FileName.clear();
    m_Title = fixedWidth({}, TitleWidth);
    m_Artist = fixedWidth({}, ArtistWidth);
    m_Album = fixedWidth({}, AlbumWidth);
    m_Year = fixedWidth({}, YearWidth);
    m_Comments = fixedWidth({}, CommentsWidth);
    m_Genre = 12;
    m_FileBytes = 0;
    m_Seconds = 0;
    m_MpegVersion = 0;
    m_LayerVersion = 0;
    m_Kbits = 0;
    m_Frames = 0;
    m_Hz = 0;
    m_Mode.clear();
    m_PrivateBit.clear();
    m_CRCs.clear();
    m_Copyrighted.clear();
    m_Original.clear();
    m_Emphasis.clear();
    m_Channels = 0;
    m_InfoString.clear();
}

std::string cIDV3::Title() const { return trimmedField(m_Title); }
void cIDV3::setTitle(std::string_view text) { m_Title = fixedWidth(text, TitleWidth); }
std::string cIDV3::Artist() const { return trimmedField(m_Artist); }
void cIDV3::setArtist(std::string_view text) { m_Artist = fixedWidth(text, ArtistWidth); }
std::string cIDV3::Album() const { return trimmedField(m_Album); }
void cIDV3::setAlbum(std::string_view text) { m_Album = fixedWidth(text, AlbumWidth); }
std::string cIDV3::Year() const { return trimmedField(m_Year); }
void cIDV3::setYear(std::string_view text) { m_Year = fixedWidth(text, YearWidth); }
std::string cIDV3::Comments() const { return trimmedField(m_Comments); }
void cIDV3::setComments(std::string_view text) { m_Comments = fixedWidth(text, CommentsWidth); }

void cIDV3::setGenre(long long index)
{
    if (index < 0 || index > 255)
        rt::raise(rt::ErrOverflow);
    m_Genre = static_cast<uint8_t>(index);
}

std::string cIDV3::record() const
{
    std::string bytes = m_Title + m_Artist + m_Album + m_Year + m_Comments;
    bytes += static_cast<char>(m_Genre);
    return bytes;
}

void cIDV3::setFileName(const std::string &name)
{
    reset();
    bool exists = true;
    try {
        rt::FileLen(name);
    } catch (const rt::RuntimeError &) {
        exists = false;
    }
    if (!exists)
        return; // FileName stays empty
    m_FileName = name;
    if (HasTag())
        readTag();
    analyseHeader();
}

void cIDV3::readTag()
{
    rt::ResumeNext next;
    std::optional<rt::BinaryFile> file;
    std::string bytes;
    next([&] { file.emplace(m_FileName, rt::BinaryFile::Mode::Read); });
    next([&] {
        const int64_t position = openedFile(file).length() - 124;
        requirePosition(position);
        bytes = openedFile(file).get(position, RecordSize);
    });
    if (bytes.size() != static_cast<size_t>(RecordSize))
        return;
    size_t at = 0;
    auto take = [&](int width) {
        std::string field = bytes.substr(at, static_cast<size_t>(width));
        at += static_cast<size_t>(width);
        return field;
    };
    m_Title = take(TitleWidth);
    m_Artist = take(ArtistWidth);
    m_Album = take(AlbumWidth);
    m_Year = take(YearWidth);
    m_Comments = take(CommentsWidth);
    m_Genre = static_cast<uint8_t>(bytes[at]);
}

void cIDV3::analyseHeader()
{
    rt::ResumeNext next;
    std::optional<rt::BinaryFile> file;
    next([&] { file.emplace(m_FileName, rt::BinaryFile::Mode::Read); });
    next([&] { m_FileBytes = rt::Long(openedFile(file).length()); });

    // Only FF FA and FF FB count as a frame start: MPEG-1 Layer III, with or without CRC. Reads
    // behind the end give NULs, so the first 5001 bytes in one read are the same as byte by byte.
    std::string head;
    next([&] { head = openedFile(file).get(1, 5001); });
    int64_t p = 0;
    for (size_t i = 1; i <= 5000 && i < head.size(); ++i) {
        if (static_cast<unsigned char>(head[i - 1]) == 255) {
            const unsigned char second = static_cast<unsigned char>(head[i]);
            if (second == 250 || second == 251) {
                p = static_cast<int64_t>(i);
                break;
            }
        }
    }

    // One four-byte buffer serves the Xing frame count and then the header; a failed read (at
    // position 0 when no frame was found) leaves in it what the last read put there.
    std::string quad(4, '\0');
    std::string xing;
    next([&] { xing = openedFile(file).get(p + 36, 4); });
    if (xing == "Xing") {
        next([&] { quad = openedFile(file).get(p + 44, 4); });
        next([&] { m_Frames = rt::Long(static_cast<long long>(bitValue(bitText(quad)))); });
    }
    next([&] {
        requirePosition(p);
        quad = openedFile(file).get(p, 4);
    });
    file.reset();

    const std::string bits = bitText(quad);

    switch (bitField(bits, 12, 2)) {
    case 0: m_MpegVersion = 25; break;
    case 1: m_MpegVersion = 0; break;
    case 2: m_MpegVersion = 2; break;
    case 3: m_MpegVersion = 1; break;
    }
    switch (bitField(bits, 14, 2)) {
    case 0: m_LayerVersion = 0; break;
    case 1: m_LayerVersion = 3; break;
    case 2: m_LayerVersion = 2; break;
    case 3: m_LayerVersion = 1; break;
    }

    const int rateIndex = bitField(bits, 21, 2);
    if (m_MpegVersion == rt::Integer(1)) {
        static constexpr long rates[] = {44100, 48000, 32000};
        next([&] {
            if (rateIndex > 2)
                rt::raise(rt::ErrSubscript);
            m_Hz = rates[rateIndex];
        });
    } else if (m_MpegVersion == rt::Integer(27)) {
        // 27 is what this row waits for, and the version lookup never gives it.
        static constexpr long rates[] = {22050, 24000, 16000};
        next([&] {
            if (rateIndex > 2)
                rt::raise(rt::ErrSubscript);
            m_Hz = rates[rateIndex];
        });
    } else {
        m_Hz = 0;
        return;
    }

    // The key is the version's digits followed by the layer's: version 1, layer 3 make 13.
    const long key = static_cast<long>(
        rt::Val(rt::numberText(m_MpegVersion.value()) + rt::numberText(m_LayerVersion.value())));
    static constexpr int key11[15] = {0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448};
    static constexpr int key12[15] = {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384};
    static constexpr int key13[15] = {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320};
    static constexpr int key255[15] = {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256};
    static constexpr int key255Low[15] = {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160};
    const int *kbitsTable = nullptr;
    if (key == 11)
        kbitsTable = key11;
    else if (key == 12)
        kbitsTable = key12;
    else if (key == 13)
        kbitsTable = key13;
    else if (key == 255)
        kbitsTable = key255;
    else if (key == 255) // the test above has taken this key already
        kbitsTable = key255Low;
    if (!kbitsTable) {
        m_Kbits = 1;
        return;
    }
    const int rateCode = bitField(bits, 17, 4);
    next([&] {
        if (rateCode > 14)
            rt::raise(rt::ErrSubscript);
        m_Kbits = kbitsTable[rateCode];
    });

    m_CRCs = bitField(bits, 16, 1) == 0 ? "Yes" : "No";
    m_PrivateBit = bitField(bits, 24, 1) == 0 ? "No" : "Yes";
    static constexpr const char *modes[] = {"Stereo", "Joint Stereo", "Dual Channel", "Single Channel"};
    m_Mode = modes[bitField(bits, 25, 2)];
    m_Copyrighted = bitField(bits, 29, 1) == 0 ? "No" : "Yes";
    m_Original = bitField(bits, 30, 1) == 0 ? "No" : "Yes";
    static constexpr const char *emphases[] = {"None", "50/15", "Reserved", "CCITT J 17"};
    m_Emphasis = emphases[bitField(bits, 31, 2)];
    m_Channels = m_Mode == "Single Channel" ? 1 : 2;

    // Measured by the first frame's rate alone, a Xing count or not; the product is 32-bit.
    next([&] {
        const rt::Long product = m_FileBytes * rt::Long(8);
        if (m_Kbits == rt::Integer(0))
            rt::raise(rt::ErrDivisionByZero);
        const double seconds = rt::Int(static_cast<double>(product.value()) / m_Kbits.value() / 1000);
        m_Seconds = rt::Integer(static_cast<long long>(seconds));
    });

    m_InfoString = "Size: " + rt::numberText(m_FileBytes.value()) + " bytes" + "\r\n" //
        + "Length: " + rt::numberText(m_Seconds.value()) + " seconds" + "\r\n" //
        + "MPEG " + rt::Format(m_MpegVersion.value(), "#.0") //
        + " layer " + rt::numberText(m_LayerVersion.value()) + "\r\n" //
        + rt::numberText(m_Kbits.value()) + "kbit, " + rt::numberText(m_Frames.value()) + " frames" + "\r\n" //
        + rt::numberText(m_Hz.value()) + "hz " + m_Mode + "\r\n" //
        + "Private: " + m_PrivateBit + "\r\n" //
        + "CRCs: " + m_CRCs + "\r\n" //
        + "Copyrighted: " + m_Copyrighted + "\r\n" //
        + "Original: " + m_Original + "\r\n" //
        + "Emphasis: " + m_Emphasis;
}

bool cIDV3::HasTag() const
{
    try {
        // A missing file fails at the open.
        if (m_FileName.empty())
            return false;
        rt::BinaryFile file(m_FileName, rt::BinaryFile::Mode::Read);
        const int64_t position = file.length() - 127;
        requirePosition(position);
        return rt::UCase(rt::fromAnsi(file.get(position, 3))) == "TAG";
    } catch (const rt::RuntimeError &) {
        return false;
    }
}

bool cIDV3::WriteTag()
{
    return writeFromTagStart("TAG" + record());
}

bool cIDV3::ClearTag()
{
    // The genre byte at the very end stays.
    return writeFromTagStart(std::string(127, '\0'));
}

bool cIDV3::writeFromTagStart(const std::string &bytes)
{
    try {
        if (m_FileName.empty() || !rt::fileExists(m_FileName))
            return false;
        requireWritable(m_FileName);
        rt::BinaryFile file(m_FileName, rt::BinaryFile::Mode::ReadWrite);
        const int64_t position = file.length() - 127;
        requirePosition(position);
        file.put(position, bytes);
        file.close();
        return true;
    } catch (const rt::RuntimeError &) {
        return false;
    }
}

std::string cIDV3::GenreText(rt::Integer index)
{
    const int i = index.value();
    if (i < 0 || i > 147)
        return "Unknown";
    return std::string(idv3GenreNames()[static_cast<size_t>(i)]);
}

} // namespace mp3
