#include "sources/avi/avi_source.h"

#include <gtest/gtest.h>

#include "dshow/base_object.h"
#include "sources/avi/avi_media_type.h"
#include "tests/sources/avi/avi_builder.h"
#include "tests/sources/base/collecting_filter.h"

namespace avi {
namespace {

using namespace test_avi;
using test_source::CollectingFilter;
using namespace std::chrono_literals;

constexpr UINT32 kKeyframe = 0x10;

class AviSource : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))); }
    void TearDown() override {
        Disconnect();
        m_source.Reset();
        m_video.Reset();
        m_audio.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        CoUninitialize();
    }

    void Open(const std::string& file) {
        source::OpenedSource opened;
        ASSERT_EQ(MakeSource(std::make_unique<MemorySource>(file), opened), S_OK);
        m_source = opened.filter;
    }
    win::ComPtr<IPin> SourcePin(const WCHAR* name) {
        win::ComPtr<IPin> pin;
        EXPECT_EQ(m_source->FindPin(name, pin.Put()), S_OK);
        return pin;
    }
    void Connect(const WCHAR* name, const win::ComPtr<CollectingFilter>& sink) {
        ASSERT_EQ(SourcePin(name)->Connect(&sink->Pin(), nullptr), S_OK);
        m_connected.push_back(SourcePin(name));
    }
    void Disconnect() {
        for (const win::ComPtr<IPin>& pin : m_connected) {
            win::ComPtr<IPin> peer;
            if (SUCCEEDED(pin->ConnectedTo(peer.Put()))) {
                peer->Disconnect();
                pin->Disconnect();
            }
        }
        m_connected.clear();
    }
    void Start() {
        m_video->Pause();
        m_audio->Pause();
        ASSERT_EQ(m_source->Pause(), S_OK);
    }
    void Stop() {
        m_video->Stop();
        m_audio->Stop();
        EXPECT_EQ(m_source->Stop(), S_OK);
    }
    static win::ComPtr<CollectingFilter> NewSink() {
        HRESULT hr = S_OK;
        return win::ComPtr<CollectingFilter>(new CollectingFilter(&hr));
    }

    win::ComPtr<IBaseFilter> m_source;
    win::ComPtr<CollectingFilter> m_video = NewSink();
    win::ComPtr<CollectingFilter> m_audio = NewSink();
    std::vector<win::ComPtr<IPin>> m_connected;
};

std::string TwoStreams() {
    const std::string movie = Chunk("00dc", "key") + Chunk("01wb", std::string(1600, 's')) + Chunk("00dc", "delta") +
                              Chunk("00dc", "") + Chunk("01wb", std::string(800, 't')) + Chunk("00dc", "last");
    return AviFileOf(movie, Chunk("idx1", IndexEntry("00dc", kKeyframe) + IndexEntry("01wb", kKeyframe) +
                                              IndexEntry("00dc", 0) + IndexEntry("00dc", 0) +
                                              IndexEntry("01wb", kKeyframe) + IndexEntry("00dc", kKeyframe)));
}

TEST_F(AviSource, DeliversEveryChunkWithItsTimeAndKeyframeFlag) {
    Open(TwoStreams());
    Connect(OLESTR("Stream 00"), m_video);
    Connect(OLESTR("Stream 01"), m_audio);
    Start();
    ASSERT_TRUE(m_video->Pin().WaitForEnd(10s));
    ASSERT_TRUE(m_audio->Pin().WaitForEnd(10s));
    Stop();
    const auto video = m_video->Pin().Samples();
    ASSERT_EQ(video.size(), 3u) << "the empty chunk is a picture that stays";
    EXPECT_EQ(video[0].data, "key");
    EXPECT_EQ(video[1].data, "delta");
    EXPECT_EQ(video[2].data, "last");
    EXPECT_EQ(video[0].start, 0);
    EXPECT_EQ(video[0].stop, 400000);
    EXPECT_EQ(video[1].start, 400000);
    EXPECT_EQ(video[2].start, 1200000);
    EXPECT_TRUE(video[0].keyframe);
    EXPECT_FALSE(video[1].keyframe);
    EXPECT_TRUE(video[2].keyframe);
    const auto audio = m_audio->Pin().Samples();
    ASSERT_EQ(audio.size(), 2u);
    EXPECT_EQ(audio[0].stop, 1000000); // 800 of 8000 samples
    EXPECT_EQ(audio[1].start, 1000000);
    EXPECT_EQ(audio[1].stop, 1500000);
    EXPECT_EQ(audio[1].data, std::string(800, 't'));
}

TEST_F(AviSource, AStreamThatNobodyTakesDoesNotHoldTheOthers) {
    Open(TwoStreams());
    Connect(OLESTR("Stream 01"), m_audio);
    Start();
    EXPECT_TRUE(m_audio->Pin().WaitForEnd(10s));
    Stop();
    EXPECT_EQ(m_audio->Pin().Samples().size(), 2u);
}

TEST_F(AviSource, APeerThatRefusesASampleGetsNoMore) {
    Open(TwoStreams());
    m_video->Pin().TakeAtMost(1);
    Connect(OLESTR("Stream 00"), m_video);
    Connect(OLESTR("Stream 01"), m_audio);
    Start();
    EXPECT_TRUE(m_audio->Pin().WaitForEnd(10s));
    Stop();
    EXPECT_EQ(m_video->Pin().Samples().size(), 1u);
    EXPECT_EQ(m_audio->Pin().Samples().size(), 2u);
}

TEST_F(AviSource, EachRunBeginsAtTheStart) {
    Open(TwoStreams());
    Connect(OLESTR("Stream 00"), m_video);
    for (int run = 0; run < 2; ++run) {
        Start();
        ASSERT_TRUE(m_video->Pin().WaitForEnd(10s));
        Stop();
    }
    const auto video = m_video->Pin().Samples();
    ASSERT_GE(video.size(), 3u);
    EXPECT_EQ(video[0].data, "key");
    EXPECT_EQ(video[0].start, 0);
}

TEST_F(AviSource, StopsInTheMiddleOfAFile) {
    std::string movie;
    for (int i = 0; i < 100000; ++i) {
        movie += Chunk("00dc", "picture");
    }
    Open(AviFileOf(movie));
    Connect(OLESTR("Stream 00"), m_video);
    Start();
    Stop();
    EXPECT_LE(m_video->Pin().Samples().size(), 100000u);
}

TEST_F(AviSource, WhatIsNoAviFileIsRefused) {
    source::OpenedSource opened;
    EXPECT_EQ(MakeSource(std::make_unique<MemorySource>("hello"), opened), VFW_E_INVALID_FILE_FORMAT);
    EXPECT_FALSE(opened.filter);
    EXPECT_EQ(OpenSource(OLESTR("no_such_file.avi"), opened), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(opened.filter);
}

} // namespace
} // namespace avi
