// The whole filter between fake sources and a sink in memory.
#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/layout_check.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"
#include "tests/support/written_files.h"

using namespace test_support;

namespace {

MediaTypeValue Vfw() {
    return VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'));
}

MediaTypeValue Pcm() {
    return WaveType(mediasubtype::kPcm);
}

void ExpectSoundFile(MuxerRig& rig, const char* name) {
    const auto findings = CheckLayout(rig.Layout());
    EXPECT_TRUE(findings.empty()) << findings.front();
    SaveForJudges(name, rig.File());
}

TEST(MatroskaMuxer, APairOfStreamsBecomesAFinishedFile) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Vfw()));
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    for (INT64 i = 0; i < 50; ++i) {
        EXPECT_EQ(S_OK, rig.Deliver(0, i * 40, 40, i % 10 == 0));
        EXPECT_EQ(S_OK, rig.Deliver(1, i * 40, 40));
    }
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());

    const auto layout = rig.Layout();
    ASSERT_EQ(2u, layout.tracks.size());
    EXPECT_EQ("V_MS/VFW/FOURCC", layout.tracks[0].codecId);
    EXPECT_EQ("A_PCM/INT/LIT", layout.tracks[1].codecId);
    EXPECT_EQ(50u, layout.BlocksOf(1).size());
    EXPECT_EQ(50u, layout.BlocksOf(2).size());
    EXPECT_EQ(5u, layout.cues.size());
    ASSERT_TRUE(layout.duration);
    EXPECT_DOUBLE_EQ(2000.0, *layout.duration);
    ExpectSoundFile(rig, "pair_of_streams.mkv");
}

TEST(MatroskaMuxer, APinWhoseRowIsDisabledGetsNoTrack) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Vfw()));
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kMp3)));
    rig.SetRow({1, 0, 0, 0, nullptr, nullptr, -1});
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(0, 0, 40));
    EXPECT_EQ(S_FALSE, rig.Deliver(1, 0, 40)) << "a disabled input takes no samples";
    EXPECT_EQ(S_OK, rig.Deliver(2, 0, 40));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());

    const auto layout = rig.Layout();
    ASSERT_EQ(2u, layout.tracks.size());
    EXPECT_EQ("V_MS/VFW/FOURCC", layout.tracks[0].codecId);
    EXPECT_EQ("A_MPEG/L3", layout.tracks[1].codecId);
    EXPECT_EQ(1u, layout.BlocksOf(1).size());
    EXPECT_EQ(1u, layout.BlocksOf(2).size());
    ExpectSoundFile(rig, "middle_pin_disabled.mkv");
}

// Parameters come on any thread, and so at any moment of a start.
TEST(MatroskaMuxer, AnInputThatIsDisabledInTheMiddleOfAStartKeepsItsTrack) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kMp3)));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    rig.Sink().OnStreamAsked([&rig] { rig.SetRow({0, 0, 0, 0, nullptr, nullptr, -1}); });
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(0, 0, 40));
    EXPECT_EQ(S_OK, rig.Deliver(1, 0, 40));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());

    const auto layout = rig.Layout();
    ASSERT_EQ(2u, layout.tracks.size()) << "the packets would land in the wrong track";
    EXPECT_EQ("A_PCM/INT/LIT", layout.tracks[0].codecId);
    EXPECT_EQ("A_MPEG/L3", layout.tracks[1].codecId);
    EXPECT_EQ(1u, layout.BlocksOf(1).size());
    EXPECT_EQ(1u, layout.BlocksOf(2).size());
}

TEST(MatroskaMuxer, ASubtitleSampleIsABlockGroupWithADurationAndACueWhateverItsSyncPoint) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(SubtitleType(mediasubtype::kUtf8)));
    ASSERT_EQ(S_OK, rig.ConnectInput(TextType()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(0, 1000, 500, false));
    EXPECT_EQ(S_OK, rig.Deliver(0, 2000, 700, true));
    EXPECT_EQ(S_OK, rig.Deliver(1, 1500, 250, false));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());

    const auto layout = rig.Layout();
    const auto blocks = layout.BlocksOf(1);
    ASSERT_EQ(2u, blocks.size());
    EXPECT_FALSE(blocks[0].simple);
    EXPECT_EQ(500u, blocks[0].duration.value_or(0));
    EXPECT_FALSE(blocks[1].simple);
    EXPECT_EQ(700u, blocks[1].duration.value_or(0));
    const auto texts = layout.BlocksOf(2);
    ASSERT_EQ(1u, texts.size());
    EXPECT_FALSE(texts[0].simple);
    EXPECT_EQ(250u, texts[0].duration.value_or(0));
    EXPECT_EQ(3u, layout.cues.size());
    ExpectSoundFile(rig, "subtitles.mkv");
}

