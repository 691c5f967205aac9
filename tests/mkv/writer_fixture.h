// WriterTest: a writer on a memory stream, short ways to feed it, and the file that it wrote, read back.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "mkv/mkv_writer.h"
#include "tests/support/layout_check.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/media_types.h"
#include "tests/support/memory_stream.h"

class WriterTest : public testing::Test {
  protected:
    using Bytes = std::vector<BYTE>;
    using Layout = test_support::MatroskaLayout;

    static constexpr INT64 kMs = 10000; // in the 100 ns units of packets

    // The row of an input: language "English", no name, not default, unless said otherwise.
    static records::CTrackSettingsRow Row(const WCHAR* language = OLESTR("English"), const WCHAR* name = OLESTR(""),
                                          BYTE isDefault = 0);
    static test_support::MediaTypeValue CinepakType();
    static test_support::MediaTypeValue PcmType();
    static test_support::MediaTypeValue Utf8Type();

    // The index of the track registered.
    UINT32 Register(const test_support::MediaTypeValue& type, const records::CTrackSettingsRow& row = Row());
    UINT32 RegisterVideo() { return Register(CinepakType()); }
    UINT32 RegisterAudio() { return Register(PcmType()); }
    UINT32 RegisterSubtitle() { return Register(Utf8Type()); }

    void Open(const records::FileOptions& options = {});
    // Times in units of 100 ns.
    void Write(UINT32 stream, INT64 start, INT64 stop, bool syncPoint = false, const Bytes& payload = {1, 2, 3});
    void WriteGroup(UINT32 stream, INT64 start, INT64 stop, const Bytes& payload = {'t', 'e', 'x', 't'});
    // Closes the writer as the filter does.
    void Finish();

    // The finished file, read once; its layout is checked, and it is kept for the judges.
    const Layout& File();
    // What the checker may pass over in this test's file.
    void Expect(const test_support::LayoutExpectations& expected) { m_expected = expected; }
    void KeepFromJudges() { m_forJudges = false; }
    // The stream as it is.
    Layout Snapshot();

    // The whole life of a file, for scenarios that differ in one thing.
    std::string ThrownByOpen();
    [[nodiscard]] const test_support::EbmlElement* Element(std::initializer_list<uint32_t> path);

    test_support::MemoryStream m_stream; // outlives its user, and checks that no reference is left
    CMkvIO m_io;
    CMkvWriter m_writer;

  private:
    UINT32 m_tracks = 0;
    bool m_forJudges = true;
    bool m_isStrict = false; // the last file that was opened
    test_support::LayoutExpectations m_expected;
    Bytes m_bytes;
    Bytes m_snapshot;
    std::unique_ptr<Layout> m_layout;
};
