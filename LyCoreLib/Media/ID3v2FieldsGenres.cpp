// The names of genres: the published list of ID3v1 (ID3v2.3.0, appendix A) with the extensions of players.
//
// Deliberate: the spellings of 40, 128, 133, 136 and 140 are this system's own, and 67 and 123 are written as here.
// Fields hold these names, and libraries are sorted by them.

#include "ID3v2FieldsDetails.h"
#include <iterator>

namespace
{
constexpr const wchar_t* s_Genres[] = {
    L"Blues", // 0
    L"Classic Rock",
    L"Country",
    L"Dance",
    L"Disco",
    L"Funk",
    L"Grunge",
    L"Hip-Hop",
    L"Jazz",
    L"Metal",
    L"New Age", // 10
    L"Oldies",
    L"Other",
    L"Pop",
    L"R&B",
    L"Rap",
    L"Reggae",
    L"Rock",
    L"Techno",
    L"Industrial",
    L"Alternative", // 20
    L"Ska",
    L"Death Metal",
    L"Pranks",
    L"Soundtrack",
    L"Euro-Techno",
    L"Ambient",
    L"Trip-Hop",
    L"Vocal",
    L"Jazz+Funk",
    L"Fusion", // 30
    L"Trance",
    L"Classical",
    L"Instrumental",
    L"Acid",
    L"House",
    L"Game",
    L"Sound Clip",
    L"Gospel",
    L"Noise",
    L"Alt. Rock", // 40
    L"Bass",
    L"Soul",
    L"Punk",
    L"Space",
    L"Meditative",
    L"Instrumental Pop",
    L"Instrumental Rock",
    L"Ethnic",
    L"Gothic",
    L"Darkwave", // 50
    L"Techno-Industrial",
    L"Electronic",
    L"Pop-Folk",
    L"Eurodance",
    L"Dream",
    L"Southern Rock",
    L"Comedy",
    L"Cult",
    L"Gangsta",
    L"Top 40", // 60
    L"Christian Rap",
    L"Pop/Funk",
    L"Jungle",
    L"Native American",
    L"Cabaret",
    L"New Wave",
    L"Psychadelic",
    L"Rave",
    L"Showtunes",
    L"Trailer", // 70
    L"Lo-Fi",
    L"Tribal",
    L"Acid Punk",
    L"Acid Jazz",
    L"Polka",
    L"Retro",
    L"Musical",
    L"Rock & Roll",
    L"Hard Rock",
    L"Folk", // 80
    L"Folk-Rock",
    L"National Folk",
    L"Swing",
    L"Fast Fusion",
    L"Bebob",
    L"Latin",
    L"Revival",
    L"Celtic",
    L"Bluegrass",
    L"Avantgarde", // 90
    L"Gothic Rock",
    L"Progressive Rock",
    L"Psychedelic Rock",
    L"Symphonic Rock",
    L"Slow Rock",
    L"Big Band",
    L"Chorus",
    L"Easy Listening",
    L"Acoustic",
    L"Humour", // 100
    L"Speech",
    L"Chanson",
    L"Opera",
    L"Chamber Music",
    L"Sonata",
    L"Symphony",
    L"Booty Bass",
    L"Primus",
    L"Porn Groove",
    L"Satire", // 110
    L"Slow Jam",
    L"Club",
    L"Tango",
    L"Samba",
    L"Folklore",
    L"Ballad",
    L"Power Ballad",
    L"Rhythmic Soul",
    L"Freestyle",
    L"Duet", // 120
    L"Punk Rock",
    L"Drum Solo",
    L"Acapella",
    L"Euro-House",
    L"Dance Hall",
    L"Goa",
    L"Drum & Bass",
    L"Club House",
    L"Hardcore",
    L"Terror", // 130
    L"Indie",
    L"BritPop",
    L"Black Punk",
    L"Polsk Punk",
    L"Beat",
    L"Christian Gangsta",
    L"Heavy Metal",
    L"Black Metal",
    L"Crossover",
    L"Contemporary C", // 140
    L"Christian Rock",
    L"Merengue",
    L"Salsa",
    L"Thrash Metal",
    L"Anime",
    L"JPop",
    L"Synthpop",
};
static_assert(std::size(s_Genres) == ID3v2Values::LAST_GENRE + 1);
} // namespace

const wchar_t* ID3v2Values::GetGenreName(int nGenre)
{
    return nGenre >= 0 && nGenre <= LAST_GENRE ? s_Genres[nGenre] : nullptr;
}
