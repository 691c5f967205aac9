#include "mkv/segment_info.h"

#include "mkv/compatible_info.h"
#include "mkv/strict_info.h"

namespace mkv {

std::unique_ptr<CSegmentInfo> CSegmentInfo::of(const records::FileOptions& options, const FileOrigin& origin,
                                               CGatheringIO& io, CIdentifiers& identifiers) {
    if (options.isStrict()) {
        return std::make_unique<CStrictInfo>(options, origin, io, identifiers);
    }
    return std::make_unique<CCompatibleInfo>(io);
}

} // namespace mkv
