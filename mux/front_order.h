// CFrontOrder: which stream's front packet comes next: the earliest start, and of equal ones the lower index.
//
// The streams with packets are kept ordered by their fronts, so that a packet costs a walk over all streams only when
// streams are empty; those are looked at in every choice.
// Units: 100 ns. Owner: the interleaver; the streams are its, too. Threads: the worker; whoever changes the list of
// streams does so before it runs. Errors: std::bad_alloc from Add alone.
#pragma once

#include <memory>
#include <vector>

#include "mux/mux_inter_stream.h"

class CFrontOrder {
  public:
    void Add(CMuxInterStream& stream);
    void Clear();

    // kMuxOk, kMuxAllEnded, or kMuxFailed while nothing may be chosen. As the streams were at one moment of the call.
    [[nodiscard]] int Choose();
    // After a choice that failed: a stream without which the next one fails, too; null when any packet may help.
    [[nodiscard]] CMuxInterStream* Missing() const { return m_missing; }
    // After a choice: the stream whose front was chosen.
    [[nodiscard]] CMuxInterStream& Chosen() const { return *m_fronts.front().stream; }
    // Takes that front.
    [[nodiscard]] std::unique_ptr<CMuxInterPacket> TakeChosen();

  private:
    struct Front {
        INT64 start;
        UINT32 index; // the stream's, so that equal starts are told apart here
        CMuxInterStream* stream;
    };

    static Front FrontOf(CMuxInterStream& stream, const CMuxInterPacket& packet) {
        return {packet.start, stream.Index(), &stream};
    }

    // Whether a is to be taken after b; so the heap's top is what is taken first.
    static bool IsLater(const Front& a, const Front& b) {
        return a.start != b.start ? a.start > b.start : a.index > b.index;
    }

    // True when a stream was found to have packets now.
    bool LookAtEmptyStreams();
    // Puts the next front of the chosen stream in the place of the one that was taken.
    void Replace(const Front& front);
    std::vector<Front> m_fronts;           // a heap; of the streams that have packets and have not ended
    std::vector<CMuxInterStream*> m_empty; // those that had none when they were last looked at
    CMuxInterStream* m_missing = nullptr;
    bool m_mayGoOn = false; // one of m_empty is active, and so not all have ended
};
