#include <cstring>
#include <memory>
#include <stdexcept>

extern "C" {
#include <libavformat/avformat.h>
}

#include "bench/native/peers.h"
#include "dshow/ref_time.h"

namespace bench {

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;
constexpr int kSamplesPerSecond = 48000;
constexpr int kChannels = 2;

void Demand(bool done, const char* what) {
    if (!done) {
        throw std::runtime_error(std::string("libavformat: ") + what);
    }
}

struct FreeContext {
    void operator()(AVFormatContext* context) const {
        avio_closep(&context->pb);
        avformat_free_context(context);
    }
};
using Context = std::unique_ptr<AVFormatContext, FreeContext>;

AVCodecID CodecOf(LoadTrack::Kind kind) {
    switch (kind) {
    case LoadTrack::Kind::Avc:
        return AV_CODEC_ID_H264;
    case LoadTrack::Kind::Aac:
        return AV_CODEC_ID_AAC;
    case LoadTrack::Kind::Srt:
        return AV_CODEC_ID_SUBRIP;
    case LoadTrack::Kind::Opus:
        break;
    }
    return AV_CODEC_ID_OPUS;
}

AVMediaType TypeOf(LoadTrack::Kind kind) {
    if (kind == LoadTrack::Kind::Avc) {
        return AVMEDIA_TYPE_VIDEO;
    }
    return kind == LoadTrack::Kind::Srt ? AVMEDIA_TYPE_SUBTITLE : AVMEDIA_TYPE_AUDIO;
}

void AddStream(AVFormatContext& context, const LoadTrack& track) {
    AVStream* const stream = avformat_new_stream(&context, nullptr);
    Demand(stream != nullptr, "avformat_new_stream");
    AVCodecParameters& parameters = *stream->codecpar;
    parameters.codec_type = TypeOf(track.kind);
    parameters.codec_id = CodecOf(track.kind);
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO) {
        parameters.width = kWidth;
        parameters.height = kHeight;
    } else if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        parameters.sample_rate = kSamplesPerSecond;
        parameters.ch_layout = AV_CHANNEL_LAYOUT_STEREO;
        static_assert(kChannels == 2);
    }
    parameters.extradata = // the stream's
        static_cast<uint8_t*>(av_mallocz(track.codecPrivate.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    std::memcpy(parameters.extradata, track.codecPrivate.data(), track.codecPrivate.size());
    parameters.extradata_size = static_cast<int>(track.codecPrivate.size());
}

Context OpenFile(const PacketLoad& load, const std::string& path) {
    AVFormatContext* made = nullptr;
    Demand(avformat_alloc_output_context2(&made, nullptr, "matroska", path.c_str()) >= 0, "no Matroska muxer");
    Context context(made);
    for (const LoadTrack& track : load.Tracks()) {
        AddStream(*context, track);
    }
    AVDictionary* fileOptions = nullptr;
    av_dict_set(&fileOptions, "truncate", "0", 0); // overwritten in place
    const int opened = avio_open2(&context->pb, path.c_str(), AVIO_FLAG_WRITE, nullptr, &fileOptions);
    av_dict_free(&fileOptions);
    Demand(opened >= 0, "avio_open2");
    AVDictionary* options = nullptr;
    av_dict_set(&options, "write_crc32", "0", 0);
    const int written = avformat_write_header(context.get(), &options);
    const bool allTaken = av_dict_count(options) == 0;
    av_dict_free(&options);
    Demand(written >= 0, "avformat_write_header");
    Demand(allTaken, "an option is unknown");
    return context;
}

// Takes no reference on the bytes, which outlive the run: a counted packet is what a demuxer would give, and is not
// copied.
void KeepBytes(void*, uint8_t*) {}

void WritePacket(AVFormatContext& context, AVPacket& packet, AVBufferRef* bytes, const LoadPacket& from) {
    const AVStream& stream = *context.streams[from.track];
    constexpr AVRational kReferenceTime{1, static_cast<int>(kReferenceTimesPerSecond)};
    packet.buf = av_buffer_ref(bytes);
    Demand(packet.buf != nullptr, "no memory");
    packet.data = const_cast<uint8_t*>(from.data);
    packet.size = static_cast<int>(from.size);
    packet.stream_index = static_cast<int>(from.track);
    packet.pts = packet.dts = av_rescale_q(from.start, kReferenceTime, stream.time_base);
    packet.duration = av_rescale_q(from.stop - from.start, kReferenceTime, stream.time_base);
    packet.flags = from.keyframe ? AV_PKT_FLAG_KEY : 0;
    Demand(av_interleaved_write_frame(&context, &packet) >= 0, "av_interleaved_write_frame");
}

void WritePackets(AVFormatContext& context, const PacketLoad& load) {
    auto* const first = const_cast<uint8_t*>(load.Packets().front().data);
    AVBufferRef* bytes = av_buffer_create(first, load.Bytes(), KeepBytes, nullptr, AV_BUFFER_FLAG_READONLY);
    AVPacket* packet = av_packet_alloc();
    Demand(bytes != nullptr && packet != nullptr, "no memory");
    for (const LoadPacket& from : load.Packets()) {
        WritePacket(context, *packet, bytes, from);
    }
    av_packet_free(&packet);
    av_buffer_unref(&bytes);
}

} // namespace

void WriteWithLibavformat(const PacketLoad& load, const std::string& path) {
    av_log_set_level(AV_LOG_ERROR);
    const Context context = OpenFile(load, path);
    WritePackets(*context, load);
    Demand(av_write_trailer(context.get()) >= 0, "av_write_trailer");
    Demand(static_cast<UINT64>(avio_size(context->pb)) >= load.Bytes(), "the file is smaller than its payload");
}

} // namespace bench
