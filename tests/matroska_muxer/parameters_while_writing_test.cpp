// A stream that asks the filter for its parameters while it is written to, as a sink with a display of its own does.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/watchdog.h"
#include "win/bstr.h"

using namespace test_support;

namespace {

// Everything that IModuleConfig and the IPersistStream below it can be asked.
class Asker {
  public:
    explicit Asker(IBaseFilter* filter) {
        EXPECT_EQ(S_OK, filter->QueryInterface(IID_IModuleConfig, m_config.PutVoid()));
    }
    void Release() { m_config.Reset(); }

    void AskEverything() {
        AskValues();
        SetValues();
        AskPersistence();
        ++m_rounds;
    }
    [[nodiscard]] int Rounds() const { return m_rounds; }

  private:
    void AskValues() {
        VARIANT value{};
        for (const GUID* key : {&MKVMUX_InputCount, &MKVMUX_DocType, &MKVMUX_Position, &MKVMUX_Profile, &MKVMUX_Seed,
                                &MKVMUX_TrackStatistics}) {
            EXPECT_EQ(S_OK, m_config->GetValue(key, &value));
        }
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_Title, &value));
        SysFreeString(V_BSTR(&value));
        MuxTrackFlags flags{};
        V_BYREF(&value) = &flags;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_TrackFlags, &value));
        flags.forced = MuxFlag_On;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_TrackFlags, &value));
        AskStatistics();
        AskRecords();
        TrackSettings row{};
        V_BYREF(&value) = &row;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_TrackInfo, &value));
        EXPECT_EQ(2, row.trackType);
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_TrackInfo, &value));
        SysFreeString(row.language);
        SysFreeString(row.name);
    }
    void AskStatistics() {
        VARIANT value{};
        MuxStatistics file{};
        file.size = sizeof(file);
        V_BYREF(&value) = &file;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_Statistics, &value));
        MuxInputStatistics input{};
        input.size = sizeof(input);
        V_BYREF(&value) = &input;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_InputStatistics, &value));
    }
    void AskRecords() {
        VARIANT value{};
        MuxTrackColour colour{};
        V_BYREF(&value) = &colour;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_TrackColour, &value));
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_TrackColour, &value));
        MuxReservedIndex index{};
        V_BYREF(&value) = &index;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_ReserveIndex, &value));
        index.expectedLength = m_rounds.load();
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_ReserveIndex, &value));
        AskChapters();
        AskTags();
    }
    void AskChapters() {
        VARIANT value{};
        MuxChapter chapter{};
        V_BYREF(&value) = &chapter;
        chapter.index = MuxListIndex_Add;
        chapter.end = MuxChapterTime_None;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Chapter, &value));
        // A mark needs a file, which in the calls of open and close there may not be.
        chapter.start = MuxChapterTime_Now;
        const HRESULT hr = m_config->SetValue(&MKVMUX_Chapter, &value);
        EXPECT_TRUE(hr == S_OK || hr == VFW_E_WRONG_STATE) << hr;
        chapter.index = 0;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_Chapter, &value));
        SysFreeString(chapter.title);
        SysFreeString(chapter.language);
        chapter = {};
        chapter.index = MuxListIndex_Clear;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Chapter, &value));
    }
    void AskTags() {
        VARIANT value{};
        MuxTag tag{};
        V_BYREF(&value) = &tag;
        tag.index = MuxListIndex_Add;
        tag.track = MuxTagTrack_All;
        const win::Bstr name(WideStringView(OLESTR("ARTIST")));
        tag.name = name.Get();
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Tag, &value));
        MuxTag read{};
        V_BYREF(&value) = &read;
        EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_Tag, &value));
        for (const BSTR text : {read.target, read.name, read.value, read.language}) {
            SysFreeString(text);
        }
        V_BYREF(&value) = &tag;
        tag.index = MuxListIndex_Clear;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Tag, &value));
    }
    void SetValues() {
        VARIANT value{};
        V_UI4(&value) = 0;
        for (const GUID* key : {&MKVMUX_DocType, &MKVMUX_Profile, &MKVMUX_TrackStatistics}) {
            EXPECT_EQ(S_OK, m_config->SetValue(key, &value));
        }
        V_UI8(&value) = static_cast<UINT64>(m_rounds.load());
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Seed, &value));
        V_BSTR(&value) = nullptr;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Title, &value));
        V_BSTR(&value) = nullptr;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_LogDirectory, &value));
        MuxAttachment attachment{};
        V_BYREF(&value) = &attachment;
        EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_Attachment, &value));
        EXPECT_EQ(E_NOTIMPL, m_config->CommitChanges());
    }
    void AskPersistence() {
        MemoryStream saved;
        EXPECT_EQ(S_OK, m_config->Save(&saved, TRUE));
        EXPECT_EQ(S_FALSE, m_config->IsDirty());
        saved.SetBytes(saved.Bytes());
        ULARGE_INTEGER size{};
        EXPECT_EQ(S_OK, m_config->GetSizeMax(&size));
        CLSID clsid{};
        EXPECT_EQ(S_OK, m_config->GetClassID(&clsid));
        if (m_rounds == 0) { // each load doubles the attachments
            EXPECT_EQ(S_OK, m_config->Load(&saved));
        }
    }

    win::ComPtr<IModuleConfig> m_config;
    std::atomic<int> m_rounds{0};
};

// A stop that hangs would hang the test program, too: nobody could release the stuck thread.
void StopOrDie(MuxerRig& rig) {
    auto stopped = std::async(std::launch::async, [&rig] { return rig.Stop(); });
    if (stopped.wait_for(kWatchdog) != std::future_status::ready) {
        std::fputs("Stop hangs: a parameter waits for a lock that Stop holds\n", stderr);
        std::abort();
    }
    EXPECT_EQ(S_OK, stopped.get());
}

TEST(ParametersWhileWriting, AStreamThatAsksForAllOfThemInEveryCallHoldsUpNoStop) {
    MuxerRig rig;
    Asker asker(rig.Filter());
    std::promise<void> workerInside;
    std::atomic<bool> first{true};
    std::atomic<std::thread::id> starter{std::this_thread::get_id()};
    rig.Sink().Stream().OnEveryCall([&] {
        // The worker's first call lasts until Stop is under way, and so holds the filter lock.
        if (std::this_thread::get_id() != starter.load() && first.exchange(false)) {
            workerInside.set_value();
            while (!rig.Muxer().IsAborted()) {
                std::this_thread::yield();
            }
        }
        asker.AskEverything();
    });
    ASSERT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    for (const INT64 startMs : {0, 40000, 80000, 120000}) { // a cluster each, written when the next begins
        ASSERT_EQ(S_OK, rig.Deliver(0, startMs, 10));
    }
    ASSERT_EQ(std::future_status::ready, workerInside.get_future().wait_for(kWatchdog));
    StopOrDie(rig);
    EXPECT_GT(asker.Rounds(), 2);
    asker.Release();
}

} // namespace
