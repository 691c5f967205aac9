#include "sources/matroska/content_decoder.h"

#include <algorithm>

#include <zlib.h>

namespace matroska {

namespace {

constexpr UINT64 kZlib = 0;
constexpr UINT64 kHeaderStripping = 3;
constexpr size_t kFirstOutputBytes = size_t{64} * 1024;

class InflateStream {
  public:
    InflateStream() : m_ready(inflateInit(&m_stream) == Z_OK) {}
    ~InflateStream() {
        if (m_ready) {
            inflateEnd(&m_stream);
        }
    }
    InflateStream(const InflateStream&) = delete;
    InflateStream& operator=(const InflateStream&) = delete;

    [[nodiscard]] bool IsReady() const { return m_ready; }
    [[nodiscard]] z_stream& Native() { return m_stream; }

  private:
    z_stream m_stream{};
    bool m_ready;
};

// Some writers leave the end mark away: what came out before the input ended counts.
std::optional<std::vector<BYTE>> Inflate(codecs::ByteView stored, size_t most, size_t& room) {
    InflateStream stream;
    std::vector<BYTE> input(stored.begin(), stored.end()); // the library's pointer is not const
    std::vector<BYTE> output;
    size_t used = 0;
    stream.Native().next_in = input.data();
    stream.Native().avail_in = static_cast<uInt>(input.size());
    int result = stream.IsReady() ? Z_OK : Z_MEM_ERROR;
    while (result == Z_OK && used <= most) {
        // One byte more than is allowed shows that there is more.
        output.resize(std::min(most + 1, std::max(kFirstOutputBytes, 2 * used)));
        stream.Native().next_out = output.data() + used;
        stream.Native().avail_out = static_cast<uInt>(output.size() - used);
        result = inflate(&stream.Native(), Z_NO_FLUSH);
        used = output.size() - stream.Native().avail_out;
    }
    const bool isDone = result == Z_STREAM_END || (result == Z_BUF_ERROR && used > 0);
    output.resize(used);
    room -= std::min(used, room);
    return isDone && used <= most ? std::optional(std::move(output)) : std::nullopt;
}

std::optional<std::vector<BYTE>> Concatenate(codecs::ByteView first, codecs::ByteView second, size_t most,
                                             size_t& room) {
    if (first.size() + second.size() > most) {
        return {};
    }
    std::vector<BYTE> both(first.begin(), first.end());
    both.insert(both.end(), second.begin(), second.end());
    room -= both.size();
    return both;
}

} // namespace

ContentDecoder::ContentDecoder(const std::vector<ContentEncoding>& encodings, Part part) {
    m_hasSeveral = encodings.size() > 1;
    for (const ContentEncoding& encoding : encodings) {
        if ((encoding.scope & static_cast<UINT64>(part)) != 0) {
            m_encoding = encoding;
        }
    }
}

std::string ContentDecoder::Problem() const {
    if (m_hasSeveral) { // no writer does so, and each layer multiplies what a few bytes become
        return "the track is compressed or encrypted more than once";
    }
    if (!m_encoding) {
        return {};
    }
    if (!m_encoding->isCompression) {
        return "the track is encrypted";
    }
    if (m_encoding->algorithm != kZlib && m_encoding->algorithm != kHeaderStripping) {
        return "the track is compressed with an algorithm that is not supported (" +
               std::to_string(m_encoding->algorithm) + ")";
    }
    return m_encoding->isDamaged ? "the header that was stripped off its frames is too long" : "";
}

// The ratio counts an empty frame as one byte: it has a place in its block at least.
std::optional<std::vector<BYTE>> ContentDecoder::Decode(codecs::ByteView stored, size_t& room) const {
    if (!m_encoding) {
        return std::vector<BYTE>(stored.begin(), stored.end());
    }
    const size_t most = std::min(room, kMaxRatio * std::max<size_t>(stored.size(), 1) - 1);
    return m_encoding->algorithm == kZlib ? Inflate(stored, most, room)
                                          : Concatenate(m_encoding->settings, stored, most, room);
}

} // namespace matroska
