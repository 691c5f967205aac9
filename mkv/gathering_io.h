// CGatheringIO: stands between the Matroska libraries, which write an element in many small pieces, and the stream;
// what was gathered leaves in one write, at the same position and with the same bytes.
// Units: bytes. Owner: the file being written; the target is not owned. Threads: as the target.
// Errors: what the target throws, std::bad_alloc; after either, discard() what was gathered.
#pragma once

#include <span>
#include <vector>

#include <ebml/IOCallback.h>

#include "win/platform.h"

class CGatheringIO : public libebml::IOCallback {
  public:
    explicit CGatheringIO(libebml::IOCallback& target) : m_target(target) {}
    CGatheringIO(const CGatheringIO&) = delete;
    CGatheringIO& operator=(const CGatheringIO&) = delete;

    // Writes what was gathered to the target.
    void flush();
    // Forgets it.
    void discard() noexcept;
    // Replaces the last bytes gathered.
    void overwriteTail(std::span<const BYTE> bytes);

    // libebml::IOCallback; all but write and getFilePointer flush first.
    uint32 read(void* buffer, size_t size) override;
    void setFilePointer(int64 offset, libebml::seek_mode mode = libebml::seek_beginning) override;
    size_t write(const void* buffer, size_t size) override;
    uint64 getFilePointer() override;
    void close() override { flush(); }

  private:
    libebml::IOCallback& m_target;
    std::vector<BYTE> m_gathered;
    uint64 m_startPosition = 0; // of the target when the first byte was gathered
};
