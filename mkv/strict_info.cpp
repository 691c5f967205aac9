#include "mkv/strict_info.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include <ebml/EbmlVoid.h>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"
#include "win/utf8_text.h"

namespace mkv {

namespace {

constexpr UINT64 kVoidHeadBytes = 2;

} // namespace

void CStrictInfo::open(bool isWebM, const Listing& list) {
    describe(isWebM);
    libebml::AddNewChild<libebml::EbmlVoid>(m_element).SetSize(kDurationBytes - kVoidHeadBytes);
    render(list);
    m_durationPlace = m_io.getFilePointer() - kDurationBytes;
}

void CStrictInfo::openLive(bool isWebM, const Listing& list) {
    describe(isWebM);
    render(list);
}

// WebM has no identifier of the segment.
void CStrictInfo::describe(bool isWebM) {
    fill();
    if (!isWebM) {
        setSegmentUid(m_identifiers.nextUuid());
    }
    if (const std::string title = win::Utf8FromWide(m_options.title.c_str()); !title.empty()) {
        SetUtf8Child<libmatroska::KaxTitle>(m_element, title);
    }
}

// The library's own copy does not look whether there was memory for it.
void CStrictInfo::setSegmentUid(const CIdentifiers::Uuid& uuid) {
    auto& element = libebml::GetChild<libmatroska::KaxSegmentUID>(m_element);
    auto* const copy = static_cast<BYTE*>(std::malloc(uuid.size())); // freed by the element, with free
    if (copy == nullptr) {
        throw std::bad_alloc();
    }
    std::copy(uuid.begin(), uuid.end(), copy);
    element.SetBuffer(copy, static_cast<uint32>(uuid.size()));
}

// What lies there says more, and stays.
void CStrictInfo::resume(UINT64 tracks, const Listing& list) {
    fill();
    render(list);
    m_durationPlace = tracks - kDurationBytes;
}

void CStrictInfo::fill() {
    SetChild<libmatroska::KaxTimecodeScale>(m_element, kTimecodeScaleNs);
    SetUtf8Child<libmatroska::KaxMuxingApp>(m_element, m_origin.muxingApp);
    SetUtf8Child<libmatroska::KaxWritingApp>(m_element, m_origin.writingApp);
    SetChild<libmatroska::KaxDateUTC>(m_element, m_origin.startedS);
}

void CStrictInfo::render(const Listing& list) {
    m_element.Render(m_io, true);
    list(m_element);
}

// A file without any block has none: it is never 0.
void CStrictInfo::setDuration(double durationNs) {
    m_hasDuration = durationNs > 0;
    m_duration.SetPrecision(libebml::EbmlFloat::FLOAT_64);
    m_duration.SetValue(durationNs / static_cast<double>(kTimecodeScaleNs));
}

void CStrictInfo::patch(const Patch& arrives, const Listing& /*list*/) {
    if (!m_hasDuration) {
        return;
    }
    (void)arrives([this] {
        m_io.bringTo(m_durationPlace);
        m_duration.Render(m_io);
    });
}

} // namespace mkv
