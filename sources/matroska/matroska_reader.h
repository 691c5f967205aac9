// MatroskaReader: the frames of a Matroska file as packets with times.
//
// Units: times in 100 ns, where not named otherwise. Owner: the source filter. Threads: one at a time.
// Errors: blocks that are damaged are left out, and Damage tells.
#pragma once

#include <map>
#include <memory>

#include "sources/base/packet_reader.h"
#include "sources/matroska/block_walker.h"
#include "sources/matroska/content_decoder.h"
#include "sources/matroska/decoding_budget.h"
#include "sources/matroska/frame_queue.h"
#include "sources/matroska/frame_times.h"
#include "sources/matroska/matroska_file.h"
#include "sources/matroska/time_rule.h"

namespace matroska {

class MatroskaReader final : public source::PacketReader {
  public:
    MatroskaReader(std::unique_ptr<source::ByteSource> bytes, MatroskaFile file, TimeRule rule = TimeRule::AsStored);

    [[nodiscard]] const std::vector<source::StreamDescription>& Streams() const override { return m_streams; }

    // Whether the file has further attachments, which cannot be found.
    [[nodiscard]] bool LacksAttachments() const { return m_file.lacksAttachments; }
    // Reads them all, but for those that the muxer does not take or that cannot be read; their names are appended.
    [[nodiscard]] std::vector<source::Attachment> ReadAttachments(std::vector<std::string>& leftOut) const;

  private:
    // PacketReader
    void StartOver() override;
    [[nodiscard]] bool ReadNext(source::Packet& packet) override;
    [[nodiscard]] HRESULT DamageSoFar() const override;

    // What is put around each frame, as its media type asks.
    enum class Wrapping { None, ProResHead, CueBoxes };

    struct Stream {
        ContentDecoder decoder;
        size_t avcLengthBytes = 0; // 0: the lengths of units stay as they are
        INT64 delayNs = 0;         // added to its blocks' times
        bool isExactOpus = false;
        Wrapping wrapping = Wrapping::None;

        [[nodiscard]] bool KeepsFrames() const { return decoder.ChangesNothing() && avcLengthBytes == 0; }
    };

    void AddStream(Track& track);
    [[nodiscard]] std::string PrepareTrack(Track& track);
    void FindShift();
    [[nodiscard]] INT64 DelayOf(const Track& track, const source::StreamDescription& description) const;
    [[nodiscard]] std::optional<INT64> StartOf(const Block& block, const Stream& stream) const;
    void QueueOpus(size_t index, INT64 startNs, UINT64 paddingNs);
    void ReadBlock(const Block& block);
    void ReadFrames(const Block& block, size_t index);
    void TakeApart(std::vector<BYTE> payload, BYTE lacing, const Stream& stream);
    [[nodiscard]] static Wrapping WrappingOf(const Track& track);
    void WrapFrames(const Block& block, Wrapping wrapping);
    void Spare(std::vector<BYTE>& bytes);
    [[nodiscard]] std::vector<BYTE> TakeBytes(size_t size);
    [[nodiscard]] std::optional<std::vector<BYTE>> DecodeFrame(const Stream& stream, codecs::ByteView frame,
                                                               size_t& room) const;

    const std::unique_ptr<source::ByteSource> m_bytes;
    const MatroskaFile m_file;
    const EbmlReader m_ebml;
    const FrameTimes m_times;
    const TimeRule m_rule;
    BlockWalker m_walker;
    std::vector<source::StreamDescription> m_streams;
    std::vector<Stream> m_states;        // one a stream
    std::map<UINT64, size_t> m_streamOf; // by track number; the streams that have types
    FrameQueue m_queue;
    std::vector<source::Packet> m_frames; // of the block that is read
    std::vector<INT64> m_lengths;         // of them
    std::vector<BYTE> m_spare;            // memory for the next one
    DecodingBudget m_budget;
    size_t m_privateRoom = source::kMaxPrivateBytes; // for what the private data of further tracks become
    bool m_lostFrames = false;
};

} // namespace matroska
