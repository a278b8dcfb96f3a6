#include "ID3v2RawTag.h"

void ID3v2RawTag::Keep()
{
    if (!IsThere() || !m_Kept.FromBuffer(m_pBytes, m_nBytes))
        m_nBytes = 0; // nobody finds it again
    m_pBuffer = &m_Kept;
    m_pBytes = m_Kept.GetData();
}
