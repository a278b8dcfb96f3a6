#include "MP3Tag.h"
#include <cstring>

CID3v2Field::CID3v2Field(const char* pID, const LyString& strName, const LyString& strDescription, int nFlags,
                         int nPictureType)
    : m_strName(strName), m_strDescription(strDescription), m_nFlags(nFlags), m_nPictureType(nPictureType)
{
    memcpy(m_ID, pID, sizeof m_ID);
}
