#include "sources/matroska/matroska_reader.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "codecs/avc_configuration.h"
#include "codecs/lacing.h"
#include "codecs/prores_frame.h"
#include "codecs/unit_lengths.h"
#include "codecs/webvtt_cue.h"
#include "dshow/ref_time.h"
#include "media/codec_description.h"
#include "media/media_types_of.h"
#include "media/opus_padding.h"
#include "sources/base/printable.h"

namespace matroska {

namespace {

// All of a file together: they are held in memory. The muxer takes less than 2 GiB of each.
constexpr UINT64 kMaxAttachmentBytes = 0x7FFFFFFE;
constexpr size_t kMaxCodecIdChars = 64;
// A block's time is at most this much before that of its cluster.
constexpr UINT64 kMaxTicksBelowCluster = 32768;
// No codec needs as much; a longer one is damage, and none.
constexpr UINT64 kMaxDelayNs = 1'000'000'000;
constexpr const char* kOpusId = "A_OPUS";
constexpr const char* kProResId = "V_PRORES";
// Of settings, an identifier and comments; more is damage.
constexpr UINT64 kMaxAdditionBytes = UINT64{64} * 1024;

// In whole milliseconds, as players of files with such times take it off: so a time that is moved by it is rounded as
// it was.
INT64 SaneDelay(UINT64 delayNs) {
    constexpr UINT64 kNsPerMs = 1'000'000;
    return delayNs <= kMaxDelayNs ? static_cast<INT64>((delayNs + kNsPerMs / 2) / kNsPerMs * kNsPerMs) : 0;
}

size_t AvcLengthBytes(const Track& track) {
    if (track.codecId != "V_MPEG4/ISO/AVC") {
        return 0;
    }
    const size_t bytes = codecs::ParseAvcConfiguration(track.codecPrivate).lengthBytes;
    return bytes == codecs::kSampleLengthSizeBytes ? 0 : bytes;
}

// The identifier comes from the file and goes to the user's console.
std::string ShownCodecId(const Track& track) {
    return track.codecId.empty() ? "no codec identifier" : source::Printable(track.codecId, kMaxCodecIdChars);
}

} // namespace

MatroskaReader::MatroskaReader(std::unique_ptr<source::ByteSource> bytes, MatroskaFile file, TimeRule rule)
    : m_bytes(std::move(bytes)), m_file(std::move(file)), m_ebml(*m_bytes), m_times(m_file.timestampScaleNs),
      m_rule(rule), m_walker(m_ebml, m_file.segment),
      m_queue(m_file.durationTicks * static_cast<double>(m_file.timestampScaleNs)) {
    for (Track track : m_file.tracks) {
        AddStream(track);
    }
    FindShift();
    StartOver();
}

// Undoes what was done to the codec private data; why the track cannot be read otherwise.
std::string MatroskaReader::PrepareTrack(Track& track) {
    const ContentDecoder decoder(track.encodings, ContentDecoder::Part::CodecPrivate);
    std::string problem = ContentDecoder(track.encodings, ContentDecoder::Part::Frames).Problem();
    if (problem.empty()) {
        problem = decoder.Problem();
    }
    if (problem.empty() && track.lacksPrivate) {
        problem = "the codec private data is damaged or too large";
    }
    if (!problem.empty() || decoder.ChangesNothing() || track.codecPrivate.empty()) {
        return problem;
    }
    std::optional<std::vector<BYTE>> decoded = decoder.Decode(track.codecPrivate, m_privateRoom);
    if (!decoded) {
        return "the codec private data is damaged";
    }
    track.codecPrivate = std::move(*decoded);
    return {};
}

void MatroskaReader::AddStream(Track& track) {
    source::StreamDescription description;
    description.name = WideString(OLESTR("Track ")) + ToWideDecimal(track.number);
    const std::string problem = PrepareTrack(track);
    if (problem.empty()) {
        description.types = media::MediaTypesOf(track);
    }
    if (description.types.empty()) {
        description.problem =
            ShownCodecId(track) + ": " + (problem.empty() ? "no media type carries this codec" : problem);
    } else {
        m_streamOf[track.number] = m_streams.size();
    }
    const bool isExactOpus = m_rule == TimeRule::Exact && track.codecId == kOpusId;
    const INT64 delayNs = DelayOf(track, description);
    description.properties = {true,           track.name,       track.language,        track.isDefault,
                              track.isForced, track.isEnabled,  track.hearingImpaired, track.visualImpaired,
                              track.original, track.commentary, track.video.colour,    track.dolbyVision};
    m_streams.push_back(std::move(description));
    m_states.push_back({ContentDecoder(track.encodings, ContentDecoder::Part::Frames), AvcLengthBytes(track), delayNs,
                        isExactOpus, WrappingOf(track)});
    m_queue.AddStream(track.IsSubtitle(), track.defaultDurationNs, delayNs);
}

// What the media type makes of the track is what the muxer will write of it.
INT64 MatroskaReader::DelayOf(const Track& track, const source::StreamDescription& description) const {
    if (m_rule != TimeRule::Exact || description.types.empty()) {
        return 0;
    }
    const UINT64 ownNs = media::DescribeStrictCodec(description.types.front()).codecDelayNs;
    return SaneDelay(ownNs) - SaneDelay(track.codecDelayNs);
}

std::optional<INT64> MatroskaReader::StartOf(const Block& block, const Stream& stream) const {
    const std::optional<INT64> ns = m_times.NsOf(block.ticks);
    return ns ? std::optional(*ns + stream.delayNs) : std::nullopt;
}

// Only blocks of the first clusters can lie below zero.
void MatroskaReader::FindShift() {
    INT64 leastNs = 0;
    const UINT64 delayTicks = m_rule == TimeRule::Exact ? kMaxDelayNs / m_file.timestampScaleNs : 0;
    while (const std::optional<Block> block = m_walker.Next()) {
        if (m_walker.ClusterTicks() > kMaxTicksBelowCluster + delayTicks) {
            break;
        }
        if (const auto found = m_streamOf.find(block->track); found != m_streamOf.end()) {
            leastNs = std::min(leastNs, StartOf(*block, m_states[found->second]).value_or(0));
        }
    }
    REFERENCE_TIME shift = -FrameTimes::RefTimeOf(leastNs);
    if (m_rule == TimeRule::Exact) {
        shift = (shift + kReferenceTimesPerMs - 1) / kReferenceTimesPerMs * kReferenceTimesPerMs;
    }
    m_queue.SetShift(shift);
}

void MatroskaReader::StartOver() {
    m_walker.Rewind();
    m_queue.Clear();
    m_budget.Reset();
    m_lostFrames = false;
}

HRESULT MatroskaReader::DamageSoFar() const {
    return m_lostFrames || m_walker.IsDamaged() ? HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT) : S_OK;
}

