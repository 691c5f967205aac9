#include "mkv/gathering_io.h"

#include <algorithm>
#include <utility>

#include "mkv/writer_errors.h"

namespace mkv {

namespace {

// One write of a stream takes a 32-bit size; far above it a cluster is split rather than truncated.
constexpr size_t kMaxWriteBytes = size_t{1} << 30;
// A cluster has up to 4 MiB of payload; memory that one with a huge block took is given back.
constexpr size_t kMaxKeptBytes = size_t{8} << 20;
// From here on a piece, such as the data of an attachment, leaves from where it lies.
constexpr size_t kUngatheredBytes = kMaxKeptBytes;
// A seek that fails once is asked again before bytes go wherever the target stands.
constexpr int kSeekTries = 2;

} // namespace

bool CGatheringIO::begin() {
    m_start = 0;
    m_isLive = !seekTarget();
    m_where = Target::AtStart;
    return !m_isLive;
}

void CGatheringIO::moveTo(uint64 position) {
    flush();
    if (m_where != Target::AtStart || m_start != position) {
        m_start = position;
        m_where = Target::Elsewhere;
    }
}

void CGatheringIO::bringTo(uint64 position) {
    moveTo(position);
    if (m_where != Target::AtStart) {
        setFilePointer(static_cast<int64>(position), libebml::seek_beginning);
    }
}

// What was skipped behind the place is written over, too.
void CGatheringIO::returnTo(const Place& place) {
    moveTo(place.position);
    m_skippedBytes = place.skippedBytes;
}

void CGatheringIO::flush() {
    const std::span<const BYTE> gathered(m_gathered);
    if (!gathered.empty() && !writeThrough({&gathered, 1})) {
        lose(std::exchange(m_gathered, {}));
    }
    discard();
}

void CGatheringIO::writeParts(Parts parts) {
    flush();
    if (parts.size() > 1 && !m_seeks) {
        std::ranges::for_each(parts, [this](std::span<const BYTE> part) { gather(part); });
        flush();
    } else if (!writeThrough(parts)) {
        lose({});
    }
}

void CGatheringIO::overwrite(uint64 position, std::span<const BYTE> bytes) {
    flush();
    std::vector<BYTE> copy(bytes.begin(), bytes.end());
    const uint64 back = getFilePointer();
    m_start = position;
    m_where = Target::Elsewhere;
    const bool isThere = seekTarget();
    m_isAway = m_isAway || isThere;
    if (!isThere || !writePart(bytes)) {
        lose(std::move(copy));
    }
    m_start = back;
}

void CGatheringIO::lose(std::vector<BYTE> bytes) {
    m_lost = LostBytes{m_start, std::move(bytes)};
    m_hasUntoldLoss = true;
}

// False leaves the target anywhere, and the start where it was.
bool CGatheringIO::writeThrough(Parts parts) {
    learnStart();
    const uint64 wanted = m_start;
    if (!bringTarget()) {
        return false;
    }
    m_where = Target::Elsewhere;
    uint64 written = 0;
    for (const std::span<const BYTE> part : parts) {
        if (!writePart(part)) {
            return false;
        }
        written += part.size();
    }
    m_skippedBytes += m_start - wanted;
    m_start += written;
    m_where = Target::AtStart;
    return true;
}

bool CGatheringIO::writePart(std::span<const BYTE> part) {
    while (!part.empty()) {
        const size_t size = std::min(part.size(), kMaxWriteBytes);
        m_target.writeFully(part.data(), size);
        if (!m_target.isLastWriteWhole()) {
            return false;
        }
        part = part.subspan(size);
    }
    return true;
}

void CGatheringIO::learnStart() {
    if (m_where == Target::Unknown) {
        m_start = m_target.getFilePointer();
        m_where = Target::AtStart;
    }
}

// An output that does not seek gets its bytes all the same, where it stands.
bool CGatheringIO::bringTarget() {
    if (m_where == Target::AtStart || m_isLive || seekTarget()) {
        m_isAway = false;
        return true;
    }
    if (m_isAway) {
        return false;
    }
    const std::optional<uint64> position = m_target.position();
    m_start = position.value_or(m_start);
    m_isSure = m_isSure && position.has_value();
    return true;
}

bool CGatheringIO::seekTarget() {
    try {
        askTarget(static_cast<int64>(m_start), libebml::seek_beginning);
        m_seeks = true;
    } catch (const char*) {
        m_seeks = false;
    }
    return m_seeks;
}

// Throws what the target throws the last time.
void CGatheringIO::askTarget(int64 offset, libebml::seek_mode mode) {
    for (int tries = 1;; ++tries) {
        try {
            m_target.setFilePointer(offset, mode);
            return;
        } catch (const char*) {
            if (tries == kSeekTries) {
                throw;
            }
        }
    }
}

void CGatheringIO::discard() noexcept {
    if (m_gathered.capacity() > kMaxKeptBytes) {
        std::vector<BYTE>().swap(m_gathered);
    }
    m_gathered.clear();
}

void CGatheringIO::overwriteTail(std::span<const BYTE> bytes) {
    const size_t size = std::min(bytes.size(), m_gathered.size());
    std::copy_n(bytes.begin(), size, m_gathered.end() - static_cast<ptrdiff_t>(size));
}

std::optional<LostBytes> CGatheringIO::takeLost() {
    return std::exchange(m_lost, std::nullopt);
}

uint32 CGatheringIO::read(void* buffer, size_t size) {
    flush();
    m_where = Target::Unknown;
    return m_target.read(buffer, size);
}

void CGatheringIO::setFilePointer(int64 offset, libebml::seek_mode mode) {
    flush();
    const bool isAbsolute = mode == libebml::seek_beginning;
    m_where = isAbsolute ? Target::Elsewhere : Target::Unknown; // if it throws
    askTarget(offset, mode);
    if (isAbsolute) {
        m_start = static_cast<uint64>(offset);
        m_where = Target::AtStart;
    }
}

size_t CGatheringIO::write(const void* buffer, size_t size) {
    const std::span<const BYTE> bytes(static_cast<const BYTE*>(buffer), size);
    if (size >= kUngatheredBytes) {
        writeParts({&bytes, 1});
    } else {
        gather(bytes);
    }
    return size;
}

void CGatheringIO::gather(std::span<const BYTE> bytes) {
    if (m_gathered.empty()) {
        learnStart();
    }
    m_gathered.insert(m_gathered.end(), bytes.begin(), bytes.end());
}

uint64 CGatheringIO::getFilePointer() {
    learnStart();
    return m_start + m_gathered.size();
}

} // namespace mkv
