#include "matroska_muxer/file_sequence.h"

#include <algorithm>
#include <utility>

#include "dshow/ref_time.h"
#include "log/logger.h"
#include "matroska_muxer/writer_guard.h"

namespace {

// Far apart, so that what is drawn from them is not alike; never 0, which is none.
UINT64 SeedOfPart(UINT64 seed, UINT32 number) {
    constexpr UINT64 kDistance = 0x9E3779B97F4A7C15;
    const UINT64 moved = seed + kDistance * (number - 1);
    return seed == 0 || moved != 0 ? (seed == 0 ? 0 : moved) : kDistance;
}

// Sums and differences of times that a sample may tell; they saturate.
REFERENCE_TIME Plus(REFERENCE_TIME time, REFERENCE_TIME more) {
    return AddSaturated(time, static_cast<UINT64>(std::max<REFERENCE_TIME>(more, 0)));
}

REFERENCE_TIME Behind(REFERENCE_TIME time, REFERENCE_TIME zero) {
    if (time <= zero) {
        return 0;
    }
    const UINT64 distance = static_cast<UINT64>(time) - static_cast<UINT64>(zero);
    return static_cast<REFERENCE_TIME>(std::min(distance, static_cast<UINT64>(kMaxReferenceTime)));
}

mkv::Packet MediaOf(const CMuxInterPacket& packet, const CMuxInterStream* stream) {
    mkv::Packet media;
    media.start = packet.start;
    media.stop = packet.stop;
    media.data = packet.data.get();
    media.size = packet.size;
    media.syncPoint = packet.syncPoint;
    media.stream = static_cast<UINT32>(packet.streamIndex);
    // Text and subtitles: the kind was found out once, when streaming began.
    media.blockGroup = stream != nullptr && stream->Kind() == MuxStreamKind::Subtitle;
    return media;
}

} // namespace

CFileSequence::CFileSequence(CMkvWriter& writer, CNextOutput& next, CMuxInterleaver& interleaver,
                             const records::CFileOptions& options)
    : m_writer(writer), m_next(next), m_interleaver(interleaver), m_options(options),
      m_io(std::make_unique<CMkvIO>(m_figures)) {}

void CFileSequence::ForgetFigures() {
    m_figures.reset();
    m_writer.forgetClusters();
}

HRESULT CFileSequence::Open(IStream* stream) {
    m_isFailureTold = false;
    m_part = {};
    m_shifts.clear();
    m_events.clear();
    m_next.OpenFile(); // so that the stream may ask for the next one when its own head is written
    const HRESULT hr = GuardWriter(OLESTR("OnStartStreaming"), [&] {
        const records::FileOptions options = m_options.Get();
        m_profile = options.profile;
        m_io->setStream(stream);
        m_writer.Open(m_io.get(), options);
        return S_OK;
    });
    if (FAILED(hr)) {
        m_writer.abandon();
        m_io->releaseStream();
        (void)m_next.CloseFile();
        return hr;
    }
    TellFailure(S_OK);
    return S_OK;
}

void CFileSequence::Close() {
    (void)GuardWriter(OLESTR("OnStopStreaming"), [this] {
        if (m_held.IsBehindKeyframe()) {
            EndCut();
        }
        WriteHeld();
        return S_OK;
    });
    if (const win::ComPtr<IStream> unused = m_next.CloseFile()) {
        m_events.push_back({MuxEvent_NextOutputFailed, E_ABORT, static_cast<LONG_PTR>(m_part.number) + 1});
    }
    TellFailure(CloseWriter());
    TellIndex();
}

HRESULT CFileSequence::CloseWriter() {
    const auto close = [this] {
        return GuardWriter(OLESTR("OnStopStreaming"), [this] {
            m_writer.Close();
            return m_writer.isFinished() ? S_OK : E_OUTOFMEMORY;
        });
    };
    const HRESULT hr = close();
    // What was thrown cost the last cluster; without that one the file can be finished.
    if (FAILED(hr) && m_writer.isOpen() && FAILED(close())) {
        m_writer.abandon();
    }
    m_io->releaseStream();
    m_writer.detach();
    return hr;
}

std::vector<FileEvent> CFileSequence::TakeEvents() {
    return std::exchange(m_events, {});
}

void CFileSequence::TellFailure(HRESULT thrown) {
    const HRESULT failure = FAILED(m_io->firstLoss()) ? m_io->firstLoss() : thrown;
    if (FAILED(failure) && !m_isFailureTold) {
        m_isFailureTold = true;
        m_events.push_back({MuxEvent_OutputFailed, failure, 0});
    }
}

