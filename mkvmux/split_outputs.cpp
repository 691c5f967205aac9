#include "mkvmux/split_outputs.h"

#include <optional>
#include <utility>

namespace mkvmux {

namespace {

// The one before the last is being finished while the last one's head is written.
constexpr size_t kMostOpenParts = 2;

// None when no further part is wanted.
std::optional<MuxNextOutputRule> RuleOf(const SplitOptions& split, size_t partsBefore) {
    MuxNextOutputRule rule{sizeof(rule), MuxOutputTimes_FromZero, 0, 0, 0};
    switch (split.kind) {
    case SplitOptions::Kind::Duration:
        rule.minDuration = split.duration;
        return rule;
    case SplitOptions::Kind::Size:
        rule.minBytes = split.bytes;
        return rule;
    case SplitOptions::Kind::Timestamps:
        if (partsBefore <= split.times.size()) {
            rule.notBefore = split.times[partsBefore - 1];
            return rule;
        }
        break;
    case SplitOptions::Kind::None:
        break;
    }
    return std::nullopt;
}

} // namespace

SplitOutputs::SplitOutputs(const Options& options, const win::ComPtr<IBaseFilter>& muxer)
    : m_split(options.split), m_pattern(options.output), m_overwrite(options.overwrite), m_config(muxer.Get()) {}

void SplitOutputs::Begin(CFileStream& first) {
    first.SetFirstUseHandler([this] { AskForNext(); });
}

void SplitOutputs::AskForNext() {
    const auto rule = RuleOf(m_split, m_asked);
    if (!rule) {
        return;
    }
    const win::ComPtr<CFileStream> stream(new CFileStream(nullptr));
    stream->SetFirstUseHandler(
        [this, raw = stream.Get(), path = PartName(m_pattern, m_asked + 1)] { BeginPart(*raw, path); });
    if (SUCCEEDED(m_config.SetNextOutputRule(*rule)) && SUCCEEDED(m_config.SetNextOutput(stream.Get()))) {
        ++m_asked;
    }
}

void SplitOutputs::BeginPart(CFileStream& stream, const std::wstring& path) {
    {
        const win::LockGuard lock(m_lock);
        NoteFailure();
        if (!m_failed.empty()) {
            return; // one that cannot be written is followed by no other; its writes tell
        }
        if (FAILED(stream.Create(path, m_overwrite))) {
            m_failed = path;
            return;
        }
        m_parts.push_back({path, 0});
        m_open.push_back({m_parts.size() - 1, win::ComPtr<CFileStream>(&stream)});
        LetGoOfFinished();
    }
    AskForNext();
}

void SplitOutputs::NoteFailure() {
    for (const OpenPart& part : m_open) {
        if (m_failed.empty() && FAILED(part.stream->FirstFailure())) {
            m_failed = m_parts[part.index].path;
        }
    }
}

std::wstring SplitOutputs::FailedPart() {
    const win::LockGuard lock(m_lock);
    NoteFailure();
    return m_failed;
}

void SplitOutputs::LetGoOfFinished() {
    NoteFailure();
    while (m_open.size() > kMostOpenParts) {
        m_parts[m_open.front().index].bytes = m_open.front().stream->WrittenEnd();
        m_open.erase(m_open.begin());
    }
}

std::vector<SplitOutputs::Part> SplitOutputs::Parts() {
    const win::LockGuard lock(m_lock);
    for (const OpenPart& part : m_open) {
        m_parts[part.index].bytes = part.stream->WrittenEnd();
    }
    return m_parts;
}

} // namespace mkvmux
