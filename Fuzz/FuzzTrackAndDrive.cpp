// Any text as a path of the plug-in: what comes out must be usable, and the same each time.

#include "FuzzCheck.h"
#include "THCDAInputSource.h"
#include <cstddef>
#include <cstdint>

static constexpr int UNTOUCHED = -77;

struct PATH_PARTS
{
    bool bGood = false;
    LyString strDrive;
    int nTrack = UNTOUCHED;
};

static PATH_PARTS Split(const LyString& strPath)
{
    PATH_PARTS parts;
    parts.strDrive = L"as before";
    parts.bGood = CTHCDAInputSource::GetTrackAndDrive(strPath, parts.strDrive, parts.nTrack);
    return parts;
}

// The first byte chooses how many of the rest make one character, so that all planes come up.
static LyString MakePath(const uint8_t* pData, size_t nBytes)
{
    LyString strPath;
    const size_t nStep = nBytes > 0 && pData[0] == 1 ? 3 : 1;
    for (size_t i = nStep == 3; i + nStep <= nBytes; i += nStep)
    {
        unsigned int nCharacter = 0;
        for (size_t j = 0; j < nStep; j++)
            nCharacter = nCharacter << 8 | pData[i + j];
        if (nCharacter == 0)
            break; // paths come in as text with a terminator
        strPath += static_cast<wchar_t>(nCharacter);
    }
    return strPath;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nBytes)
{
    const LyString strPath = MakePath(pData, nBytes);
    const LyString strBefore(static_cast<const wchar_t*>(strPath));
    const PATH_PARTS parts = Split(strPath);
    Check(strPath == strBefore);
    const bool bURL = strPath.BeginsWith(L"cda://", true);
    if (parts.bGood)
        Check(!parts.strDrive.IsEmpty() && parts.strDrive != L"as before");
    if (parts.nTrack != UNTOUCHED)
        Check(bURL && strPath.Find(L',') >= 0);
    if (parts.bGood && bURL && strPath.FindNoCase(L"Track", 0) < 0)
        Check(parts.nTrack >= 1 && parts.nTrack <= 99);
    const PATH_PARTS again = Split(strPath);
    Check(again.bGood == parts.bGood && again.strDrive == parts.strDrive && again.nTrack == parts.nTrack);
    return 0;
}
