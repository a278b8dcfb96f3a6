// The plug-in as a player has it: a library loaded at run time, three exports, and objects of which nothing is known
// but the order of their operations.

#pragma once

#include "LyCoreLib/RawTable.h"
#include "LyDllString.h"
#include "UTF8.h"
#include <cwchar>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

// A player's own string. The plug-in fills it through the table alone.
class PlayerString final : public ILyDllString
{
public:
    const wchar_t* Get() const override { return m_str.c_str(); }
    void Set(const wchar_t* p, int nLength) const override
    {
        if (p == nullptr)
            m_str.clear();
        else
            m_str.assign(p, nLength < 0 ? wcslen(p) : static_cast<size_t>(nLength));
    }
    void Empty() const override { m_str.clear(); }
    wchar_t* GetBuffer(int nChars, bool) const override
    {
        m_str.resize(static_cast<size_t>(nChars));
        return m_str.data();
    }
    void ReleaseBuffer(int nLength) const override
    {
        m_str.resize(nLength < 0 ? wcslen(m_str.c_str()) : static_cast<size_t>(nLength));
    }

    mutable std::wstring m_str = L"untouched";
};

// An input object, by its table: the two places of the destructor, then the five operations of a player.
class PlayerSource
{
public:
    enum SLOT
    {
        SLOT_DESTROY_AND_FREE = 1,
        SLOT_OPEN = 2,
        SLOT_GET_INFORMATION = 3,
        SLOT_SET_INFORMATION = 4,
        SLOT_DO_COMMAND = 5,
        SLOT_GET_SAMPLES = 6
    };
    enum FIELD
    {
        FIELD_BITRATE = 0,
        FIELD_DURATION = 1,
        FIELD_NAME = 2,
        FIELD_POSITION = 3,
        FIELD_FILE_TYPES = 4,
        FIELD_SAMPLE_RATE = 8,
        FIELD_CHANNELS = 9,
        FIELD_BITS = 10,
        FIELD_TOTAL_SAMPLES = 12
    };

    explicit PlayerSource(void* pObject) : m_pObject(pObject) {}
    ~PlayerSource()
    {
        if (m_pObject != nullptr)
            CallSlot<void>(m_pObject, SLOT_DESTROY_AND_FREE);
    }
    PlayerSource(PlayerSource&& other) noexcept : m_pObject(std::exchange(other.m_pObject, nullptr)) {}
    PlayerSource& operator=(PlayerSource&&) = delete;

    int Open(const std::wstring& strPath) { return CallSlot<int>(m_pObject, SLOT_OPEN, strPath.c_str()); }
    int Open(const std::filesystem::path& disc, int nTrack) { return OpenURL(WidenUTF8(disc.string()), nTrack); }
    int OpenURL(const std::wstring& strDisc, int nTrack)
    {
        return Open(L"cda://" + strDisc + L"," + std::to_wstring(nTrack));
    }
    // The answer as text; "untouched" where it was refused.
    std::wstring Get(int nField, int* pResult = nullptr) const
    {
        const PlayerString text;
        const int nResult = CallSlot<int, int, const ILyDllString*>(m_pObject, SLOT_GET_INFORMATION, nField, &text);
        if (pResult != nullptr)
            *pResult = nResult;
        return text.m_str;
    }
    long long GetNumber(int nField) const { return wcstoll(Get(nField).c_str(), nullptr, 10); }
    int Set(int nField, const wchar_t* pValue)
    {
        return CallSlot<int>(m_pObject, SLOT_SET_INFORMATION, nField, pValue);
    }
    int Seek(long long nMilliseconds) { return Set(FIELD_POSITION, std::to_wstring(nMilliseconds).c_str()); }
    int DoCommand(int nCommand) { return CallSlot<int>(m_pObject, SLOT_DO_COMMAND, nCommand, 0LL, 0LL); }
    int GetSamples(void* pBuffer, int nBytes)
    {
        return CallSlot<int>(m_pObject, SLOT_GET_SAMPLES, static_cast<unsigned char*>(pBuffer), nBytes);
    }
    // Pulls up to nBytes in requests of the given size; less comes only at the end.
    std::string Pull(long long nBytes, int nRequest = 65536)
    {
        std::string strBytes;
        std::vector<char> aryRequest(static_cast<size_t>(nRequest));
        while (static_cast<long long>(strBytes.size()) < nBytes)
        {
            const long long nLeft = nBytes - static_cast<long long>(strBytes.size());
            const int nGot = GetSamples(aryRequest.data(), static_cast<int>(std::min<long long>(nRequest, nLeft)));
            if (nGot < 1)
                break;
            strBytes.append(aryRequest.data(), static_cast<size_t>(nGot));
        }
        return strBytes;
    }

private:
    void* m_pObject;
};

// The library. Attach and Detach are the test's to call.
class PlayerPlugin
{
public:
    static constexpr const char* FILE = RONDEL_BIN_DIR "/in_Rondel.so";

    explicit PlayerPlugin(const char* pFile = FILE) : m_strFile(pFile)
    {
        m_pLibrary = dlopen(pFile, RTLD_NOW | RTLD_LOCAL);
        if (m_pLibrary == nullptr)
        {
            ADD_FAILURE() << "the plug-in does not load: " << dlerror();
            abort();
        }
        m_pAttach = reinterpret_cast<bool (*)(void*)>(dlsym(m_pLibrary, "Attach"));
        m_pDetach = reinterpret_cast<void (*)()>(dlsym(m_pLibrary, "Detach"));
        m_pGetInputSource = reinterpret_cast<void* (*)(void*)>(dlsym(m_pLibrary, "GetInputSource"));
    }
    ~PlayerPlugin() { dlclose(m_pLibrary); }
    PlayerPlugin(const PlayerPlugin&) = delete;
    PlayerPlugin& operator=(const PlayerPlugin&) = delete;

    bool Attach() { return m_pAttach(this); } // any address will do as a handle: it is only stored
    void Detach() { m_pDetach(); }
    PlayerSource GetSource(void* pOwner = nullptr) { return PlayerSource(m_pGetInputSource(pOwner)); }

    static bool IsLoaded(const std::string& strFile)
    {
        void* pLibrary = dlopen(strFile.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (pLibrary != nullptr)
            dlclose(pLibrary);
        return pLibrary != nullptr;
    }

private:
    std::string m_strFile;
    void* m_pLibrary = nullptr;
    bool (*m_pAttach)(void*) = nullptr;
    void (*m_pDetach)() = nullptr;
    void* (*m_pGetInputSource)(void*) = nullptr;
};
