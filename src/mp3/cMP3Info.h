#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "runtime/Integer.h"

namespace mp3 {

// The small tag class: reads an ID3v1 tag when FileName is set and writes one with pWriteId3Tag.
// It has no error handling of its own: a failing file operation is the caller's run-time error.
class cMP3Info {
public:
    // Setting it clears the text fields to blanks (Genre stays) and reads the tag of an existing
    // file; a file too short for a tag is a run-time error.
    const std::string &FileName() const { return m_FileName; }
    void setFileName(const std::string &name);

    // Texts longer than their field are cut on assignment; the gets drop trailing blanks only.
    std::string Title() const;
    void setTitle(std::string_view text);
    std::string Artist() const;
    void setArtist(std::string_view text);
    rt::Long Genre() const { return m_Genre; }
    void setGenre(rt::Long genre) { m_Genre = genre; }
    std::string Album() const;
    void setAlbum(std::string_view text);
    // Returned as it stands, blanks and all.
    std::string Year() const { return m_Year; }
    void setYear(std::string_view text);
    std::string Comment() const;
    void setComment(std::string_view text);

    // Writes the tag over the file's last 128 bytes and leaves the file read-only.
    void pWriteId3Tag();
    // The genre name at the index; outside the table is error 9 for the caller.
    std::string pGetGenre(rt::Long index);

private:
    void buildGenreTable();

    std::string m_FileName;
    std::string m_Title;
    std::string m_Artist;
    rt::Long m_Genre;
    std::string m_Album;
    std::string m_Year;
    std::string m_Comment;
    std::vector<std::string> m_genres;
    bool m_genresBuilt = false;
};

} // namespace mp3
