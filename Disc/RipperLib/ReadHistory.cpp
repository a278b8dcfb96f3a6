#include "ReadHistory.h"
#include <algorithm>
#include <new>
#include <stdexcept>

bool ReadHistory::Reset(int nCacheSectors, int nDiscSectors)
{
    m_nCacheSectors = std::max(0, nCacheSectors);
    m_nRead = 0;
    try
    {
        m_aryLastRead.assign(m_nCacheSectors > 0 ? static_cast<size_t>(std::max(0, nDiscSectors)) : 0, 0);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    catch (const std::length_error&)
    {
        return false;
    }
}

bool ReadHistory::MayHold(int nSector, int nCount) const
{
    for (int n = std::max(0, nSector); n - nSector < nCount && static_cast<size_t>(n) < m_aryLastRead.size(); ++n)
    {
        const unsigned int nLastRead = m_aryLastRead[static_cast<size_t>(n)];
        if (nLastRead != 0 && m_nRead - nLastRead < static_cast<unsigned int>(m_nCacheSectors))
            return true;
    }
    return false;
}

void ReadHistory::OnRead(int nSector, int nCount)
{
    for (int i = 0; i < nCount; ++i)
    {
        ++m_nRead;
        const int n = nSector + i;
        if (n >= 0 && static_cast<size_t>(n) < m_aryLastRead.size())
            m_aryLastRead[static_cast<size_t>(n)] = m_nRead;
    }
}
