// CFileSequence: the files of a run, as a rule one: opens the first, writes packets into the open one, goes over to the
// stream of CNextOutput where that asks for it, and closes the last. All tracks are cut at the time of one keyframe:
// what begins there or later is in the next file. Pictures that are shown before the keyframe and come behind it are so
// too, since they need it.
//
// Units: 100 ns. Owner: the filter; writer, interleaver, options and requests are not owned and outlive it.
// Threads: under the filter's writer lock, packets on the worker. Errors: what the writer throws is logged and becomes
// the HRESULT of a stream or of an event; std::bad_alloc of what is held.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "matroska_muxer/file_event.h"
#include "matroska_muxer/held_packets.h"
#include "matroska_muxer/next_output.h"
#include "mkv/mkv_io.h"
#include "mkv/mkv_writer.h"
#include "mux/mux_interleaver.h"
#include "records/file_options.h"

class CFileSequence {
  public:
    CFileSequence(CMkvWriter& writer, CNextOutput& next, CMuxInterleaver& interleaver,
                  const records::CFileOptions& options);
    CFileSequence(const CFileSequence&) = delete;
    CFileSequence& operator=(const CFileSequence&) = delete;

    // Of all writes of a run; for any thread.
    [[nodiscard]] const mkv::CWriteFigures& Figures() const { return m_figures; }
    void ForgetFigures();

    // The first file; the writer knows the tracks.
    [[nodiscard]] HRESULT Open(IStream* stream);
    void Write(CMuxInterPacket& packet, CMuxInterStream* stream);
    // Finishes what is open.
    void Close();

    // In their order, each once. The graph is told without the writer lock, since it may ask the filter something back.
    [[nodiscard]] std::vector<FileEvent> TakeEvents();
    [[nodiscard]] bool HasEvents() const { return !m_events.empty(); }

  private:
    // Of the open file.
    struct Part {
        UINT32 number = 1;
        std::optional<REFERENCE_TIME> start; // of its first packet, or the keyframe's
        std::optional<REFERENCE_TIME> zero;  // packets' time that becomes 0; none: they are moved by m_shifts
        std::vector<bool> hasPackets;        // by stream
    };

    void WriteHeld();
    void WriteMedia(mkv::Packet media, CMuxInterStream* stream);
    [[nodiscard]] HRESULT WriteResult();
    void MoveTimes(mkv::Packet& media) const;
    void CountIn(const mkv::Packet& media);

    void WriteWhileWanted(HeldPacket packet);
    [[nodiscard]] std::optional<UINT32> CutStream(UINT32 giving) const;
    [[nodiscard]] bool IsDue(REFERENCE_TIME start, UINT32 cutStream, const MuxNextOutputRule& rule);
    [[nodiscard]] REFERENCE_TIME ShiftOf(UINT32 stream) const;
    void BeginCut(HeldPacket keyframe);
    void EndCut();
    void GoOver(REFERENCE_TIME start, UINT32 stream, std::optional<REFERENCE_TIME> zero);
    void KeepShifts();
    void ForgiveOutput();
    [[nodiscard]] HRESULT OpenNext(CMkvIO& io, const CMkvWriter::Part& part);
    [[nodiscard]] records::FileOptions NextOptions() const;
    [[nodiscard]] HRESULT FinishFile();
    [[nodiscard]] HRESULT CloseWriter();
    // The first failure of an output, once: what was thrown just now, or what a write met.
    void TellFailure(HRESULT thrown);
    // Of the file that was finished just now.
    void TellIndex();

    CMkvWriter& m_writer;
    CNextOutput& m_next;
    CMuxInterleaver& m_interleaver;
    const records::CFileOptions& m_options;
    mkv::CWriteFigures m_figures;
    std::unique_ptr<CMkvIO> m_io;
    MuxProfile m_profile = MuxProfile_Compatible; // of all files of the run
    bool m_isFailureTold = false;                 // of the open file
    Part m_part;
    std::vector<REFERENCE_TIME> m_shifts; // by stream: the first file's, once there is another
    CHeldPackets m_held;
    CNextOutput::Request m_request; // what is held goes there
    std::vector<FileEvent> m_events;
};
