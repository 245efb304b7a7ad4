#include "cMP3Info.h"

#include "GenreTables.h"
#include "runtime/Paths.h"
#include "runtime/RuntimeError.h"
#include "runtime/Strings.h"
#include "runtime/TextFile.h"

namespace mp3 {

namespace {

constexpr long TitleWidth = 30;
constexpr long ArtistWidth = 30;
constexpr long AlbumWidth = 30;
constexpr long YearWidth = 4;
constexpr long CommentWidth = 30;

std::string trimmed(const std::string &text)
{
    const size_t last = text.find_last_not_of(' ');
    return last == std::string::npos ? std::string() : text.substr(0, last + 1);
}

// Positions at or before the file's start are the platform's "Bad record number".
void requirePosition(int64_t position)
{
    if (position < 1)
        rt::raise(rt::ErrBadRecordNumber);
}

} // namespace

void cMP3Info::buildGenreTable()
{
    m_genres.clear();
    const std::string_view text = mp3InfoGenreText();
    size_t start = 0;
    while (true) {
        const size_t bar = text.find('|', start);
        m_genres.emplace_back(text.substr(start, bar == std::string_view::npos ? std::string_view::npos : bar - start));
        if (bar == std::string_view::npos)
            break;
        start = bar + 1;
    }
    m_genresBuilt = true;
}

void cMP3Info::setFileName(const std::string &name)
{
    if (!m_genresBuilt)
        buildGenreTable();
    m_FileName = name;
    m_Title = rt::Space(TitleWidth);
    m_Artist = rt::Space(ArtistWidth);
    m_Album = rt::Space(AlbumWidth);
    m_Year = rt::Space(YearWidth);
    m_Comment = rt::Space(CommentWidth);
    if (!rt::fileExists(name))
        return;
    rt::BinaryFile file(name, rt::BinaryFile::Mode::Read);
    const int64_t position = file.length() - 127;
    requirePosition(position);
    const std::string tag = file.get(position, 128);
    file.close();
    // Exactly "TAG": this class takes no other spelling for a tag.
    if (tag.compare(0, 3, "TAG") != 0)
        return;
    m_Title = rt::fromAnsi(tag.substr(3, TitleWidth));
    m_Artist = rt::fromAnsi(tag.substr(33, ArtistWidth));
    m_Album = rt::fromAnsi(tag.substr(63, AlbumWidth));
    m_Year = rt::fromAnsi(tag.substr(93, YearWidth));
    m_Comment = rt::fromAnsi(tag.substr(97, CommentWidth));
    m_Genre = static_cast<unsigned char>(tag[127]);
}

std::string cMP3Info::Title() const { return trimmed(m_Title); }
void cMP3Info::setTitle(std::string_view text) { m_Title = rt::Left(text, TitleWidth); }
std::string cMP3Info::Artist() const { return trimmed(m_Artist); }
void cMP3Info::setArtist(std::string_view text) { m_Artist = rt::Left(text, ArtistWidth); }
std::string cMP3Info::Album() const { return trimmed(m_Album); }
void cMP3Info::setAlbum(std::string_view text) { m_Album = rt::Left(text, AlbumWidth); }
void cMP3Info::setYear(std::string_view text) { m_Year = rt::Left(text, YearWidth); }
std::string cMP3Info::Comment() const { return trimmed(m_Comment); }
void cMP3Info::setComment(std::string_view text) { m_Comment = rt::Left(text, CommentWidth); }

void cMP3Info::pWriteId3Tag()
{
    rt::setReadOnly(m_FileName, false);
    rt::BinaryFile file(m_FileName, rt::BinaryFile::Mode::ReadWrite);
    const int64_t length = file.length();
    requirePosition(length - 127);
    file.put(length - 127, "TAG");
    auto putField = [&](int64_t position, const std::string &value, long width) {
        file.put(position, rt::toAnsi(value + rt::Space(width - rt::Len(value))));
    };
    putField(length - 124, Title(), TitleWidth);
    putField(length - 94, Artist(), ArtistWidth);
    putField(length - 64, Album(), AlbumWidth);
    putField(length - 34, Year(), YearWidth);
    putField(length - 30, Comment(), CommentWidth);
    const char genre = m_Genre == rt::Long(-1) ? static_cast<char>(255) : static_cast<char>(m_Genre.value() & 255);
    file.put(length, std::string(1, genre));
    file.close();
    // Deliberate: only this routine lifts the attribute again for the next write.
    rt::setReadOnly(m_FileName, true);
}

std::string cMP3Info::pGetGenre(rt::Long index)
{
    if (!m_genresBuilt)
        buildGenreTable();
    const int32_t i = index.value();
    if (i < 0 || static_cast<size_t>(i) >= m_genres.size())
        rt::raise(rt::ErrSubscript);
    return m_genres[static_cast<size_t>(i)];
}

} // namespace mp3
