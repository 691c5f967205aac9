#include "codecs/webvtt_cue.h"

#include "codecs/big_endian.h"

namespace codecs {

namespace {

constexpr size_t kBoxSizeBytes = 4;
constexpr size_t kNameBytes = 4;
constexpr size_t kBoxHeadBytes = kBoxSizeBytes + kNameBytes;

std::string TextOf(ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

// Calls visit(name, content) for each box; one that reaches behind the end is the last, and not given.
template <typename Visit>
void ForEachBox(ByteView bytes, Visit visit) {
    while (bytes.size() >= kBoxHeadBytes) {
        const auto size = static_cast<size_t>(ReadBigEndian(bytes.first(kBoxSizeBytes)));
        if (size < kBoxHeadBytes || size > bytes.size()) {
            return;
        }
        visit(TextOf(bytes.subspan(kBoxSizeBytes, kNameBytes)), bytes.subspan(kBoxHeadBytes, size - kBoxHeadBytes));
        bytes = bytes.subspan(size);
    }
}

void AddBox(std::vector<std::uint8_t>& output, std::string_view name, std::string_view content) {
    AppendBigEndian(output, kBoxHeadBytes + content.size(), kBoxSizeBytes);
    output.insert(output.end(), name.begin(), name.end());
    output.insert(output.end(), content.begin(), content.end());
}

void AddBoxIfAny(std::vector<std::uint8_t>& output, std::string_view name, std::string_view content) {
    if (!content.empty()) {
        AddBox(output, name, content);
    }
}

void JoinLine(std::string& text, const std::string& more) {
    text += text.empty() ? "" : "\n";
    text += more;
}

// What lies in one cue's box. Of several cues, the first one with a text has told the rest.
void ReadCue(ByteView box, WebVttCue& cue) {
    WebVttCue one;
    ForEachBox(box, [&one](const std::string& name, ByteView content) {
        if (name == "payl") {
            one.text = TextOf(content);
        } else if (name == "sttg") {
            one.settings = TextOf(content);
        } else if (name == "iden") {
            one.identifier = TextOf(content);
        }
    });
    if (cue.text.empty()) {
        cue.settings = one.settings;
        cue.identifier = one.identifier;
    }
    JoinLine(cue.text, one.text);
}

// Up to the line's end, which is taken off as well.
std::string TakeLine(std::string& text) {
    const size_t end = text.find('\n');
    std::string line = text.substr(0, end);
    text.erase(0, end == std::string::npos ? text.size() : end + 1);
    return line;
}

} // namespace

WebVttCue CueOfBoxes(ByteView sample) {
    WebVttCue cue;
    ForEachBox(sample, [&cue](const std::string& name, ByteView content) {
        if (name == "vttc") {
            ReadCue(content, cue);
        } else if (name == "vtta") {
            JoinLine(cue.comments, TextOf(content));
        }
    });
    return cue;
}

std::vector<std::uint8_t> BoxesOfCue(const WebVttCue& cue) {
    std::vector<std::uint8_t> inner;
    AddBoxIfAny(inner, "iden", cue.identifier);
    AddBoxIfAny(inner, "sttg", cue.settings);
    AddBox(inner, "payl", cue.text);
    std::vector<std::uint8_t> sample;
    AddBoxIfAny(sample, "vtta", cue.comments);
    AddBox(sample, "vttc", std::string_view(reinterpret_cast<const char*>(inner.data()), inner.size()));
    return sample;
}

void ReadCueAddition(ByteView addition, WebVttCue& cue) {
    std::string rest = TextOf(addition);
    cue.settings = TakeLine(rest);
    cue.identifier = TakeLine(rest);
    cue.comments = std::move(rest);
}

std::string CueAddition(const WebVttCue& cue) {
    const bool isAlone = cue.settings.empty() && cue.identifier.empty() && cue.comments.empty();
    return isAlone ? std::string() : cue.settings + '\n' + cue.identifier + '\n' + cue.comments;
}

} // namespace codecs
