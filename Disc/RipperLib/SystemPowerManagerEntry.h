// CSystemPowerManagerEntry: keeps the machine from sleeping for the length of a scope. Without a power service it does
// nothing.

#pragma once

#include "ISystemPowerManager.h"
#include "LySharedToolsHelper.h"

class CSystemPowerManagerEntry
{
public:
    CSystemPowerManagerEntry() = default; // holds nothing
    explicit CSystemPowerManagerEntry(const LyString& strName)
    {
        if (ISystemPowerManager* pManager = GetSystemPowerManager(true))
        {
            const unsigned long long nEntry = static_cast<unsigned long long>(pManager->Acquire(strName, 1, 0));
            m_nFirst = static_cast<int>(nEntry & 0xffffffffU);
            m_nSecond = static_cast<int>(nEntry >> 32);
        }
    }
    ~CSystemPowerManagerEntry()
    {
        ISystemPowerManager* pManager = m_nFirst != 0 ? GetSystemPowerManager(false) : nullptr;
        if (pManager != nullptr)
            pManager->Release(m_nFirst, m_nSecond);
    }
    CSystemPowerManagerEntry(const CSystemPowerManagerEntry&) = delete;
    CSystemPowerManagerEntry& operator=(const CSystemPowerManagerEntry&) = delete;

    int m_nFirst = 0; // the two halves of what Acquire answered; 0 means that nothing is held
    int m_nSecond = 0;
};