TEST(MatroskaMuxer, StartingWithoutAnOutputAnswersMinusOneWritesNothingAndStillCompletes) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    EXPECT_EQ(static_cast<HRESULT>(-1), rig.Muxer().OnStartStreaming());
    EXPECT_EQ(S_OK, rig.Pause()) << "it runs on without a file";
    EXPECT_EQ(S_OK, rig.Deliver(0, 0, 20));
    rig.Input(0).DeliverEndOfStream();
    EXPECT_TRUE(rig.Graph().WaitForEvent(EC_COMPLETE, kWatchdog));
    EXPECT_EQ(S_OK, rig.Stop());
    EXPECT_TRUE(rig.File().empty());
}

TEST(MatroskaMuxer, AVideoTypeOfAnUnusualSubtypeIsAcceptedWithFormatVideoInfo) {
    MuxerRig rig;
    EXPECT_EQ(S_OK, rig.ConnectInput(VideoInfoType(MEDIASUBTYPE_RGB24)));
}

TEST(MatroskaMuxer, AnUnlistedWaveTagIsRefusedWhileOpusIsAccepted) {
    MuxerRig rig;
    const CMediaType listed(WaveType(mediasubtype::kOpus).Get());
    const CMediaType unlisted(WaveType(SubtypeFromWaveTag(0x0161)).Get());
    EXPECT_EQ(static_cast<HRESULT>(-1), rig.Muxer().CheckInputType(&unlisted));
    EXPECT_EQ(S_OK, rig.Muxer().CheckInputType(&listed));
    EXPECT_TRUE(FAILED(rig.ConnectInput(WaveType(SubtypeFromWaveTag(0x0161)))));
    EXPECT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kOpus)));
}

TEST(MatroskaMuxer, The101stInputHasNoRowAndIsWrittenAllTheSame) {
    MuxerRig rig;
    for (int i = 0; i < 101; ++i) {
        ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    }
    rig.SetRow({99, 0, 0, 0, nullptr, nullptr, -1});
    EXPECT_FALSE(rig.Muxer().IsInputActive(99));
    EXPECT_TRUE(rig.Muxer().IsInputActive(100));
    EXPECT_FALSE(rig.Muxer().IsInputActive(101)) << "the spare pin is not connected";
    EXPECT_FALSE(rig.Muxer().IsInputActive(-1));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(100, 0, 20));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    EXPECT_EQ(100u, rig.Layout().tracks.size());
    EXPECT_EQ(1u, rig.Layout().BlocksOf(100).size());
    ExpectSoundFile(rig, "hundred_and_one_inputs.mkv");
}

TEST(MatroskaMuxer, ItsRowsBeginWithTheirDefaults) {
    MuxerRig rig;
    ASSERT_EQ(100u, rig.RowCount());
    for (INT32 i = 0; i < 100; ++i) {
        const auto row = rig.Row(i);
        ASSERT_TRUE(row);
        EXPECT_EQ(i, row->Get().index);
        EXPECT_EQ(1, row->Get().bEnabled);
        EXPECT_EQ(0, row->Get().bDefault);
        EXPECT_EQ(0, row->Get().bReserved);
        EXPECT_EQ(WideString(OLESTR("English")), row->Get().language);
        EXPECT_EQ(WideString(), row->Get().name);
        EXPECT_EQ(-1, row->Get().trackType);
    }
    EXPECT_FALSE(rig.Row(100));
    EXPECT_FALSE(rig.Row(-1));
}

TEST(MatroskaMuxer, RowsReachTheirTracks) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Vfw()));
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    const win::Bstr language{WideStringView(OLESTR("Chinese"))};
    const win::Bstr name{WideStringView(OLESTR("Comment\u00e1ry"))};
    rig.SetRow({1, 1, 1, 0, language.Get(), name.Get(), -1});
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    const auto layout = rig.Layout();
    ASSERT_EQ(2u, layout.tracks.size());
    EXPECT_EQ(std::nullopt, layout.tracks[0].name);
    EXPECT_EQ("chi/zho", layout.tracks[1].language);
    EXPECT_EQ("Comment\xc3\xa1ry", layout.tracks[1].name);
    ExpectSoundFile(rig, "rows.mkv");
}

