#include "mkv/strict_info.h"

#include <ebml/EbmlVoid.h>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"
#include "win/utf8_text.h"

namespace mkv {

namespace {

constexpr UINT64 kVoidHeadBytes = 2;

} // namespace

void CStrictInfo::open(bool isWebM, CSeekHead& seekHead) {
    describe(isWebM);
    libebml::AddNewChild<libebml::EbmlVoid>(m_element).SetSize(kDurationBytes - kVoidHeadBytes);
    render(seekHead);
    m_durationPlace = m_io.getFilePointer() - kDurationBytes;
}

void CStrictInfo::openLive(bool isWebM, CSeekHead& seekHead) {
    describe(isWebM);
    render(seekHead);
}

// WebM has no identifier of the segment.
void CStrictInfo::describe(bool isWebM) {
    fill();
    if (!isWebM) {
        SetBytesChild<libmatroska::KaxSegmentUID>(m_element, m_identifiers.nextUuid());
    }
    if (const std::string title = win::Utf8FromWide(m_options.title.c_str()); !title.empty()) {
        SetUtf8Child<libmatroska::KaxTitle>(m_element, title);
    }
}

// What lies there says more, and stays.
void CStrictInfo::resume(UINT64 tracks, CSeekHead& seekHead) {
    fill();
    render(seekHead);
    m_durationPlace = tracks - kDurationBytes;
}

void CStrictInfo::fill() {
    SetChild<libmatroska::KaxTimecodeScale>(m_element, kTimecodeScaleNs);
    SetUtf8Child<libmatroska::KaxMuxingApp>(m_element, m_origin.muxingApp);
    SetUtf8Child<libmatroska::KaxWritingApp>(m_element, m_origin.writingApp);
    SetChild<libmatroska::KaxDateUTC>(m_element, m_origin.startedS);
}

void CStrictInfo::render(CSeekHead& seekHead) {
    m_element.Render(m_io, true);
    seekHead.list(m_element);
}

// A file without any block has none: it is never 0.
void CStrictInfo::setDuration(double durationNs) {
    m_hasDuration = durationNs > 0;
    m_duration.SetPrecision(libebml::EbmlFloat::FLOAT_64);
    m_duration.SetValue(durationNs / static_cast<double>(kTimecodeScaleNs));
}

void CStrictInfo::patch(CFilePatcher& patcher, CSeekHead& /*seekHead*/) {
    if (!m_hasDuration) {
        return;
    }
    (void)patcher.arrives([this] {
        m_io.bringTo(m_durationPlace);
        m_duration.Render(m_io);
    });
}

} // namespace mkv
