// Drives for tests of the disc service, by script: which are plugged in, and what each answers.

#pragma once

#include "DiscManager.h"
#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

// What stands behind a node. It is the same for every drive object of that node.
struct SCRIPTED_NODE
{
    std::string m_strLoadError;           // not empty: the drive cannot be opened
    std::string m_strAcquireError;        // not empty: it cannot be taken
    std::vector<DRIVE_SENSE> m_arySenses; // of the next commands, in turn; behind them all is good
    unsigned char m_nStateA = 1;
    bool m_bZeroes = true; // leaves the data of a failed command zeroed, as it must
    std::atomic<int> m_nLoads{0};
    std::atomic<int> m_nAcquired{0};
    std::atomic<int> m_nCommands{0};
    std::function<void()> m_OnCommand;
};

class ScriptedDrive final : public ServiceDrive
{
public:
    explicit ScriptedDrive(SCRIPTED_NODE& node) : m_Node(node) {}

    bool Load(std::string& strError) override
    {
        ++m_Node.m_nLoads;
        strError = m_Node.m_strLoadError;
        return strError.empty();
    }
    bool Acquire(std::string& strError) override
    {
        strError = m_Node.m_strAcquireError;
        m_Node.m_nAcquired += strError.empty() ? 1 : 0;
        return strError.empty();
    }
    void Release() override { --m_Node.m_nAcquired; }
    bool Send(const DRIVE_COMMAND& command, SENSE_DATA& sense) override
    {
        ++m_Node.m_nCommands;
        if (m_Node.m_OnCommand)
            m_Node.m_OnCommand();
        if (m_Node.m_arySenses.empty())
            return true;
        sense.Set(m_Node.m_arySenses.front());
        m_Node.m_arySenses.erase(m_Node.m_arySenses.begin());
        if (sense.GetCodes().IsGood())
            return true;
        if (m_Node.m_bZeroes)
            std::fill_n(command.m_pData, command.m_nDataBytes, static_cast<unsigned char>(0));
        command.m_nDataBytes = 0;
        return false;
    }
    std::string GetReadErrorText() override { return "read errors"; }
    std::string GetWarnings() override { return "warnings"; }
    DRIVE_DESCRIPTION GetDescription() override { return {}; }
    void AddUser(int) override {}
    void RemoveUser(int) override {}
    unsigned char GetStateA() override { return m_Node.m_nStateA; }
    wchar_t* GetVendor() override { return nullptr; }
    wchar_t* GetModel() override { return nullptr; }
    unsigned char GetStateB() override { return 1; }
    wchar_t* GetPackedCapabilities() override { return nullptr; }

private:
    SCRIPTED_NODE& m_Node;
};

// The machine: nodes that are plugged in, nodes that can be opened, and letters of images.
class ScriptedMachine
{
public:
    std::vector<FOUND_DRIVE> m_aryPlugged;
    std::map<std::string, SCRIPTED_NODE> m_mapNodes;
    LETTER_IMAGES m_Images;
    bool m_bChanged = false;
    int m_nLooks = 0;

    void Plug(const std::string& strNode)
    {
        m_aryPlugged.push_back({strNode, "ACME", "DVD " + strNode.substr(strNode.rfind('/') + 1), "1.0"});
        std::sort(m_aryPlugged.begin(), m_aryPlugged.end(),
                  [](const FOUND_DRIVE& a, const FOUND_DRIVE& b) { return IsNodeAhead(a.m_strNode, b.m_strNode); });
        (void)m_mapNodes[strNode];
        m_bChanged = true;
    }
    void Unplug(const std::string& strNode)
    {
        std::erase_if(m_aryPlugged, [&](const FOUND_DRIVE& drive) { return drive.m_strNode == strNode; });
        m_bChanged = true;
    }
    std::unique_ptr<DiscManager> MakeManager()
    {
        return std::make_unique<DiscManager>(
            std::make_unique<Finder>(*this),
            [this](const std::string& strPath, std::string& strError) { return MakeDrive(strPath, strError); },
            [this] { return m_Images; });
    }

private:
    class Finder final : public DriveFinder
    {
    public:
        explicit Finder(ScriptedMachine& machine) : m_Machine(machine) {}
        bool HasChanged() override { return m_Machine.m_bChanged; }
        std::vector<FOUND_DRIVE> Find() override
        {
            m_Machine.m_bChanged = false;
            ++m_Machine.m_nLooks;
            return m_Machine.m_aryPlugged;
        }

    private:
        ScriptedMachine& m_Machine;
    };

    std::unique_ptr<ServiceDrive> MakeDrive(const std::string& strPath, std::string& strError)
    {
        const auto pNode = m_mapNodes.find(strPath);
        if (pNode != m_mapNodes.end())
            return std::make_unique<ScriptedDrive>(pNode->second);
        strError = strPath + " is nothing.";
        return nullptr;
    }
};
