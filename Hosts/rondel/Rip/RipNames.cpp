#include "RipNames.h"
#include "CDUnits.h"
#include "HostError.h"
#include <algorithm>
#include <filesystem>
#include <map>

namespace
{
constexpr const char* NAMELESS = "rip"; // a disc without a title

using TAGS = std::vector<std::pair<std::string, std::string>>;

int CountTracks(const RIP_REPORT& report)
{
    const std::vector<CD_LAYOUT_TRACK>& aryTracks = report.disc.layout.m_aryTracks;
    return aryTracks.empty() ? 0 : aryTracks.back().m_nNumber;
}

NAME_FIELDS GetFields(const RIP_REPORT& report, const RIP_PIECE& piece)
{
    NAME_FIELDS fields;
    fields.strAlbum = report.disc.strTitle;
    fields.strAlbumArtist = report.disc.strPerformer;
    fields.strTitle = piece.strTitle;
    fields.strArtist = piece.strPerformer;
    fields.strISRC = piece.strISRC;
    fields.nTrack = piece.nTrack;
    fields.nTracks = CountTracks(report);
    return fields;
}

// All that an encoder may be told; what is empty takes away what the file before it had.
TAGS GetTags(const RIP_REPORT& report, const RIP_PIECE* pPiece)
{
    const RIP_DISC& disc = report.disc;
    if (pPiece == nullptr)
        return {{"Title", disc.strTitle},
                {"Artist", disc.strPerformer},
                {"Album", disc.strTitle},
                {"Album Artist", disc.strPerformer}};
    const std::string strTrack =
        pPiece->nTrack > 0 ? std::to_string(pPiece->nTrack) + "/" + std::to_string(CountTracks(report)) : "";
    return {{"Title", pPiece->strTitle},
            {"Artist", pPiece->strPerformer.empty() ? disc.strPerformer : pPiece->strPerformer},
            {"Album", disc.strTitle},
            {"Album Artist", disc.strPerformer},
            {"Track", strTrack},
            {"ISRC", pPiece->strISRC}};
}

std::filesystem::path GetCommonFolder(const std::vector<std::string>& aryNames)
{
    std::filesystem::path common = std::filesystem::path(aryNames[0]).parent_path();
    for (const std::string& strName : aryNames)
    {
        const std::filesystem::path folder = std::filesystem::path(strName).parent_path();
        const auto [pEnd, pOther] = std::mismatch(common.begin(), common.end(), folder.begin(), folder.end());
        std::filesystem::path shared;
        for (auto p = common.begin(); p != pEnd; ++p)
            shared /= *p;
        common = shared;
    }
    return common;
}

// The names of all pieces, without suffixes, from the folder that the user named.
std::vector<std::string> ExpandNames(const RIP_REPORT& report, const RIP_NAME_WISHES& wishes)
{
    std::vector<std::string> aryNames;
    for (const RIP_PIECE& piece : report.aryPieces)
        aryNames.push_back(ExpandNameTemplate(wishes.strTemplate, GetFields(report, piece)));
    MakeNamesDistinct(aryNames);
    return aryNames;
}

RIP_ORDER MakeOrder(const RIP_ENCODER_FACTS& encoder, const std::string& strName, const RIP_NAMES& names,
                    const RIP_NAME_WISHES& wishes)
{
    RIP_ORDER order;
    order.nGroup = names.aryGroups.size();
    order.file.strName = strName + "." + encoder.strSuffix;
    order.file.strEncoder = encoder.strName;
    order.file.strLibrary = encoder.strLibrary;
    order.file.strSettings = encoder.strSettings;
    order.strPath = names.GetPath(order.file.strName);
    order.strPicture = wishes.strPicture;
    return order;
}

long long CountFrames(const RIP_PIECE& piece) { return static_cast<long long>(piece.nSectors) * LY_CD_SECTOR_FRAMES; }

// Two encoders whose files end alike would write the same names.
void CheckSuffixes(const std::vector<RIP_ENCODER_FACTS>& aryEncoders)
{
    std::map<std::string, std::string> mapNames;
    for (const RIP_ENCODER_FACTS& encoder : aryEncoders)
    {
        const auto [pFound, bNew] = mapNames.emplace(encoder.strSuffix, encoder.strName);
        if (!bNew)
            throw HostError("--encoder " + pFound->second + " and --encoder " + encoder.strName +
                            " would both make files that end in ." + encoder.strSuffix +
                            "; leave one of them out, or give a command its own suffix with cmd.SUFFIX=COMMAND.");
    }
}

// The files of one piece.
RIP_GROUP MakePieceGroup(const RIP_REPORT& report, size_t nPiece, const std::string& strName,
                         const std::vector<RIP_ENCODER_FACTS>& aryEncoders, const RIP_NAMES& names,
                         const RIP_NAME_WISHES& wishes)
{
    RIP_GROUP group{{nPiece}, {}};
    for (const RIP_ENCODER_FACTS& encoder : aryEncoders)
    {
        RIP_ORDER order = MakeOrder(encoder, strName, names, wishes);
        order.nFrames = CountFrames(report.aryPieces[nPiece]);
        order.aryTags = GetTags(report, &report.aryPieces[nPiece]);
        group.aryOrders.push_back(order);
    }
    return group;
}

// All pieces in one file, and its cue sheet.
void AddImage(const RIP_REPORT& report, const std::vector<RIP_ENCODER_FACTS>& aryEncoders, RIP_NAMES& names,
              const RIP_NAME_WISHES& wishes)
{
    RIP_GROUP image;
    for (size_t nPiece = 0; nPiece < report.aryPieces.size(); ++nPiece)
        image.aryPieces.push_back(nPiece);
    for (const RIP_ENCODER_FACTS& encoder : aryEncoders)
    {
        RIP_ORDER order = MakeOrder(encoder, names.strBase, names, wishes);
        for (const RIP_PIECE& piece : report.aryPieces)
            order.nFrames += CountFrames(piece);
        order.aryTags = GetTags(report, nullptr);
        image.aryOrders.push_back(order);
        names.aryCues.push_back(names.strBase + (aryEncoders.size() > 1 ? "." + encoder.strSuffix : "") + ".cue");
    }
    names.aryGroups.push_back(image);
}
} // namespace