TEST(MatroskaMuxer, SubtitlesWithoutAFormatBlockRunAndHaveNoPrivateData) {
    MuxerRig rig;
    for (const GUID& subtype :
         {mediasubtype::kUtf8, mediasubtype::kSsa, mediasubtype::kAss, mediasubtype::kUsf, mediasubtype::kVobSub}) {
        ASSERT_EQ(S_OK, rig.ConnectInput(MediaTypeValue(mediatype::kSubtitle, subtype, GUID_NULL)));
    }
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    for (size_t input = 0; input < 5; ++input) {
        EXPECT_EQ(S_OK, rig.Deliver(input, 1000, 500));
    }
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    const auto layout = rig.Layout();
    ASSERT_EQ(5u, layout.tracks.size());
    for (const LayoutTrack& track : layout.tracks) {
        EXPECT_EQ(std::nullopt, track.codecPrivateSize) << track.codecId;
        EXPECT_EQ(1u, layout.BlocksOf(track.number).size()) << track.codecId;
    }
    EXPECT_EQ("S_TEXT/UTF8", layout.tracks[0].codecId);
    EXPECT_EQ("S_VOBSUB", layout.tracks[4].codecId);
}

TEST(MatroskaMuxer, ASoundWhoseFormatBlockHasNoSizeFieldRuns) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm().CutTo(16)));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(0, 0, 20));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    ASSERT_EQ(1u, rig.Layout().tracks.size());
    EXPECT_EQ("A_PCM/INT/LIT", rig.Layout().tracks[0].codecId);
    ExpectSoundFile(rig, "pcm_of_16_format_bytes.mkv");
}

TEST(MatroskaMuxer, PagesAreTheAboutPageThenTheSettingsPage) {
    MuxerRig rig;
    win::ComPtr<ISpecifyPropertyPages> specify;
    ASSERT_EQ(S_OK, rig.Filter()->QueryInterface(IID_ISpecifyPropertyPages, specify.PutVoid()));
    EXPECT_EQ(E_POINTER, specify->GetPages(nullptr));
    CAUUID pages{};
    ASSERT_EQ(S_OK, specify->GetPages(&pages));
    ASSERT_EQ(2u, pages.cElems);
    EXPECT_EQ(CLSID_MKVMuxerAboutPage, pages.pElems[0]);
    EXPECT_EQ(CLSID_MKVMuxerPropertyPage, pages.pElems[1]);
    CoTaskMemFree(pages.pElems);
}

TEST(MatroskaMuxer, AnswersItsInterfacesAndTheirIdentityIsOne) {
    MuxerRig rig;
    win::ComPtr<IUnknown> identity;
    ASSERT_EQ(S_OK, rig.Filter()->QueryInterface(IID_IUnknown, identity.PutVoid()));
    for (const IID* iid : {&IID_ISpecifyPropertyPages, &IID_IModuleConfig, &IID_IPersistStream, &IID_IPersist,
                           &IID_IMediaFilter, &IID_IBaseFilter}) {
        win::ComPtr<IUnknown> other;
        ASSERT_EQ(S_OK, rig.Filter()->QueryInterface(*iid, other.PutVoid()));
        EXPECT_EQ(identity.Get(), other.Query<IUnknown>(IID_IUnknown).Get());
    }
    win::ComPtr<IPersistStream> persist;
    ASSERT_EQ(S_OK, rig.Filter()->QueryInterface(IID_IPersistStream, persist.PutVoid()));
    CLSID clsid{};
    EXPECT_EQ(S_OK, persist->GetClassID(&clsid));
    EXPECT_EQ(CLSID_MatroskaMuxer, clsid);
}

