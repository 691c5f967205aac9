#include "mkv/compatible_info.h"

#include <matroska/KaxInfoData.h>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"
#include "win/module_version.h"

namespace mkv {

namespace {

constexpr UINT64 kPlaceHeadBytes = 3;

} // namespace

void CCompatibleInfo::open(bool /*isWebM*/, CSeekHead& /*seekHead*/) {
    m_place.SetSize(kPlaceBytes - kPlaceHeadBytes);
    m_place.Render(m_io);
}

void CCompatibleInfo::openLive(bool /*isWebM*/, CSeekHead& seekHead) {
    SetChild<libmatroska::KaxTimecodeScale>(m_element, kTimecodeScaleNs);
    nameApplications();
    m_element.Render(m_io, true);
    seekHead.list(m_element);
}

void CCompatibleInfo::resume(UINT64 /*tracks*/, CSeekHead& seekHead) {
    open(false, seekHead);
}

void CCompatibleInfo::setDuration(double durationNs) {
    SetChild<libmatroska::KaxTimecodeScale>(m_element, kTimecodeScaleNs);
    // 4 bytes, the library's default, lose milliseconds after five hours.
    libebml::GetChild<libmatroska::KaxDuration>(m_element).SetPrecision(libebml::EbmlFloat::FLOAT_64);
    SetChild<libmatroska::KaxDuration>(m_element, durationNs / static_cast<double>(kTimecodeScaleNs));
    nameApplications();
}

void CCompatibleInfo::nameApplications() {
    SetUtf8Child<libmatroska::KaxMuxingApp>(m_element, kMuxingAppText);
    SetUtf8Child<libmatroska::KaxWritingApp>(m_element, kWritingAppPrefix + win::ModuleVersionText());
}

// One that does not fit or was lost is not listed; the place then stays as it is, and is as long.
void CCompatibleInfo::patch(CFilePatcher& patcher, CSeekHead& seekHead) {
    UINT64 replaced = INVALID_FILEPOS_T;
    const bool arrived = patcher.arrives([&] { replaced = m_place.ReplaceWith(m_element, m_io, true, true); });
    if (arrived && replaced != INVALID_FILEPOS_T) {
        seekHead.list(m_element);
    }
}

} // namespace mkv