void CFileSequence::TellIndex() {
    if (const auto index = m_writer.indexBeyondPlace()) {
        m_events.push_back(
            {MuxEvent_IndexAtEnd, static_cast<LONG_PTR>(index->bytes), static_cast<LONG_PTR>(index->placeBytes)});
    }
}

// ---- Packets ----------------------------------------------------------------------------------------------------

void CFileSequence::Write(CMuxInterPacket& packet, CMuxInterStream* stream) {
    mkv::Packet media = MediaOf(packet, stream);
    if (m_held.IsEmpty() && !m_next.IsWanted()) {
        media.owned = &packet.data;
        WriteMedia(media, stream);
        return;
    }
    HeldPacket held{media, std::move(packet.data), stream};
    if (m_held.IsBehindKeyframe()) {
        if (!m_held.IsPast(media)) {
            m_held.Hold(std::move(held));
            return;
        }
        EndCut();
    }
    WriteWhileWanted(std::move(held));
}

void CFileSequence::WriteHeld() {
    for (HeldPacket& packet : m_held.TakeAll()) {
        packet.media.owned = &packet.bytes;
        WriteMedia(packet.media, packet.stream);
    }
}

void CFileSequence::WriteMedia(mkv::Packet media, CMuxInterStream* stream) {
    if (const HRESULT written = WriteResult(); written != S_OK && stream != nullptr) {
        stream->SetStreamResult(written);
    }
    HRESULT hr = S_OK;
    if (m_writer.isOpen()) {
        CountIn(media);
        MoveTimes(media);
        hr = GuardWriter(OLESTR("ProcessPacket"), [&] {
            m_writer.WritePacket(media);
            return S_OK;
        });
    }
    const bool isLost = FAILED(hr) || !m_writer.isOpen();
    if (isLost && stream != nullptr) {
        if (FAILED(hr)) {
            stream->SetStreamResult(hr);
        }
        stream->CountLost(media.size);
    }
    TellFailure(hr);
}

// A write that says that it succeeded may have kept a part only, and one behind the one that failed may have succeeded:
// what was lost all the same is told once.
HRESULT CFileSequence::WriteResult() {
    const HRESULT written = m_io->lastWriteResult();
    const bool hasLost = m_writer.takeUntoldLoss();
    return written == S_OK && hasLost ? STG_E_WRITEFAULT : written;
}

void CFileSequence::CountIn(const mkv::Packet& media) {
    if (!m_part.start) {
        m_part.start = media.start;
    }
    if (m_part.hasPackets.size() <= media.stream) {
        m_part.hasPackets.resize(size_t{media.stream} + 1);
    }
    m_part.hasPackets[media.stream] = true;
}

// What was late, and begins before its file does, begins with it: else it would move the times of its track.
void CFileSequence::MoveTimes(mkv::Packet& media) const {
    if (m_part.zero) {
        media.start = Behind(media.start, *m_part.zero);
        media.stop = Behind(media.stop, *m_part.zero);
    } else if (media.stream < m_shifts.size()) {
        media.start = Plus(media.start, m_shifts[media.stream]);
        media.stop = Plus(media.stop, m_shifts[media.stream]);
    }
}

// ---- From file to file ------------------------------------------------------------------------------------------

void CFileSequence::WriteWhileWanted(HeldPacket packet) {
    const std::optional<MuxNextOutputRule> rule = m_next.WantedRule();
    const std::optional<UINT32> cutStream = rule && m_writer.isOpen() ? CutStream(packet.media.stream) : std::nullopt;
    const bool isDue = cutStream && IsDue(packet.media.start, *cutStream, *rule);
    const bool isOfCutStream = isDue && packet.media.stream == *cutStream;
    if (isOfCutStream && m_writer.isKeyframe(packet.media)) {
        BeginCut(std::move(packet));
        return;
    }
    if (!isDue || m_held.IsAnotherInstant(packet.media)) {
        WriteHeld();
    }
    if (isDue && !isOfCutStream) {
        m_held.Hold(std::move(packet));
        return;
    }
    packet.media.owned = &packet.bytes;
    WriteMedia(packet.media, packet.stream);
}

// The first that still gives something, as the one of this packet does: video, or sound where there is none, or
// whatever there is.
std::optional<UINT32> CFileSequence::CutStream(UINT32 giving) const {
    std::optional<UINT32> found;
    MuxStreamKind foundKind = MuxStreamKind::Other;
    for (INT32 i = 0; CMuxInterStream* const stream = m_interleaver.StreamAt(i); ++i) {
        const bool isBetter = !found || stream->Kind() < foundKind;
        const bool isOfUse = stream->Kind() <= MuxStreamKind::Audio || !found;
        if (isBetter && isOfUse && (stream->Index() == giving || !stream->HasEnded())) {
            found = static_cast<UINT32>(i);
            foundKind = stream->Kind();
        }
    }
    return found;
}

