#include "RipSectorList.h"

int RipSectorList::GetStartSector(int nIndex) const
{
    return nIndex >= 0 && nIndex < GetSize() ? (*this)[nIndex].nStartSector : -1;
}

int RipSectorList::GetNumSectors(int nIndex) const
{
    return nIndex >= 0 && nIndex < GetSize() ? (*this)[nIndex].nSectors : -1;
}

int RipSectorList::GetTrackNum(int nIndex) const
{
    return nIndex >= 0 && nIndex < GetSize() ? (*this)[nIndex].nTrack : -1;
}

int RipSectorList::GetTotalSectors(int nIndex) const
{
    unsigned int nTotal = 0; // wraps, where lengths are no lengths
    for (int i = nIndex; i < GetSize(); ++i)
        nTotal += static_cast<unsigned int>((*this)[i].nSectors);
    return static_cast<int>(nTotal);
}

int RipSectorList::GetRemainingSectors(int nIndex) const { return GetTotalSectors(nIndex); }
