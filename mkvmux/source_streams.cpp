#include "mkvmux/source_streams.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "dshow/media_subtypes.h"
#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/graph_walk.h"
#include "mkvmux/huge_chunks.h"
#include "mkvmux/language_choice.h"
#include "mkvmux/splitter_check.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

// A splitter may feed another one (a container in a container); more than this is a circle.
constexpr int kMaxSplitterDepth = 4;
// Filters that are meant for automatic use have more merit than this.
constexpr DWORD kLeastMerit = MERIT_DO_NOT_USE + 1;

bool IsByteStream(IPin* pin) {
    const std::vector<CMediaType> types = TypesOf(pin);
    return std::any_of(types.begin(), types.end(),
                       [](const CMediaType& type) { return type.majortype == MEDIATYPE_Stream; });
}

// A source that recognised the format says so in a subtype; the wildcard beside it would invite splitters that
// take anything and decode it.
std::vector<CMediaType> TypesWorthTrying(IPin* pin) {
    std::vector<CMediaType> types = TypesOf(pin);
    const auto isWildcard = [](const CMediaType& type) { return type.subtype == GUID_NULL; };
    if (!std::all_of(types.begin(), types.end(), isWildcard)) {
        std::erase_if(types, isWildcard);
    }
    return types;
}

// Wine's splitter offers Cinepak, but ends the whole process (a failed assertion of its own) when it shall stream it.
bool RunsOnWine() {
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

bool CanBeStreamed(const SourceStream& stream) {
    constexpr GUID kCinepak = SubtypeFromFourCC('c', 'v', 'i', 'd');
    return stream.HasType() && !(stream.type.subtype == kCinepak && RunsOnWine());
}

SourceStream StreamOf(const std::wstring& path, const win::ComPtr<IPin>& pin) {
    SourceStream stream{path, NameOf(pin.Get()), pin, {}};
    if (std::vector<CMediaType> types = TypesOf(pin.Get()); !types.empty()) {
        stream.type = std::move(types.front());
    }
    return stream;
}

StreamTags TagsOf(const source::TrackProperties& properties) {
    StreamTags tags;
    tags.name = WideFromUtf8(properties.name);
    tags.language = FindLanguage(WideFromUtf8(properties.language)).value_or(kUndeterminedLanguage);
    tags.isDefault = properties.isDefault;
    tags.isForced = properties.isForced;
    tags.isEnabled = properties.isEnabled;
    tags.hearingImpaired = properties.hearingImpaired;
    tags.visualImpaired = properties.visualImpaired;
    tags.original = properties.original;
    tags.commentary = properties.commentary;
    tags.colour = properties.colour;
    tags.dolbyVision = properties.dolbyVision;
    return tags;
}

// A stream without a media type has no pin either.
SourceStream OwnStreamOf(const std::wstring& path, IBaseFilter* filter, const source::StreamDescription& description) {
    SourceStream stream{path, description.name, {}, {}, true};
    if (!description.types.empty()) {
        stream.type = description.types.front();
        filter->FindPin(description.name.c_str(), stream.pin.Put());
    }
    if (description.properties.known) {
        stream.tags = TagsOf(description.properties);
    }
    stream.problem = description.problem;
    return stream;
}

} // namespace

std::string SourceStream::Name() const {
    return Utf8FromWide(input) + ": stream '" + Shown(pinName) + "'";
}

REFERENCE_TIME SourceStream::Duration() const {
    const win::ComPtr<IMediaSeeking> seeking = pin.Query<IMediaSeeking>(IID_IMediaSeeking);
    LONGLONG duration = 0;
    return seeking && SUCCEEDED(seeking->GetDuration(&duration)) ? duration : 0;
}

SourceStreams::SourceStreams(IGraphBuilder* graph) : m_graph(graph) {
    const HRESULT hr =
        CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2, m_mapper.PutVoid());
    if (FAILED(hr)) {
        throw Failure("the filter mapper cannot be created: " + DescribeResult(hr));
    }
}

std::vector<SourceStream> SourceStreams::Open(const std::wstring& path) {
    CheckInput(path);
    source::OpenedSource opened;
    const ContentKind content = KindOfFile(path);
    // By what it holds, and by its name where that cannot be seen.
    for (const OwnSource* const kind : {OwnSourceFor(content), OwnSourceFor(path)}) {
        if (kind != nullptr && SUCCEEDED(kind->open(path, m_options, opened))) {
            return OpenWith(*kind, std::move(opened), path);
        }
    }
    const OwnSource& avi = OwnAviSource();
    if (HasHugeChunk(path)) { // never for the system's splitter, which would make room for it
        if (FAILED(avi.open(path, m_options, opened))) {
            throw Failure(Utf8FromWide(path) +
                          ": is a damaged AVI file: a chunk claims more than 128 MiB, and no stream "
                          "is found");
        }
        return OpenWith(avi, std::move(opened), path);
    }
    std::vector<SourceStream> streams = OpenWithSystem(path);
    if (const std::string contradiction = ContradictionOf(content, streams); !contradiction.empty()) {
        throw Failure(Utf8FromWide(path) + ": " + contradiction);
    }
    if (const std::string doubt = DurationDoubtOf(streams, path); !doubt.empty()) {
        m_warnings.push_back(Utf8FromWide(path) + ": " + doubt);
    }
    if (std::all_of(streams.begin(), streams.end(), CanBeStreamed) || FAILED(avi.open(path, m_options, opened))) {
        return streams;
    }
    streams.clear(); // a splitter may free its pins when it leaves the graph, whoever holds them
    RemoveFilters();
    return OpenWith(avi, std::move(opened), path);
}