// A file has a picture at least.
bool CFileSequence::IsDue(REFERENCE_TIME start, UINT32 cutStream, const MuxNextOutputRule& rule) {
    const bool hasPicture = cutStream < m_part.hasPackets.size() && m_part.hasPackets[cutStream];
    return hasPicture && Plus(start, ShiftOf(cutStream)) >= rule.notBefore &&
           Behind(start, m_part.start.value_or(start)) >= rule.minDuration &&
           (rule.minBytes == 0 || m_writer.fileBytes() >= rule.minBytes);
}

// From packets' times to the recording's.
REFERENCE_TIME CFileSequence::ShiftOf(UINT32 stream) const {
    return m_shifts.empty() ? m_writer.shiftOf(stream) : stream < m_shifts.size() ? m_shifts[stream] : 0;
}

// What is held begins at one instant: where the keyframe does, or before.
void CFileSequence::BeginCut(HeldPacket keyframe) {
    CNextOutput::Request request = m_next.Take();
    const auto isBefore = [&keyframe](REFERENCE_TIME start) { return start < keyframe.media.start; };
    if (!request.stream || (!m_held.IsEmpty() && isBefore(m_held.FirstStart()))) {
        WriteHeld();
    }
    m_held.Begin(std::move(keyframe));
    m_request = std::move(request);
    if (!m_request.stream || m_request.rule.times == MuxOutputTimes_RunOn) {
        EndCut(); // their times do not wait for a picture
    }
}

void CFileSequence::EndCut() {
    if (m_request.stream) {
        const bool fromZero = m_request.rule.times == MuxOutputTimes_FromZero;
        GoOver(m_held.KeyframeStart(), m_held.KeyframeStream(),
               fromZero ? std::optional(m_held.Origin()) : std::nullopt);
    }
    WriteHeld();
}

// The head of the next file stands before the open one ends, so that nothing is lost when it cannot be written.
void CFileSequence::GoOver(REFERENCE_TIME start, UINT32 stream, std::optional<REFERENCE_TIME> zero) {
    const win::ComPtr<IStream> output = std::move(m_request.stream);
    const UINT32 number = m_part.number + 1;
    CMkvWriter::Part part;
    part.start = Plus(start, ShiftOf(stream));
    part.origin = zero ? Plus(*zero, ShiftOf(stream)) : 0;
    auto io = std::make_unique<CMkvIO>(m_figures);
    io->setStream(output.Get());
    if (const HRESULT hr = OpenNext(*io, part); FAILED(hr)) {
        m_writer.dropNext();
        m_events.push_back({MuxEvent_NextOutputFailed, hr, static_cast<LONG_PTR>(number)});
        return;
    }
    KeepShifts();
    TellFailure(FinishFile());
    TellIndex();
    ForgiveOutput();
    m_writer.goOnWithNext();
    m_io = std::move(io);
    m_part = {number, start, zero, {}};
    m_events.push_back({MuxEvent_NextOutputBegun, static_cast<LONG_PTR>(number),
                        static_cast<LONG_PTR>(MsFromReferenceTime(part.start))});
}

void CFileSequence::KeepShifts() {
    if (m_shifts.empty()) {
        for (UINT32 i = 0; i < m_interleaver.StreamCount(); ++i) {
            m_shifts.push_back(m_writer.shiftOf(i));
        }
    }
}

// What the output of a file would not take says nothing of the next one.
void CFileSequence::ForgiveOutput() {
    m_isFailureTold = false;
    for (INT32 i = 0; FAILED(m_io->firstLoss()) && m_interleaver.StreamAt(i) != nullptr; ++i) {
        m_interleaver.StreamAt(i)->SetStreamResult(S_OK);
    }
}

HRESULT CFileSequence::OpenNext(CMkvIO& io, const CMkvWriter::Part& part) {
    return GuardWriter(OLESTR("NextOutput"), [&] {
        m_writer.openNext(&io, NextOptions(), part);
        return io.firstLoss();
    });
}

records::FileOptions CFileSequence::NextOptions() const {
    records::FileOptions options = m_options.Get();
    options.profile = m_profile;
    options.seed = SeedOfPart(options.seed, m_part.number + 1);
    return options;
}

// As Close does it; a second try does without the last cluster.
HRESULT CFileSequence::FinishFile() {
    const auto finish = [this] {
        return GuardWriter(OLESTR("NextOutput"), [this] {
            m_writer.finishBeforeNext();
            return m_writer.isFinished() ? S_OK : E_OUTOFMEMORY;
        });
    };
    const HRESULT hr = finish();
    if (FAILED(hr)) {
        (void)finish();
    }
    return hr;
}
