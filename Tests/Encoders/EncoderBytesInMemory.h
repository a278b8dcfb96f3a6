// An encoded file in memory, for the checks of files.

#pragma once

#include "EncoderOutput.h"
#include <algorithm>
#include <cstring>
#include <string>

class EncoderBytesInMemory final : public EncoderBytes
{
public:
    explicit EncoderBytesInMemory(std::string strData) : m_strData(std::move(strData)) {}
    uint64_t GetLength() override { return m_strData.size(); }
    size_t ReadAt(uint64_t nOffset, void* pData, size_t nBytes) override
    {
        const size_t nRead = nOffset >= m_strData.size() ? 0 : std::min<size_t>(nBytes, m_strData.size() - nOffset);
        if (nRead > 0)
            std::memcpy(pData, m_strData.data() + nOffset, nRead);
        return nRead;
    }
    std::string m_strData;
};
