// An outside judge of tempo: the program `bpm`.

#pragma once

#include "TempFolder.h"
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

inline bool HaveTempoJudge() { return std::system("command -v bpm > /dev/null 2>&1") == 0; }

// What `bpm` says between 60 and 180, which hears raw floats of one channel; 0 if nothing.
inline double AskTempoJudge(const std::vector<short>& arySamples, int nChannels)
{
    std::vector<float> aryFloats;
    for (size_t i = 0; i < arySamples.size(); i += static_cast<size_t>(nChannels))
    {
        int nSum = 0;
        for (size_t k = i; k < i + static_cast<size_t>(nChannels); ++k)
            nSum += arySamples[k];
        aryFloats.push_back(static_cast<float>(nSum) / 32768 / static_cast<float>(nChannels));
    }
    const TempFolder folder;
    const std::string strBytes(reinterpret_cast<const char*>(aryFloats.data()), aryFloats.size() * sizeof(float));
    const std::string strCommand = "bpm -m 60 -x 180 < " + folder.Write("audio.raw", strBytes);
    FILE* pAnswer = popen(strCommand.c_str(), "r");
    if (pAnswer == nullptr)
        return 0;
    char szLine[64] = {};
    const bool bAnswered = std::fgets(szLine, sizeof szLine, pAnswer) != nullptr;
    pclose(pAnswer);
    return bAnswered ? std::strtod(szLine, nullptr) : 0;
}