TEST(MatroskaMuxer, ATypeAcceptedByItsSubtypeButWithoutACodecRefusesToStart) {
    MuxerRig rig;
    // Accepted for its subtype alone; a format block that no codec is mapped from.
    ASSERT_EQ(S_OK, rig.ConnectInput(MediaTypeValue(MEDIATYPE_Video, mediasubtype::kAvc1, FORMAT_None)));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    EXPECT_EQ(VFW_E_INVALIDMEDIATYPE, rig.Pause());
    FILTER_STATE state = State_Running;
    EXPECT_EQ(S_OK, rig.Filter()->GetState(0, &state));
    EXPECT_EQ(State_Stopped, state);
    EXPECT_EQ(S_FALSE, rig.Deliver(0, 0, 40));
    EXPECT_EQ(VFW_E_INVALIDMEDIATYPE, rig.Pause()) << "a second try answers the same";
}

TEST(MatroskaMuxer, AfterARefusedStartAnotherRunWritesAWholeFile) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(MediaTypeValue(MEDIATYPE_Video, mediasubtype::kAvc1, FORMAT_None)));
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    EXPECT_EQ(VFW_E_INVALIDMEDIATYPE, rig.Pause());
    rig.SetRow({0, 0, 0, 0, nullptr, nullptr, -1});
    ASSERT_EQ(S_OK, rig.Pause());
    EXPECT_EQ(S_OK, rig.Deliver(1, 0, 20));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    EXPECT_EQ(1u, rig.Layout().tracks.size());
    ExpectSoundFile(rig, "after_a_refused_start.mkv");
}

// What an upstream filter hears once the worker has met the failure; a cluster is written every 32 samples.
HRESULT DeliverUntilRefused(MuxerRig& rig) {
    HRESULT hr = S_OK;
    const auto deadline = std::chrono::steady_clock::now() + kWatchdog;
    for (INT64 i = 0; hr == S_OK && std::chrono::steady_clock::now() < deadline; ++i) {
        hr = rig.Deliver(0, i * 1000, 1000);
        Sleep(1); // the worker is not far behind
    }
    return hr;
}

TEST(MatroskaMuxer, AFailedWriteReachesTheUpstreamFilterAndMuxingGoesOn) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    rig.Sink().Stream().FailFrom(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    EXPECT_EQ(STG_E_MEDIUMFULL, DeliverUntilRefused(rig));
    EXPECT_EQ(S_OK, rig.Stop());
}

// Some streams answer S_OK however little they took.
TEST(MatroskaMuxer, AWriteThatKeepsAPartAndAnswersOkReachesTheUpstreamFilter) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    rig.Sink().Stream().AnswerNextWrite(S_OK, 3);
    EXPECT_EQ(STG_E_WRITEFAULT, DeliverUntilRefused(rig));
    EXPECT_EQ(S_OK, rig.Stop());
    const auto findings = CheckLayout(rig.Layout());
    EXPECT_TRUE(findings.empty()) << findings.front();
}

TEST(MatroskaMuxer, SeeksThatFailAtStopLeaveAFileThatCanBeReadToItsEnd) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    for (INT64 i = 0; i < 100; ++i) {
        EXPECT_EQ(S_OK, rig.Deliver(0, i * 1000, 1000));
    }
    ASSERT_TRUE(rig.EndAll());
    rig.Sink().Stream().FailFrom(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    EXPECT_EQ(S_OK, rig.Stop());
    LayoutExpectations cut;
    cut.cut = true;
    const auto findings = CheckLayout(rig.Layout(), cut);
    EXPECT_TRUE(findings.empty()) << findings.front();
    EXPECT_EQ(100u, rig.Layout().BlocksOf(1).size());
    SaveForJudges("seeks_failed_at_stop.cut.mkv", rig.File());
}

TEST(MatroskaMuxer, EveryFailingStreamCallLeavesAFilterThatStopsAndRunsAgain) {
    for (const StreamOperation operation : {StreamOperation::Write, StreamOperation::Seek}) {
        UINT64 calls = 0;
        for (UINT64 n = 0; n <= calls; ++n) {
            SCOPED_TRACE(n);
            MuxerRig rig;
            ASSERT_EQ(S_OK, rig.ConnectInput(Vfw()));
            ASSERT_EQ(S_OK, rig.ConnectOutput());
            if (n > 0) {
                rig.Sink().Stream().FailNth(operation, n, E_FAIL);
            }
            if (SUCCEEDED(rig.Pause())) {
                for (INT64 i = 0; i < 6; ++i) {
                    rig.Deliver(0, i * 40, 40, i % 2 == 0);
                }
                EXPECT_TRUE(rig.EndAll());
                EXPECT_EQ(S_OK, rig.Stop());
            }
            if (n == 0) {
                calls = rig.Sink().Stream().Calls(operation).size();
                ASSERT_GT(calls, 0u);
                continue;
            }
            rig.Sink().Stream().ClearFailures();
            ASSERT_EQ(S_OK, rig.Pause());
            EXPECT_EQ(S_OK, rig.Deliver(0, 0, 40));
            rig.Input(0).DeliverEndOfStream();
            EXPECT_EQ(S_OK, rig.Stop());
            EXPECT_TRUE(CheckLayout(rig.File()).empty());
        }
    }
}