std::vector<SourceStream> SourceStreams::OpenWithSystem(const std::wstring& path) {
    m_filters.clear();
    win::ComPtr<IBaseFilter> source;
    if (const HRESULT hr = m_graph->AddSourceFilter(path.c_str(), path.c_str(), source.Put()); FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": cannot be opened: " + DescribeResult(hr));
    }
    m_filters.push_back(source);
    std::vector<SourceStream> streams;
    Collect(source.Get(), path, 0, streams);
    if (streams.empty()) {
        throw Failure(Utf8FromWide(path) + ": holds no stream");
    }
    return streams;
}

std::vector<SourceStream> SourceStreams::OpenWith(const OwnSource& kind, source::OpenedSource opened,
                                                  const std::wstring& path) {
    if (const HRESULT hr = m_graph->AddFilter(opened.filter.Get(), path.c_str()); FAILED(hr)) {
        throw Failure(Utf8FromWide(path) + ": cannot be opened: " + DescribeResult(hr));
    }
    std::vector<SourceStream> streams;
    for (const source::StreamDescription& description : opened.streams) {
        streams.push_back(OwnStreamOf(path, opened.filter.Get(), description));
        streams.back().readerName = kind.name;
    }
    std::move(opened.attachments.begin(), opened.attachments.end(), std::back_inserter(m_attachments));
    m_chapters = m_chapters.empty() ? std::move(opened.chapters) : std::move(m_chapters);
    m_tags = m_tags.empty() ? std::move(opened.tags) : std::move(m_tags);
    m_title = m_title.empty() ? WideFromUtf8(opened.title) : m_title;
    for (const std::string& warning : opened.warnings) {
        m_warnings.push_back(Utf8FromWide(path) + ": " + warning);
    }
    m_watched.push_back({path, opened.damage});
    return streams;
}

std::vector<std::string> SourceStreams::Damages() const {
    std::vector<std::string> lines;
    for (const Watched& watched : m_watched) {
        if (const HRESULT damage = *watched.damage; FAILED(damage)) {
            lines.push_back(Utf8FromWide(watched.input) + ": is damaged: " + DescribeResult(damage));
        }
    }
    return lines;
}

void SourceStreams::RemoveFilters() {
    for (const win::ComPtr<IBaseFilter>& filter : m_filters) {
        m_graph->RemoveFilter(filter.Get());
    }
    m_filters.clear();
}

void SourceStreams::Collect(IBaseFilter* filter, const std::wstring& path, int depth,
                            std::vector<SourceStream>& streams) {
    for (const win::ComPtr<IPin>& pin : PinsOf(filter, PINDIR_OUTPUT)) {
        if (!IsByteStream(pin.Get())) {
            streams.push_back(StreamOf(path, pin));
            continue;
        }
        const win::ComPtr<IBaseFilter> splitter = depth < kMaxSplitterDepth ? AttachSplitter(pin.Get()) : nullptr;
        if (!splitter) {
            throw Failure(Utf8FromWide(path) + ": no splitter takes it");
        }
        Collect(splitter.Get(), path, depth + 1, streams);
    }
}

// A splitter that took the pin's bytes and is now in the graph, or none.
win::ComPtr<IBaseFilter> SourceStreams::AttachSplitter(IPin* pin) {
    for (const CMediaType& type : TypesWorthTrying(pin)) {
        if (win::ComPtr<IBaseFilter> splitter = TryCandidates(pin, type)) {
            return splitter;
        }
    }
    return {};
}

win::ComPtr<IBaseFilter> SourceStreams::TryCandidates(IPin* pin, const AM_MEDIA_TYPE& type) {
    const std::array<GUID, 2> input{type.majortype, type.subtype};
    win::ComPtr<IEnumMoniker> candidates;
    const HRESULT hr = m_mapper->EnumMatchingFilters(candidates.Put(), 0, TRUE, kLeastMerit, TRUE, 1, input.data(),
                                                     nullptr, nullptr, FALSE, TRUE, 0, nullptr, nullptr, nullptr);
    if (hr != S_OK || !candidates) {
        return {};
    }
    win::ComPtr<IMoniker> moniker;
    while (candidates->Next(1, moniker.Put(), nullptr) == S_OK) {
        win::ComPtr<IBaseFilter> splitter;
        if (SUCCEEDED(moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter, splitter.PutVoid())) &&
            TrySplitter(pin, splitter.Get())) {
            return splitter;
        }
    }
    return {};
}

bool SourceStreams::TrySplitter(IPin* pin, IBaseFilter* splitter) {
    if (FAILED(m_graph->AddFilter(splitter, nullptr))) {
        return false;
    }
    const win::ComPtr<IPin> input = FreePinOf(splitter, PINDIR_INPUT);
    if (input && SUCCEEDED(m_graph->ConnectDirect(pin, input.Get(), nullptr)) &&
        !PinsOf(splitter, PINDIR_OUTPUT).empty()) {
        m_filters.push_back(win::ComPtr<IBaseFilter>(splitter));
        return true;
    }
    m_graph->RemoveFilter(splitter); // disconnects it too
    return false;
}

} // namespace mkvmux
