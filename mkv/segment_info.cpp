#include "mkv/segment_info.h"

#include <matroska/KaxInfoData.h>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"
#include "win/module_version.h"

namespace mkv {

namespace {

// 4 bytes, the library's default, lose milliseconds after five hours.
void SetDuration(libmatroska::KaxInfo& info, double durationMs) {
    auto& duration = libebml::GetChild<libmatroska::KaxDuration>(info);
    duration.SetPrecision(libebml::EbmlFloat::FLOAT_64);
    duration.SetValue(durationMs);
}

} // namespace

void WriteSegmentInfo(libmatroska::KaxInfo& info, double durationNs) {
    SetChild<libmatroska::KaxTimecodeScale>(info, kTimecodeScaleNs);
    SetDuration(info, durationNs / static_cast<double>(kTimecodeScaleNs));
    SetUtf8Child<libmatroska::KaxMuxingApp>(info, kMuxingAppText);
    SetUtf8Child<libmatroska::KaxWritingApp>(info, kWritingAppPrefix + win::ModuleVersionText());
}

} // namespace mkv