std::vector<std::string> RIP_NAMES::GetAll() const
{
    std::vector<std::string> aryAll;
    for (const RIP_GROUP& group : aryGroups)
        for (const RIP_ORDER& order : group.aryOrders)
            aryAll.push_back(order.strPath);
    for (const std::string& strCue : aryCues)
        aryAll.push_back(GetPath(strCue));
    aryAll.insert(aryAll.end(), {GetLog(), GetJson(), GetHtml()});
    return aryAll;
}

RIP_NAMES MakeRipNames(const RIP_REPORT& report, const std::vector<RIP_ENCODER_FACTS>& aryEncoders,
                       const RIP_NAME_WISHES& wishes)
{
    CheckSuffixes(aryEncoders);
    RIP_NAMES names;
    const std::vector<std::string> aryNames = ExpandNames(report, wishes);
    const std::filesystem::path common = GetCommonFolder(aryNames);
    std::filesystem::path folder = std::filesystem::path(wishes.strTo.empty() ? "." : wishes.strTo) / common;
    names.strFolder = folder.has_filename() ? folder.string() : folder.parent_path().string();
    names.strBase = report.disc.strTitle.empty()
                        ? NAMELESS
                        : MakeSafeName(report.disc.strTitle, NAME_MAX_BYTES - NAME_SUFFIX_BYTES);

    if (wishes.bImage)
    {
        AddImage(report, aryEncoders, names, wishes);
        return names;
    }
    for (size_t nPiece = 0; nPiece < aryNames.size(); ++nPiece)
    {
        const std::string strName = common.empty()
                                        ? aryNames[nPiece]
                                        : std::filesystem::path(aryNames[nPiece]).lexically_relative(common).string();
        names.aryGroups.push_back(MakePieceGroup(report, nPiece, strName, aryEncoders, names, wishes));
    }
    return names;
}
