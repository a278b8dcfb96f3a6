// The snapshot of an open drive, and the packed form of its mode pages.

#include "LyBuffer.h"
#include "LySCSIBase.h"
#include <cstring>

DRIVE_INFO::DRIVE_INFO() { Reset(); }

void DRIVE_INFO::Reset()
{
    m_strPath.Empty();
    m_strModel.Empty();
    m_strVendor.Empty();
    m_strExtra.Empty();
    m_SenseMask = DSENSEMASK();
    m_bStateA = 0;
    m_nValueA = DEFAULT_VALUE;
    m_nValueB = DEFAULT_VALUE;
    m_bStateB = 1;
}

// Copies the next block if it is there whole, and moves on behind it; otherwise the next block is tried at this place.
template <int nBlockBytes>
static void TakeBlock(const LyBuffer& data, int& nPosition, unsigned char (&block)[nBlockBytes])
{
    if (data.GetSize() - nPosition < nBlockBytes)
        return;
    memcpy(block, data.GetData() + nPosition, nBlockBytes);
    nPosition += nBlockBytes;
}

static void TakeFlag(const LyBuffer& data, int& nPosition, bool& bFlag)
{
    bFlag = false;
    if (nPosition < data.GetSize())
        bFlag = data.GetData()[nPosition++] != 0;
}

void DSENSEMASK::InitFromPackedData(LyString strPacked)
{
    LyBuffer data;
    (void)data.FromStringHexDigits(strPacked); // no digits leave no bytes, which is all that counts here

    int nPosition = 0;
    TakeBlock(data, nPosition, m_Page1);
    TakeBlock(data, nPosition, m_CDParamsPage);
    TakeBlock(data, nPosition, m_CapabilitiesPage);
    TakeBlock(data, nPosition, m_Page4);
    TakeFlag(data, nPosition, m_bPage1Valid);
    TakeFlag(data, nPosition, m_bCDParamsValid);
    TakeFlag(data, nPosition, m_bCapabilitiesValid);
    TakeFlag(data, nPosition, m_bPage4Valid);
}
