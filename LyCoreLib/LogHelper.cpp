#include "LogHelper.h"

CLogHelper::CLogHelper(int nArea, const char* pFunctionName, bool bLogStartFinish)
    : m_nArea(nArea), m_bLogStartFinish(bLogStartFinish)
{
    m_strName.FromANSI(pFunctionName);
    if (m_bLogStartFinish)
        Log("Start");
}

CLogHelper::~CLogHelper()
{
    if (!m_bLogStartFinish || GetLogManager(false) == nullptr)
        return;
    int nElapsedMS = static_cast<int>(m_Timer.GetElapsedMS(false));
    if (m_nResult == RESULT_NOT_SET)
        Log("Finish (%d ms)", nElapsedMS);
    else
        Log("Finish (result: %d) (%d ms)", m_nResult, nElapsedMS);
}

// The text stays narrow: the manager widens it, if it writes it at all.
void CLogHelper::Log(const char* pText)
{
    if (ILogManager* pManager = GetLogManager(false))
        pManager->Log(m_nArea, m_strName, pText, nullptr, 0);
}

void CLogHelper::Log(const char* pFormat, CFormatArgument a, CFormatArgument b, CFormatArgument c, CFormatArgument d)
{
    ILogManager* pManager = GetLogManager(false);
    if (pManager == nullptr)
        return;
    CFormatArgument* aryArgs[] = {&a, &b, &c, &d};
    pManager->Log(m_nArea, m_strName, pFormat, aryArgs, static_cast<int>(sizeof aryArgs / sizeof aryArgs[0]));
}

void CLogHelper::Log(int nArea, const LyString& strName, const wchar_t* pFormat, CFormatArgument a1, CFormatArgument a2,
                     CFormatArgument a3, CFormatArgument a4, CFormatArgument a5, CFormatArgument a6, CFormatArgument a7,
                     CFormatArgument a8, CFormatArgument a9, CFormatArgument a10, CFormatArgument a11,
                     CFormatArgument a12, CFormatArgument a13, CFormatArgument a14, CFormatArgument a15,
                     CFormatArgument a16, CFormatArgument a17, CFormatArgument a18, CFormatArgument a19,
                     CFormatArgument a20)
{
    ILogManager* pManager = GetLogManager(false);
    if (pManager == nullptr)
        return;
    CFormatArgument* aryArgs[] = {&a1,  &a2,  &a3,  &a4,  &a5,  &a6,  &a7,  &a8,  &a9,  &a10,
                                  &a11, &a12, &a13, &a14, &a15, &a16, &a17, &a18, &a19, &a20};
    pManager->Log(nArea, strName, pFormat, aryArgs, static_cast<int>(sizeof aryArgs / sizeof aryArgs[0]));
}
