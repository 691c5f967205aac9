// SourceStreams: adds the source and the splitters of a file to a graph and finds the streams that they offer.
//
// Owner: the graph owns the filters; a stream holds a reference on its pin. Errors: Failure.
#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dshow/media_type.h"
#include "media/colour.h"
#include "mkvmux/own_sources.h"
#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

// What an input says of one of its streams beside the media type. Only containers that know it have any.
struct StreamTags {
    std::wstring name;
    std::wstring language; // its English name, spelled as in the language list; empty: unknown
    bool isDefault = false;
    bool isForced = false;
    bool isEnabled = true;
    // None: not said.
    std::optional<bool> hearingImpaired = {};
    std::optional<bool> visualImpaired = {};
    std::optional<bool> original = {};
    std::optional<bool> commentary = {};
    media::Colour colour = {};
    std::vector<BYTE> dolbyVision = {};
};

struct SourceStream {
    std::wstring input;
    std::wstring pinName;
    win::ComPtr<IPin> pin;
    // The first that the pin offers; a major type of GUID_NULL when it offers none.
    CMediaType type;
    // Read by a source of our own, since the system's splitters cannot stream the file.
    bool ownReader = false;
    // Counted over all inputs from 0; what users name the track by.
    size_t number = 0;
    std::optional<StreamTags> tags = {};
    std::string readerName = {}; // of the own reader: "AVI"
    std::string problem = {};    // why an own reader offers no type: "V_DIRAC: …"; such a stream has no pin

    // "a.avi: stream 'Stream 00'", for messages.
    [[nodiscard]] std::string Name() const;
    // 0 when nobody tells.
    [[nodiscard]] REFERENCE_TIME Duration() const;
    [[nodiscard]] bool HasType() const { return type.majortype != GUID_NULL; }
};

class SourceStreams {
  public:
    explicit SourceStreams(IGraphBuilder* graph);

    // Of files to be opened that do not say.
    void UseFrameRate(const annexb::FrameRate& rate) { m_options.frameRate = rate; }
    void UseExactTimes(bool exactTimes) { m_options.exactTimes = exactTimes; }

    // The streams of the file in the order of the splitter's pins, still unconnected and compressed as they are.
    [[nodiscard]] std::vector<SourceStream> Open(const std::wstring& path);
    // Those of all files opened so far.
    [[nodiscard]] const std::vector<source::Attachment>& Attachments() const { return m_attachments; }
    // Of the first file that has any.
    [[nodiscard]] const std::vector<source::Chapter>& Chapters() const { return m_chapters; }
    [[nodiscard]] const std::vector<source::Tag>& Tags() const { return m_tags; }
    // Of the first file that has one; empty: none.
    [[nodiscard]] const std::wstring& Title() const { return m_title; }
    // What the files opened so far lose, a line each.
    [[nodiscard]] const std::vector<std::string>& Warnings() const { return m_warnings; }
    // Those that have turned out to be damaged while they were read by sources of our own, a line each.
    [[nodiscard]] std::vector<std::string> Damages() const;

  private:
    [[nodiscard]] std::vector<SourceStream> OpenWithSystem(const std::wstring& path);
    [[nodiscard]] std::vector<SourceStream> OpenWith(const OwnSource& kind, source::OpenedSource opened,
                                                     const std::wstring& path);
    void RemoveFilters();
    void Collect(IBaseFilter* filter, const std::wstring& path, int depth, std::vector<SourceStream>& streams);
    [[nodiscard]] win::ComPtr<IBaseFilter> AttachSplitter(IPin* pin);
    [[nodiscard]] win::ComPtr<IBaseFilter> TryCandidates(IPin* pin, const AM_MEDIA_TYPE& type);
    [[nodiscard]] bool TrySplitter(IPin* pin, IBaseFilter* splitter);

    struct Watched {
        std::wstring input;
        std::shared_ptr<const std::atomic<HRESULT>> damage;
    };

    win::ComPtr<IGraphBuilder> m_graph;
    OwnSourceOptions m_options;
    win::ComPtr<IFilterMapper2> m_mapper;
    std::vector<win::ComPtr<IBaseFilter>> m_filters; // added for the file that is being opened
    std::vector<source::Attachment> m_attachments;
    std::vector<source::Chapter> m_chapters;
    std::vector<source::Tag> m_tags;
    std::wstring m_title;
    std::vector<std::string> m_warnings;
    std::vector<Watched> m_watched;
};

} // namespace mkvmux
