#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "runtime/Integer.h"

namespace mp3 {

// One MP3 file: its ID3v1 tag (read and written) and a description of the first MPEG-1 Layer III
// frame header found in its first 5000 bytes. Assigning FileName does all the reading; the
// properties only hand back what it found. Nothing here ever reports an error.
class cIDV3 {
public:
    cIDV3();

    // Empty when the file doesn't exist.
    const std::string &FileName() const { return m_FileName; }
    void setFileName(const std::string &name);

    // Tag fields: fixed width on disk; a longer text is cut, the get drops trailing blanks only.
    std::string Title() const;
    void setTitle(std::string_view text);
    std::string Artist() const;
    void setArtist(std::string_view text);
    std::string Album() const;
    void setAlbum(std::string_view text);
    std::string Year() const;
    void setYear(std::string_view text);
    std::string Comments() const;
    void setComments(std::string_view text);
    // A byte: outside 0 to 255 is an overflow (error 6).
    uint8_t Genre() const { return m_Genre; }
    void setGenre(long long index);

    rt::Long FileBytes() const { return m_FileBytes; }
    rt::Integer Seconds() const { return m_Seconds; }
    rt::Integer MpegVersion() const { return m_MpegVersion; }
    rt::Integer LayerVersion() const { return m_LayerVersion; }
    rt::Integer Kbits() const { return m_Kbits; }
    rt::Long Frames() const { return m_Frames; }
    rt::Long Hz() const { return m_Hz; }
    const std::string &Mode() const { return m_Mode; }
    const std::string &PrivateBit() const { return m_PrivateBit; }
    const std::string &CRCs() const { return m_CRCs; }
    const std::string &Copyrighted() const { return m_Copyrighted; }
    const std::string &Original() const { return m_Original; }
    const std::string &Emphasis() const { return m_Emphasis; }
    rt::Integer Channels() const { return m_Channels; }
    const std::string &InfoString() const { return m_InfoString; }

    // "TAG" in any case at the tag's place; false for a missing or short file.
    bool HasTag() const;
    // Writes "TAG" and the tag record over the last 128 bytes, whatever stands there.
    bool WriteTag();
    // NULs over the first 127 bytes of the tag; the genre byte stays.
    bool ClearTag();
    // The name for 0 to 147, "Unknown" for any other index.
    static std::string GenreText(rt::Integer index);

    // Fills a combo with the 148 genre names and selects one (0 when out of range). The combo is
    // any list control of the kit with Clear(), AddItem(text) and setListIndex(index).
    template <class Combo>
    void FillComboGenre(Combo &combo, rt::Integer selected) const
    {
        if (selected < rt::Integer(0) || selected > rt::Integer(147))
            selected = 0;
        combo.Clear();
        for (int i = 0; i <= 147; ++i)
            combo.AddItem(GenreText(i));
        combo.setListIndex(selected.value());
    }

    // Field widths of the tag record, in file order; the record is 125 bytes with the genre.
    static constexpr int TitleWidth = 30;
    static constexpr int ArtistWidth = 30;
    static constexpr int AlbumWidth = 30;
    static constexpr int YearWidth = 4;
    static constexpr int CommentsWidth = 30;
    static constexpr int RecordSize = TitleWidth + ArtistWidth + AlbumWidth + YearWidth + CommentsWidth + 1;

private:
    void reset();
    void readTag();
    // Writes over the file from the tag's first byte; false on any file error.
    bool writeFromTagStart(const std::string &bytes);
    void analyseHeader();
    std::string record() const;

    std::string m_FileName;
    // Fixed strings, held as their Windows-1252 bytes at full width.
    std::string m_Title;
    std::string m_Artist;
    std::string m_Album;
    std::string m_Year;
    std::string m_Comments;
    uint8_t m_Genre = 12;

    rt::Long m_FileBytes;
    rt::Integer m_Seconds;
    rt::Integer m_MpegVersion;
    rt::Integer m_LayerVersion;
    rt::Integer m_Kbits;
    rt::Long m_Frames;
    rt::Long m_Hz;
    std::string m_Mode;
    std::string m_PrivateBit;
    std::string m_CRCs;
    std::string m_Copyrighted;
    std::string m_Original;
    std::string m_Emphasis;
    rt::Integer m_Channels;
    std::string m_InfoString;
};

} // namespace mp3
