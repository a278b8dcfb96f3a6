// What tests of the feed of a file to an encoder stand on: the scripted encoder, a file in memory, and a message
// manager that keeps what is posted until it is pumped.

#pragma once

#include "Encoder/FakeEncoder.h"
#include "EncoderHelper.h"
#include "LyCoreLib/StandInTools.h"
#include "LyThread.h"
#include "Media/WavBytes.h"
#include "MemoryReader.h"
#include <gtest/gtest.h>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class MessageQueue final : public StandInTools, public IMainThreadMessageManager
{
public:
    using POST = std::pair<int, long long>;

    IMainThreadMessageManager* GetMainThreadMessageManager(bool) override { return this; }
    bool RegisterCallback(IMainThreadMessageManagerCallback*) override { return true; }
    void UnregisterCallback(IMainThreadMessageManagerCallback*) override { m_bUnregistered = true; }
    bool PostMessage(IMainThreadMessageManagerCallback*, int nMessage, long long nData) override
    {
        std::lock_guard lock(m_Mutex);
        m_aryPosts.emplace_back(nMessage, nData);
        return true;
    }
    void PumpMessages(IMainThreadMessageManagerCallback* pCallback) override
    {
        for (POST post; !m_bUnregistered && TakeNext(post);)
            EXPECT_TRUE(pCallback->MainThreadMessageManager_ProcessMainThreadMessage(post.first, post.second));
    }
    std::vector<POST> GetPosts()
    {
        std::lock_guard lock(m_Mutex);
        return m_aryPosts;
    }

private:
    bool TakeNext(POST& post)
    {
        std::lock_guard lock(m_Mutex);
        if (m_nDelivered == m_aryPosts.size())
            return false;
        post = m_aryPosts[m_nDelivered++];
        return true;
    }

    std::mutex m_Mutex;
    std::vector<POST> m_aryPosts;
    size_t m_nDelivered = 0;
    bool m_bUnregistered = false;
};

class FeedCallback : public ILyEncoderCallback
{
public:
    void OnFinished(ILyEncoder* pEncoder) override
    {
        Note("finished", pEncoder);
        if (m_pStopAtEnd != nullptr)
            m_pStopAtEnd->Stop();
    }
    void OnError(ILyEncoder* pEncoder, int nCode, const wchar_t* pText) override
    {
        Note("error" + std::to_string(nCode), pEncoder);
        m_strError = pText;
    }
    void OnProgress(ILyEncoder* pEncoder, int nPercent) override { Note(std::to_string(nPercent), pEncoder); }
    void Note(const std::string& strEvent, ILyEncoder* pEncoder)
    {
        EXPECT_EQ(m_Thread, std::this_thread::get_id()) << strEvent;
        EXPECT_EQ(m_pEncoder, pEncoder) << strEvent;
        m_strEvents += (m_strEvents.empty() ? "" : " ") + strEvent;
    }

    std::thread::id m_Thread = std::this_thread::get_id();
    ILyEncoder* m_pEncoder = nullptr;       // the one that all calls must name
    CEncoderPlugin* m_pStopAtEnd = nullptr; // stopped from within OnFinished
    std::string m_strEvents;
    std::wstring m_strError;
};

class EncodingFeedTest : public ::testing::Test
{
protected:
    EncodingFeedTest()
    {
        m_Plugin.m_strLibrary = FakeEncoder::GetLibrary();
        m_Plugin.m_strSettings = L"-8";
        EXPECT_TRUE(m_Plugin.Open(nullptr, false));
        m_Callback.m_pEncoder = m_Plugin.m_pEncoder;
        m_Fake.m_aryEvents.clear();
    }
    ~EncodingFeedTest() override { m_Plugin.Stop(); }

    // A feed of that file, set up as a client does it. It opens where bOpens says so.
    CEncoderPluginFileBasedEncodingEmulator& Make(const std::string& strWav, bool bOpens = true)
    {
        m_pReader = new MemoryReader(strWav);
        m_pReader->m_pnDestroyed = &m_nDestroyed;
        auto* pFeed = new CEncoderPluginFileBasedEncodingEmulator;
        m_Plugin.m_pEmulator.Set(pFeed, true, false);
        pFeed->m_pPlugin = &m_Plugin;
        pFeed->m_pCallback = &m_Callback;
        pFeed->m_pFileReader.Set(m_pReader, true, false);
        EXPECT_EQ(bOpens, pFeed->m_WAVInfo.Open(pFeed->m_pFileReader.Get(), false, true) == 0);
        m_pReader->m_aryReads.clear();
        return *pFeed;
    }
    // Lets it run to its end, then delivers what it has posted.
    void Run(CEncoderPluginFileBasedEncodingEmulator& feed)
    {
        ASSERT_TRUE(feed.Start());
        feed.WaitUntilFinished();
        EXPECT_EQ("", m_Callback.m_strEvents) << "nothing is told on the worker";
        EXPECT_EQ("", m_Fake.GetEvents()) << "nothing but data goes to the encoder there";
        EXPECT_TRUE(feed.GetReturnValue());
        feed.PumpMainThreadMessages();
    }

    MessageQueue m_Messages;
    FakeEncoder m_Fake; // outlives the plug-in
    FeedCallback m_Callback;
    MemoryReader* m_pReader = nullptr; // the feed's
    int m_nDestroyed = 0;              // readers of feeds
    CEncoderPlugin m_Plugin;
};
