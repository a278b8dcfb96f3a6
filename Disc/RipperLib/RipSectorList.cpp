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
    int nTotal = 0;
    for (int i = nIndex; i < GetSize(); ++i)
        nTotal += (*this)[i].nSectors;
    return nTotal;
}

int RipSectorList::GetRemainingSectors(int nIndex) const { return GetTotalSectors(nIndex); }
