#include "tools/matroska_source/content_decoder.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <zlib.h>

#include "tools/source_base/packet_reader.h"

namespace matroska {

namespace {

constexpr UINT64 kZlib = 0;
constexpr UINT64 kHeaderStripping = 3;
constexpr size_t kInflateStepBytes = size_t{64} * 1024;

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
std::optional<std::vector<BYTE>> Inflate(Bytes stored) {
    InflateStream stream;
    std::vector<BYTE> input(stored.begin(), stored.end()); // the library's pointer is not const
    std::vector<BYTE> output;
    std::array<BYTE, kInflateStepBytes> step{};
    stream.Native().next_in = input.data();
    stream.Native().avail_in = static_cast<uInt>(input.size());
    int result = stream.IsReady() ? Z_OK : Z_MEM_ERROR;
    while (result == Z_OK && output.size() <= source::kMaxPacketBytes) {
        stream.Native().next_out = step.data();
        stream.Native().avail_out = static_cast<uInt>(step.size());
        result = inflate(&stream.Native(), Z_NO_FLUSH);
        std::copy_n(step.begin(), step.size() - stream.Native().avail_out, std::back_inserter(output));
    }
    const bool isDone = result == Z_STREAM_END || (result == Z_BUF_ERROR && !output.empty());
    return isDone ? std::optional(std::move(output)) : std::nullopt;
}

std::vector<BYTE> Concatenate(Bytes first, Bytes second) {
    std::vector<BYTE> both(first.begin(), first.end());
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

} // namespace

ContentDecoder::ContentDecoder(const std::vector<ContentEncoding>& encodings, Part part) {
    std::copy_if(encodings.begin(), encodings.end(), std::back_inserter(m_encodings),
                 [part](const ContentEncoding& encoding) { return (encoding.scope & static_cast<UINT64>(part)) != 0; });
}

std::string ContentDecoder::Problem() const {
    for (const ContentEncoding& encoding : m_encodings) {
        if (!encoding.isCompression) {
            return "the track is encrypted";
        }
        if (encoding.algorithm != kZlib && encoding.algorithm != kHeaderStripping) {
            return "the track is compressed with an algorithm that is not supported (" +
                   std::to_string(encoding.algorithm) + ")";
        }
    }
    return {};
}

std::optional<std::vector<BYTE>> ContentDecoder::Decode(Bytes stored) const {
    std::optional<std::vector<BYTE>> decoded(std::in_place, stored.begin(), stored.end());
    for (const ContentEncoding& encoding : m_encodings) {
        decoded = encoding.algorithm == kZlib ? Inflate(*decoded) : Concatenate(encoding.settings, *decoded);
        if (!decoded) {
            return {};
        }
    }
    return decoded;
}

} // namespace matroska
