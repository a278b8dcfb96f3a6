#include "ReportHtmlSeries.h"
#include "CDUnits.h"
#include <algorithm>
#include <cmath>

namespace ReportHtml
{
namespace
{
constexpr int LOUDNESS_VALUES_PER_SECOND = 10;
constexpr double FULL_SCALE = 32768; // of 16 bits

int GetUnit(double f, double fTop, double fBottom, int nUnits)
{
    const double fPart = (fTop - f) / (fTop - fBottom);
    if (std::isnan(fPart))
        return nUnits;
    return static_cast<int>(std::lround(std::clamp(fPart, 0.0, 1.0) * nUnits));
}

// Numbers of a path need a space between them only where no sign parts them.
void AppendNumber(std::string& strPath, int n, bool bFirst)
{
    if (!bFirst && n >= 0)
        strPath += ' ';
    strPath += std::to_string(n);
}

// The heights of a run of columns as relative steps of one column each, forwards or backwards.
void AppendSteps(std::string& strPath, const std::vector<int>& aryUnits, bool bBackwards)
{
    strPath += 'l';
    for (size_t i = 1; i < aryUnits.size(); ++i)
    {
        AppendNumber(strPath, bBackwards ? -1 : 1, i == 1);
        AppendNumber(strPath, aryUnits[i] - aryUnits[i - 1], false);
    }
}

// Calls with the first column and the one behind the last, for each run of known columns.
template <class FUNCTION>
void ForEachRun(const COLUMNS& columns, FUNCTION function)
{
    for (size_t i = 0; i < columns.size();)
    {
        size_t nEnd = i;
        while (nEnd < columns.size() && columns[nEnd].bKnown)
            ++nEnd;
        if (nEnd > i)
            function(i, nEnd);
        i = std::max(nEnd, i + 1);
    }
}

// The heights of a run; the last one twice, so that the last column is as wide as the others.
template <class FUNCTION>
std::vector<int> GetRunUnits(size_t nFirst, size_t nEnd, FUNCTION getUnit)
{
    std::vector<int> aryUnits;
    aryUnits.reserve(nEnd - nFirst + 1);
    for (size_t i = nFirst; i < nEnd; ++i)
        aryUnits.push_back(getUnit(i));
    aryUnits.push_back(aryUnits.back());
    return aryUnits;
}

std::string GetMove(size_t nColumn, int nUnit) { return "M" + std::to_string(nColumn) + " " + std::to_string(nUnit); }

std::vector<MARK> Join(const std::vector<MARK>& aryMarks, long long nGap)
{
    std::vector<MARK> aryJoined;
    for (const MARK& mark : aryMarks)
    {
        if (aryJoined.empty() || mark.nFirst - aryJoined.back().nEnd >= nGap)
        {
            aryJoined.push_back(mark);
            continue;
        }
        aryJoined.back().nEnd = std::max(aryJoined.back().nEnd, mark.nEnd);
        aryJoined.back().nPlaces += mark.nPlaces;
    }
    return aryJoined;
}
} // namespace

void COLUMN::Add(double fFrom, double fTo)
{
    const auto [fMin, fMax] = std::minmax(fFrom, fTo);
    fLow = bKnown ? std::min(fLow, fMin) : fMin;
    fHigh = bKnown ? std::max(fHigh, fMax) : fMax;
    bKnown = true;
}

COLUMNS ThinWave(const RIP_PIECE& piece, int nColumns)
{
    const long long nStretch = std::max(piece.series.nWaveSectors, 1);
    const long long nAll = (std::max(piece.nSectors, 0) + nStretch - 1) / nStretch;
    COLUMNS columns(static_cast<size_t>(std::min<long long>(nAll, nColumns)));
    const long long nPoints = std::min<long long>(nAll, static_cast<long long>(piece.series.aryWave.size()));
    for (long long i = 0; i < nPoints; ++i)
    {
        const RIP_WAVE_POINT& point = piece.series.aryWave[static_cast<size_t>(i)];
        const long long nColumn = i * static_cast<long long>(columns.size()) / nAll;
        columns[static_cast<size_t>(nColumn)].Add(point.nLow / FULL_SCALE, point.nHigh / FULL_SCALE);
    }
    return columns;
}

COLUMNS ThinLoudness(const RIP_PIECE& piece, const std::vector<float>& aryValues, int nColumns)
{
    const long long nTenths = static_cast<long long>(std::max(piece.nSectors, 0)) * LOUDNESS_VALUES_PER_SECOND;
    const long long nAll = (nTenths + LY_CD_SECTORS_PER_SECOND - 1) / LY_CD_SECTORS_PER_SECOND;
    COLUMNS columns(static_cast<size_t>(std::min<long long>(nAll, nColumns)));
    const long long nValues = std::min<long long>(nAll, static_cast<long long>(aryValues.size()));
    for (long long i = 0; i < nValues; ++i)
    {
        const double f = aryValues[static_cast<size_t>(i)];
        const double fShown = std::isnan(f) ? LOUDNESS_BOTTOM : std::clamp(f, LOUDNESS_BOTTOM, LOUDNESS_TOP);
        columns[static_cast<size_t>(i * static_cast<long long>(columns.size()) / nAll)].Add(fShown, fShown);
    }
    return columns;
}

COLUMNS ThinSpeed(const RIP_REPORT& report, long long nFirst, long long nEnd, int nColumns)
{
    const long long nAll = std::max(nEnd - nFirst, 0LL);
    const long long nCount = std::min<long long>(nAll, nColumns);
    COLUMNS columns(static_cast<size_t>(nCount));
    for (const RIP_PIECE& piece : report.aryPieces)
    {
        long long nBlock = piece.nStart;
        for (const RIP_SPEED_POINT& point : piece.series.arySpeed)
        {
            const long long nLast = point.nSector - 1LL;
            const long long nFrom = std::clamp(std::min(nBlock, nLast), nFirst, nEnd) - nFirst;
            nBlock = point.nSector;
            if (nLast < nFirst || nLast >= nEnd || !std::isfinite(point.fSpeed) || point.fSpeed < 0)
                continue;
            for (long long i = nFrom * nCount / nAll; i <= (nLast - nFirst) * nCount / nAll; ++i)
                columns[static_cast<size_t>(i)].Add(static_cast<double>(point.fSpeed),
                                                    static_cast<double>(point.fSpeed));
        }
    }
    return columns;
}

std::string MakeBandPath(const COLUMNS& columns, double fTop, double fBottom, int nUnits)
{
    std::string strPath;
    ForEachRun(columns,
               [&](size_t nFirst, size_t nEnd)
               {
                   const auto unit = [&](double f) { return GetUnit(f, fTop, fBottom, nUnits); };
                   std::vector<int> aryUnits =
                       GetRunUnits(nFirst, nEnd, [&](size_t i) { return unit(columns[i].fHigh); });
                   strPath += GetMove(nFirst, aryUnits.front());
                   AppendSteps(strPath, aryUnits, false);
                   aryUnits = GetRunUnits(nFirst, nEnd, [&](size_t i) { return unit(columns[i].fLow); });
                   std::reverse(aryUnits.begin(), aryUnits.end());
                   strPath += "V" + std::to_string(aryUnits.front());
                   AppendSteps(strPath, aryUnits, true);
                   strPath += 'z';
               });
    return strPath;
}

std::string MakeLinePath(const COLUMNS& columns, double fTop, double fBottom, int nUnits)
{
    std::string strPath;
    ForEachRun(columns,
               [&](size_t nFirst, size_t nEnd)
               {
                   const std::vector<int> aryUnits = GetRunUnits(
                       nFirst, nEnd, [&](size_t i) { return GetUnit(columns[i].fHigh, fTop, fBottom, nUnits); });
                   strPath += GetMove(nFirst, aryUnits.front());
                   AppendSteps(strPath, aryUnits, false);
               });
    return strPath;
}

std::vector<MARK> GetMarks(const RIP_PIECE& piece, bool bBad)
{
    std::vector<MARK> aryMarks;
    const long long nPieceEnd = static_cast<long long>(piece.nStart) + piece.nSectors;
    for (const SECURE_RIP_ENTRY& entry : piece.aryEntries)
    {
        const long long nFirst = std::max<long long>(entry.nSector, piece.nStart);
        const long long nEnd = std::min(static_cast<long long>(entry.nSector) + entry.nSectors, nPieceEnd);
        if (entry.IsBad() == bBad && nEnd > nFirst)
            aryMarks.push_back({nFirst, nEnd, 1, entry.nStatus});
    }
    std::sort(aryMarks.begin(), aryMarks.end(),
              [](const MARK& a, const MARK& b)
              { return a.nFirst != b.nFirst ? a.nFirst < b.nFirst : a.nEnd > b.nEnd; });
    aryMarks = Join(aryMarks, 0);
    for (long long nGap = 1; aryMarks.size() > MAX_MARKS; nGap *= 2)
        aryMarks = Join(aryMarks, nGap);
    return aryMarks;
}
} // namespace ReportHtml
