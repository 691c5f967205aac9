// MuxerUnderTest: the built and registered module, a muxer filter of it, and sources plugged into its inputs.
//
// Owner: the test; the registration is taken back at the end. Threads: the one that made it, in a multithreaded
// apartment. Errors: what cannot be made fails the running test; the filter's references are checked at the end.
#pragma once

#include <qrx_mkvmuxer.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/module/loaded_module.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"

namespace ui_test {

class MuxerUnderTest {
  public:
    MuxerUnderTest();
    ~MuxerUnderTest();
    MuxerUnderTest(const MuxerUnderTest&) = delete;
    MuxerUnderTest& operator=(const MuxerUnderTest&) = delete;

    [[nodiscard]] const LoadedModule& Module() const { return m_module; }
    [[nodiscard]] IBaseFilter* Filter() const { return m_filter.Get(); }
    [[nodiscard]] IModuleConfig& Config() const { return *m_config.Get(); }

    void ConnectVideo();
    void ConnectAudio();
    void ConnectSubtitles();
    [[nodiscard]] size_t Inputs() const { return m_sources.size(); }
    // Unplugs that source, so that its input stays but is not connected.
    void Disconnect(size_t input);

    // A row as the filter has it.
    struct Track {
        int enabled;
        int isDefault;
        int reserved;
        std::wstring language;
        std::wstring name;
    };
    [[nodiscard]] Track GetTrack(INT32 index) const;
    void SetTrack(INT32 index, const Track& track) const;
    [[nodiscard]] ULONG DocType() const;
    void SetDocType(ULONG type) const;

    // Runs a few samples through every input; the bytes of the file.
    [[nodiscard]] std::vector<BYTE> WriteFile();

  private:
    void Connect(const test_support::MediaTypeValue& type);

    LoadedModule m_module;
    test_support::FakeSinkPin m_sink;
    std::vector<std::unique_ptr<test_support::FakeUpstreamPin>> m_sources;
    win::ComPtr<IBaseFilter> m_filter;
    win::ComPtr<IModuleConfig> m_config;
};

} // namespace ui_test
