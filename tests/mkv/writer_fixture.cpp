#include "tests/mkv/writer_fixture.h"

#include "tests/support/written_files.h"

using test_support::MediaTypeValue;

records::CTrackSettingsRow WriterTest::Row(const WCHAR* language, const WCHAR* name, BYTE isDefault) {
    const win::Bstr languageText{WideStringView(language)};
    const win::Bstr nameText{WideStringView(name)};
    return records::CTrackSettingsRow(TrackSettings{0, 1, isDefault, 0, languageText.Get(), nameText.Get(), -1});
}

MediaTypeValue WriterTest::CinepakType() {
    return test_support::VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'));
}

MediaTypeValue WriterTest::PcmType() {
    return test_support::WaveType(mediasubtype::kPcm);
}

MediaTypeValue WriterTest::Utf8Type() {
    return test_support::SubtitleType(mediasubtype::kUtf8);
}

UINT32 WriterTest::Register(const MediaTypeValue& type, const records::CTrackSettingsRow& row) {
    m_writer.registerTrack(type.Get(), row.Get());
    return m_tracks++;
}

void WriterTest::Open(const records::FileOptions& options) {
    m_isStrict = options.isStrict();
    m_io.setStream(&m_stream);
    m_writer.Open(&m_io, options);
}

void WriterTest::Write(UINT32 stream, INT64 start, INT64 stop, bool syncPoint, const Bytes& payload) {
    m_writer.WritePacket({start, stop, payload.data(), static_cast<UINT32>(payload.size()), syncPoint, stream, false});
}

void WriterTest::WriteGroup(UINT32 stream, INT64 start, INT64 stop, const Bytes& payload) {
    m_writer.WritePacket({start, stop, payload.data(), static_cast<UINT32>(payload.size()), false, stream, true});
}

void WriterTest::Finish() {
    m_writer.Close();
    m_writer.detach();
    m_io.releaseStream();
    m_tracks = 0;
    m_layout.reset();
}

const WriterTest::Layout& WriterTest::File() {
    if (m_writer.isOpen()) {
        Finish();
    }
    if (!m_layout) {
        m_bytes = m_stream.Bytes();
        m_layout = std::make_unique<Layout>(test_support::ReadLayout(m_bytes));
        for (const auto& finding : test_support::CheckLayout(*m_layout, m_expected)) {
            ADD_FAILURE() << finding;
        }
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        if (m_forJudges) {
            test_support::SaveForJudges(
                std::string(test->test_suite_name()) + "." + test->name() + (m_isStrict ? ".strict" : ""), m_bytes);
        }
    }
    return *m_layout;
}

WriterTest::Layout WriterTest::Snapshot() {
    m_snapshot = m_stream.Bytes();
    return test_support::ReadLayout(m_snapshot);
}

std::string WriterTest::ThrownByOpen() {
    try {
        Open();
    } catch (const char* text) {
        return text;
    }
    return "nothing";
}

const test_support::EbmlElement* WriterTest::Element(std::initializer_list<uint32_t> path) {
    const test_support::EbmlElement* element = File().Segment();
    for (const uint32_t id : path) {
        element = element == nullptr ? nullptr : element->Child(id);
    }
    return element;
}
