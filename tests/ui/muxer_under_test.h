// MuxerUnderTest: the built and registered module, a muxer filter of it, and sources plugged into its inputs.
//
// Owner: the test; the registration is taken back at the end. Threads: the one that made it, in a multithreaded
// apartment. Errors: what cannot be made fails the running test; the filter's references are checked at the end.
#pragma once

#include <memory>
#include <vector>

#include "client/module_config.h"
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

    void ConnectVideo();
    void ConnectAudio();
    void ConnectSubtitles();
    [[nodiscard]] size_t Inputs() const { return m_sources.size(); }
    // Unplugs that source, so that its input stays but is not connected.
    void Disconnect(size_t input);

    [[nodiscard]] client::TrackRow GetTrack(INT32 index) const;
    void SetTrack(const client::TrackRow& row) const;
    [[nodiscard]] MuxDocType DocType() const;
    void SetDocType(MuxDocType type) const;

    // Runs a few samples through every input; the bytes of the file.
    [[nodiscard]] std::vector<BYTE> WriteFile();

  private:
    void Connect(const test_support::MediaTypeValue& type);

    LoadedModule m_module;
    test_support::FakeSinkPin m_sink;
    std::vector<std::unique_ptr<test_support::FakeUpstreamPin>> m_sources;
    win::ComPtr<IBaseFilter> m_filter;
    client::ModuleConfig m_config;
};

} // namespace ui_test
