// Media types with any format block, written as the only track of a file and read back, by the tests' reader and by the
// tool's own: what the codec table makes of the type is what the file says. One byte more chooses the length of the
// track's name.
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "fuzz/any_media_type.h"
#include "fuzz/read_all.h"
#include "fuzz/require.h"
#include "media/codec_description.h"
#include "media/media_types_of.h"
#include "mkv/mkv_writer.h"
#include "mkv/writer_errors.h"
#include "sources/matroska/matroska_file.h"
#include "tests/support/layout_check.h"
#include "tests/support/memory_stream.h"

namespace {

using fuzz::Require;
using Bytes = std::vector<BYTE>;

struct WrittenFile {
    std::string error; // what the writer threw
    Bytes bytes;
};

WrittenFile Write(const CMediaType& type, const WideString& name, const records::FileOptions& options = {}) {
    WrittenFile file;
    test_support::MemoryStream stream;
    stream.SetRecording(false);
    CMkvIO io;
    CMkvWriter writer;
    const win::Bstr text(name);
    TrackSettings settings{};
    settings.name = text.Get();
    writer.registerTrack(type, settings);
    io.setStream(&stream);
    try {
        writer.Open(&io, options);
        writer.Close();
        file.bytes = stream.Bytes();
    } catch (const char* error) {
        file.error = error;
        writer.abandon();
    }
    io.releaseStream();
    return file;
}

// As one who plays the file finds it.
void CheckTrack(const matroska::Track& track, const media::CodecDescription& description) {
    Require(track.codecId == description.codecId);
    Require(track.codecPrivate == description.codecPrivate.value_or(Bytes()));
    Require(track.defaultDurationNs == description.defaultDurationNs.value_or(0));
    if (description.video) {
        Require(track.video.pixelWidth == description.video->pixelWidth);
        Require(track.video.pixelHeight == description.video->pixelHeight);
        Require(!description.video->display || (track.video.displayWidth == description.video->display->width &&
                                                track.video.displayHeight == description.video->display->height));
    }
    if (description.audio) { // the rate is a number of 32 bits in the file
        Require(track.audio.samplingFrequency ==
                static_cast<double>(static_cast<float>(description.audio->samplingFrequencyHz)));
        Require(track.audio.channels == description.audio->channels);
        Require(track.audio.bitDepth == description.audio->bitDepth.value_or(0));
    }
    // The whole format block is the private data of this codec, and the tag inside may be another one's, or nobody's.
    const bool mayBeAnother = track.codecId == "A_MS/ACM";
    for (const CMediaType& type : media::MediaTypesOf(track)) {
        Require(mayBeAnother || media::CodecIdOf(type) == track.codecId);
    }
}

void CheckFile(const Bytes& bytes, const media::CodecDescription& description) {
    const auto layout = test_support::ReadLayout(bytes);
    Require(test_support::CheckLayout(layout).empty());
    Require(layout.tracks.size() == 1 && layout.tracks[0].codecId == description.codecId);
    Require(layout.tracks[0].codecPrivateSize.has_value() == description.codecPrivate.has_value());
    const auto source = fuzz::SourceOf(bytes.data(), bytes.size());
    const auto file = matroska::ReadMatroskaFile(*source);
    Require(file && file->tracks.size() == 1);
    CheckTrack(file->tracks[0], description);
}

// A strict file is written when the type has a strict description, and names its codec.
void CheckStrictFile(const CMediaType& type, const WideString& name) {
    records::FileOptions options;
    options.profile = MuxProfile_Strict;
    const media::CodecDescription description = media::DescribeStrictCodec(type);
    const WrittenFile file = Write(type, name, options);
    Require(file.error.empty() == !description.codecId.empty());
    if (file.error.empty()) {
        const auto layout = test_support::ReadLayout(file.bytes);
        Require(layout.tracks.size() == 1 && layout.tracks[0].codecId == description.codecId);
        Require(layout.tracks[0].codecPrivateSize.has_value() == description.codecPrivate.has_value());
    }
}

// The name takes its characters from the block.
WideString NameFrom(const std::uint8_t* data, size_t size, size_t chars) {
    WideString name(std::min(chars, size / sizeof(WCHAR)), 0);
    std::memcpy(name.data(), data, name.size() * sizeof(WCHAR));
    return name;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    if (size <= fuzz::kChoiceBytes) {
        return 0;
    }
    const WideString name = NameFrom(data + 1, size - 1, data[0]);
    const CMediaType type = fuzz::AnyMediaType(data + 1, size - 1);
    const media::CodecDescription description = media::DescribeCodec(type);
    const WrittenFile file = Write(type, name);
    if (description.codecId.empty()) {
        Require(file.error == std::string_view(mkv::kUnsupportedTypeError) ||
                file.error == std::string_view(mkv::kUnsupportedCodecError));
    } else {
        Require(file.error.empty());
        CheckFile(file.bytes, description);
    }
    CheckStrictFile(type, name);
    return 0;
}
