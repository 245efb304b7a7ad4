#include "GenreTables.h"

namespace mp3 {

// Split into its array on the first need; the spellings are this class's own.
std::string_view mp3InfoGenreText()
{
    static constexpr std::string_view text =
        "Blues|Classic Rock|Country|Dance|Disco|Funk|" // 0
        "Grunge|Hip-Hop|Jazz|Metal|New Age|Oldies|" // 6
        "Other|Pop|R&B|Rap|Reggae|Rock|" // 12
        "Techno|Industrial|Alternative|Ska|Death Metal|Pranks|" // 18
        "Soundtrack|Euro-Techno|Ambient|Trip Hop|Vocal|Jazz+Funk|" // 24
        "Fusion|Trance|Classical|Instrumental|Acid|House|" // 30
        "Game|Sound Clip|Gospel|Noise|Alt. Rock|Bass|" // 36
        "Soul|Punk|Space|Meditative|Instrumental Pop|Instrumental Rock|" // 42
        "Ethnic|Gothic|Darkwave|Techno-Industrial|Electronic|Pop-Folk|" // 48
        "Eurodance|Dream|Southern Rock|Comedy|Cult|Gangsta Rap|" // 54
        "Top 40|Christian Rap|Pop/Punk|Jungle|Native American|Cabaret|" // 60
        "New Wave|Phychedelic|Rave|Showtunes|Trailer|Lo-Fi|" // 66
        "Tribal|Acid Punk|Acid Jazz|Polka|Retro|Musical|" // 72
        "Rock & Roll|Hard Rock|Folk|Folk/Rock|National Folk|Swing|" // 78
        "Fast-Fusion|Bebob|Latin|Revival|Celtic|Blue Grass|" // 84
        "Avantegarde|Gothic Rock|Progressive Rock|Psychedelic Rock|Symphonic Rock|Slow Rock|" // 90
        "Big Band|Chorus|Easy Listening|Acoustic|Humour|Speech|" // 96
        "Chanson|Opera|Chamber Music|Sonata|Symphony|Booty Bass|" // 102
        "Primus|Porn Groove|Satire|Slow Jam|Club|Tango|" // 108
        "Samba|Folklore|Ballad|power Ballad|Rhythmic Soul|Freestyle|" // 114
        "Duet|Punk Rock|Drum Solo|A Capella|Euro-House|Dance Hall|" // 120
        "Goa|Drum & Bass|Club-House|Hardcore|Terror|indie|" // 126
        "Brit Pop|Negerpunk|Polsk Punk|Beat|Christian Gangsta Rap|Heavy Metal|" // 132
        "Black Metal|Crossover|Comteporary Christian|Christian Rock|Merengue|Salsa|" // 138
        "Trash Metal|Anime|JPop|Synth Pop" // 144
        ;
    return text;
}

} // namespace mp3