bool MatroskaReader::ReadNext(source::Packet& packet) {
    Spare(packet.data);
    while (!m_queue.Take(packet)) {
        const std::optional<Block> block = m_walker.Next();
        if (!block) {
            m_queue.End();
            return m_queue.Take(packet);
        }
        ReadBlock(*block);
    }
    return true;
}

void MatroskaReader::ReadBlock(const Block& block) {
    const auto found = m_streamOf.find(block.track);
    if (found == m_streamOf.end()) {
        return;
    }
    const std::optional<INT64> startNs = StartOf(block, m_states[found->second]);
    if (!startNs) {
        m_lostFrames = true;
        return;
    }
    std::optional<INT64> blockNs;
    if (block.durationTicks && *block.durationTicks <= INT64_MAX) {
        blockNs = m_times.NsOf(static_cast<INT64>(*block.durationTicks));
    }
    ReadFrames(block, found->second);
    if (m_states[found->second].isExactOpus) {
        QueueOpus(found->second, *startNs, block.paddingNs);
        return;
    }
    m_queue.Add(found->second, *startNs, blockNs, std::move(m_frames));
}

// Each lasts as long as it says itself; the padding is the last one's. One that is padding all over keeps a stop time.
void MatroskaReader::QueueOpus(size_t index, INT64 startNs, UINT64 paddingNs) {
    m_lengths.clear();
    for (const source::Packet& packet : m_frames) {
        const bool isLast = &packet == &m_frames.back();
        const REFERENCE_TIME whole = media::OpusLengthWithout(packet.data, 0);
        const REFERENCE_TIME length = media::OpusLengthWithout(packet.data, isLast ? paddingNs : 0);
        m_lengths.push_back((whole > 0 ? std::max<REFERENCE_TIME>(length, 1) : 0) * kNsPerReferenceTime);
    }
    m_queue.AddTimed(index, startNs, m_lengths, std::move(m_frames));
}

void MatroskaReader::ReadFrames(const Block& block, size_t index) {
    m_frames.clear();
    if (block.size > source::kMaxPacketBytes) {
        m_lostFrames = true;
        return;
    }
    std::vector<BYTE> payload = TakeBytes(static_cast<size_t>(block.size));
    if (m_bytes->ReadAt(block.data, payload) != payload.size()) {
        m_lostFrames = true;
        return;
    }
    TakeApart(std::move(payload), block.lacing, m_states[index]);
    WrapFrames(block, m_states[index].wrapping);
    for (source::Packet& packet : m_frames) {
        packet.stream = index;
        packet.keyframe = block.keyframe;
    }
}

