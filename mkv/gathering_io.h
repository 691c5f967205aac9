// CGatheringIO: stands between the Matroska libraries, which write an element in many small pieces, and the output;
// what was gathered leaves in one write. It counts where in the file each byte goes and asks the output for nothing, so
// that a failed query is never taken for a position. What a failed write lost is not there: the next byte takes its
// place.
// Units: bytes from the output's start. Owner: the file being written; the target is not owned. Threads: as the target.
// Errors: what the target throws, std::bad_alloc; after either, discard() what was gathered.
#pragma once

#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "mkv/file_output.h"
#include "win/platform.h"

namespace mkv {

// Bytes that a write did not bring to the output; empty when they are still where they lay.
struct LostBytes {
    uint64 position = 0;
    std::vector<BYTE> bytes;
};

class CGatheringIO : public libebml::IOCallback {
  public:
    explicit CGatheringIO(CFileOutput& target) : m_target(target) {}
    CGatheringIO(const CGatheringIO&) = delete;
    CGatheringIO& operator=(const CGatheringIO&) = delete;

    // The first byte goes to the target's start; it is asked to go there at once. False when it does not seek: the
    // bytes follow each other from where it stands then, and it is never asked again.
    [[nodiscard]] bool begin();
    // The next byte goes there; the target is asked to when there is one.
    void moveTo(uint64 position);
    // The same for what may go nowhere else: the target is asked at once, unless it stands there, and throws when it
    // refuses.
    void bringTo(uint64 position);
    // Where the next byte goes, to come back to when what follows is lost.
    struct Place {
        uint64 position;
        uint64 skippedBytes;
    };
    [[nodiscard]] Place place() { return {getFilePointer(), m_skippedBytes}; }
    void returnTo(const Place& place);
    // Writes what was gathered to the target.
    void flush();
    // Writes what was gathered, and then these from where they lie, one after the other; all are lost when one is. They
    // leave in one write to a target that does not seek, where nothing could take the place of the first of them.
    using Parts = std::span<const std::span<const BYTE>>;
    void writeParts(Parts parts);
    // Writes over what lies there, and comes back: until the target stands where it did, all else is lost. So are these
    // bytes when the target does not go there.
    void overwrite(uint64 position, std::span<const BYTE> bytes);
    // Forgets it.
    void discard() noexcept;
    // Replaces the last bytes gathered.
    void overwriteTail(std::span<const BYTE> bytes);
    // What the last failed write lost; none when all arrived since the last call.
    [[nodiscard]] std::optional<LostBytes> takeLost();
    // Whether anything was lost since the last call; takeLost does not change that.
    [[nodiscard]] bool takeUntoldLoss() { return std::exchange(m_hasUntoldLoss, false); }
    // How far behind its place the target stood when bytes had to go to it unsought, all such gaps together.
    [[nodiscard]] uint64 skippedBytes() const { return m_skippedBytes; }
    // False once the target failed so often that nothing is known of where the bytes went.
    [[nodiscard]] bool isPositionSure() const { return m_isSure; }

    // libebml::IOCallback; all but write and getFilePointer flush first.
    uint32 read(void* buffer, size_t size) override;
    void setFilePointer(int64 offset, libebml::seek_mode mode = libebml::seek_beginning) override;
    size_t write(const void* buffer, size_t size) override;
    uint64 getFilePointer() override;
    void close() override { flush(); }

  private:
    enum class Target { Unknown, Elsewhere, AtStart };

    void learnStart();
    // False when nothing may be written where it stands.
    [[nodiscard]] bool bringTarget();
    [[nodiscard]] bool seekTarget();
    void askTarget(int64 offset, libebml::seek_mode mode);
    [[nodiscard]] bool writeThrough(Parts parts);
    [[nodiscard]] bool writePart(std::span<const BYTE> part);
    void gather(std::span<const BYTE> bytes);
    // What it was, or nothing when it is still where it lay.
    void lose(std::vector<BYTE> bytes);

    CFileOutput& m_target;
    std::vector<BYTE> m_gathered;
    uint64 m_start = 0;               // where the first byte gathered goes
    Target m_where = Target::Unknown; // where the target stands, by what is known; Unknown: nor is m_start
    bool m_isAway = false;            // to overwrite: what stands there must stay
    uint64 m_skippedBytes = 0;        // may be less than none: it wraps around
    bool m_isSure = true;
    bool m_seeks = true; // the target did when it was last asked to
    bool m_isLive = false;
    std::optional<LostBytes> m_lost;
    bool m_hasUntoldLoss = false;
};

} // namespace mkv
