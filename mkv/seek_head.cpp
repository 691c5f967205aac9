#include "mkv/seek_head.h"

namespace mkv {

namespace {

constexpr UINT64 kSeekHeadPlaceHeadBytes = 3;

} // namespace

void CSeekHead::writePlace(UINT64 bytes) {
    m_place.SetSize(bytes - kSeekHeadPlaceHeadBytes);
    m_place.Render(m_io);
}

void CSeekHead::fillPlace(CFilePatcher& patcher) {
    (void)patcher.arrives([this] { m_place.ReplaceWith(m_seekHead, m_io, true, false); });
}

} // namespace mkv
