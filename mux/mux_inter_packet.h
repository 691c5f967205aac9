// CMuxInterPacket: one media packet on its way from an input pin to the concrete muxer.
//
// Units: times in 100 ns, size in bytes. Owner: whoever holds it; its data goes with it.
// Threads: one at a time, handed over through the interleaver.
#pragma once

#include <cstddef>
#include <memory>

#include "win/owned_bytes.h"
#include "win/platform.h"

class CPacketSlab;

class CMuxInterPacket {
  public:
    CMuxInterPacket() = default;
    explicit CMuxInterPacket(INT32 index) : streamIndex(index) {}
    virtual ~CMuxInterPacket() = default;
    CMuxInterPacket(const CMuxInterPacket&) = delete;
    CMuxInterPacket& operator=(const CMuxInterPacket&) = delete;

    // In front of each packet stands the slab that it lies in; none for one that is alone.
    static void* operator new(size_t size);
    static void* operator new(size_t, void* place) noexcept { return place; }
    static void operator delete(void* packet) noexcept;

    // As it was when it was made, of no stream.
    void Empty() {
        data.reset();
        start = 0;
        stop = 0;
        size = 0;
        syncPoint = false;
        hasTime = false;
        streamIndex = -1;
        endOfStream = false;
        muxerFlag = 0;
    }

    INT64 start = 0;
    INT64 stop = 0;
    win::OwnedBytes data; // may be null
    UINT32 size = 0;
    bool syncPoint = false;
    bool hasTime = false;
    INT32 streamIndex = -1; // -1: not assigned yet
    bool endOfStream = false;
    BYTE muxerFlag = 0; // the concrete muxer's own

    CMuxInterPacket* next = nullptr; // the pool's, while the packet lies there
};