MatroskaReader::Wrapping MatroskaReader::WrappingOf(const Track& track) {
    if (track.codecId == kProResId) {
        return Wrapping::ProResHead;
    }
    return track.codecId == kWebVttId ? Wrapping::CueBoxes : Wrapping::None;
}

// Lost frames stay empty. An addition is no part of what encodings change.
void MatroskaReader::WrapFrames(const Block& block, Wrapping wrapping) {
    codecs::WebVttCue cue;
    if (wrapping == Wrapping::CueBoxes && block.additionSize <= kMaxAdditionBytes) {
        std::vector<BYTE> addition(static_cast<size_t>(block.additionSize));
        addition.resize(m_bytes->ReadAt(block.additionData, addition));
        codecs::ReadCueAddition(addition, cue);
    }
    for (source::Packet& packet : m_frames) {
        if (wrapping == Wrapping::ProResHead) {
            codecs::AddProResHead(packet.data);
        } else if (wrapping == Wrapping::CueBoxes && !packet.data.empty()) {
            cue.text.assign(packet.data.begin(), packet.data.end());
            packet.data = codecs::BoxesOfCue(cue);
        }
    }
}

void MatroskaReader::TakeApart(std::vector<BYTE> payload, BYTE lacing, const Stream& stream) {
    if (lacing == 0 && stream.KeepsFrames()) {
        m_frames.emplace_back().data = std::move(payload);
        return;
    }
    const auto frames = codecs::TakeFramesApart(payload, lacing);
    m_lostFrames = m_lostFrames || !frames;
    const size_t allowed =
        m_budget.RoomFor(payload.size(), stream.avcLengthBytes != 0 ? codecs::kSampleLengthSizeBytes : 1);
    size_t room = allowed;
    for (const codecs::ByteView frame : frames.value_or(std::vector<codecs::ByteView>())) {
        std::optional<std::vector<BYTE>> data = DecodeFrame(stream, frame, room);
        m_lostFrames = m_lostFrames || !data;
        m_frames.emplace_back().data = std::move(data).value_or(std::vector<BYTE>()); // a lost one takes its time
    }
    m_budget.Spend(stream.KeepsFrames() ? 0 : payload.size(), allowed - room);
    Spare(payload);
}

// The larger one is kept: memory for small ones is cheap.
void MatroskaReader::Spare(std::vector<BYTE>& bytes) {
    if (bytes.capacity() > m_spare.capacity()) {
        m_spare.swap(bytes);
    }
}

// What is kept by whoever gets the frame stays in proportion to it.
std::vector<BYTE> MatroskaReader::TakeBytes(size_t size) {
    constexpr size_t kMaxWaste = size_t{64} * 1024;
    if (m_spare.capacity() < size || m_spare.capacity() > 4 * size + kMaxWaste) {
        return std::vector<BYTE>(size);
    }
    std::vector<BYTE> bytes = std::exchange(m_spare, {});
    bytes.resize(size);
    return bytes;
}

std::optional<std::vector<BYTE>> MatroskaReader::DecodeFrame(const Stream& stream, codecs::ByteView frame,
                                                             size_t& room) const {
    std::optional<std::vector<BYTE>> data = stream.decoder.Decode(frame, room);
    if (!data || stream.avcLengthBytes == 0) {
        return data;
    }
    // What widening adds counts as what decompression makes.
    const size_t narrow = data->size();
    data = codecs::WidenLengths(*data, stream.avcLengthBytes, std::min(source::kMaxPacketBytes, narrow + room));
    if (data && data->size() > narrow) {
        room -= data->size() - narrow;
    }
    return data;
}

std::vector<source::Attachment> MatroskaReader::ReadAttachments(std::vector<std::string>& leftOut) const {
    std::vector<source::Attachment> attachments;
    UINT64 room = kMaxAttachmentBytes;
    for (const AttachedFile& file : m_file.attachments) {
        std::vector<BYTE> data = file.isDamaged ? std::vector<BYTE>() : m_ebml.ReadBytes(file.data, room);
        if (!file.isDamaged && data.size() == file.data.Size()) {
            room -= data.size();
            attachments.push_back({file.fileName, file.description, file.mimeType, file.uid, std::move(data)});
        } else {
            leftOut.push_back(file.fileName);
        }
    }
    return attachments;
}

} // namespace matroska