TEST(MatroskaMuxer, ASecondRunWritesItsTracksAgain) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    for (int run = 0; run < 2; ++run) {
        ASSERT_EQ(S_OK, rig.Pause());
        EXPECT_EQ(S_OK, rig.Deliver(0, 0, 20));
        ASSERT_EQ(S_OK, rig.Stop());
        EXPECT_EQ(1u, rig.Layout().tracks.size());
        ExpectSoundFile(rig, run == 0 ? "first_run.mkv" : "second_run.mkv");
    }
}

TEST(MatroskaMuxer, TheOutputRefusesAPeerWithoutAStream) {
    MuxerRig rig(FakeSinkPin::StreamOffer::None);
    EXPECT_EQ(E_FAIL, rig.Muxer().CompleteOutputConnect(&rig.Sink()));
    EXPECT_EQ(VFW_E_NO_ACCEPTABLE_TYPES, rig.ConnectOutput());
    EXPECT_EQ(nullptr, rig.Sink().Peer());
}

TEST(MatroskaMuxer, SamplesWithoutDataOrWithStrangeTimesLoseNothingElse) {
    MuxerRig rig;
    ASSERT_EQ(S_OK, rig.ConnectInput(Pcm()));
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.Pause());
    auto& input = rig.Input(0);
    EXPECT_EQ(S_OK, input.Deliver({}, 0, 100000));            // no data
    EXPECT_EQ(S_OK, input.Deliver({1, 2}, 200000, 100000));   // stop before start
    EXPECT_EQ(S_OK, input.Deliver({3, 4}, -300000, -200000)); // below zero
    EXPECT_EQ(S_OK, input.DeliverUntimed({5, 6}));            // rides with the sample before it
    EXPECT_EQ(S_OK, input.Deliver({7, 8}, 400000, 500000));
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    const auto blocks = rig.Layout().BlocksOf(1);
    ASSERT_EQ(3u, blocks.size());
    std::multiset<size_t> sizes;
    for (const auto& block : blocks) {
        sizes.insert(block.frames.at(0).size());
    }
    EXPECT_EQ((std::multiset<size_t>{2, 2, 4}), sizes);
}

TEST(ModuleConfig, AllButSettingAndGettingValuesIsNotImplemented) {
    MuxerRig rig;
    win::ComPtr<IModuleConfig> config;
    ASSERT_EQ(S_OK, rig.Filter()->QueryInterface(IID_IModuleConfig, config.PutVoid()));
    IUnknown* description = rig.Filter();
    LONG count = 5;
    GUID* keys = nullptr;
    EXPECT_EQ(E_NOTIMPL, config->DescribeValue(&MKVMUX_DocType, &description));
    EXPECT_EQ(nullptr, description);
    EXPECT_EQ(E_NOTIMPL, config->IsSupported(&MKVMUX_DocType));
    EXPECT_EQ(E_NOTIMPL, config->SetDefaults());
    EXPECT_EQ(E_NOTIMPL, config->EnumValues(&count, &keys));
    EXPECT_EQ(0, count);
    EXPECT_EQ(E_NOTIMPL, config->CommitChanges());
    EXPECT_EQ(E_NOTIMPL, config->DeclineChanges());
    EXPECT_EQ(E_NOTIMPL, config->SaveToRegistry(nullptr, nullptr));
    EXPECT_EQ(E_NOTIMPL, config->LoadFromRegistry(nullptr, nullptr));
    EXPECT_EQ(E_NOTIMPL, config->Advise(nullptr));
    EXPECT_EQ(E_NOTIMPL, config->Unadvise(nullptr));
}

} // namespace
