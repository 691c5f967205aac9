#include "sources/matroska/head_reader.h"

#include <algorithm>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <matroska/KaxChapters.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxSemantic.h>
#include <matroska/KaxTags.h>
#include <matroska/KaxTracks.h>

#include "sources/matroska/annotation_reader.h"
#include "sources/matroska/resync.h"
#include "sources/matroska/track_entry_reader.h"

namespace matroska {

namespace {

using namespace libmatroska;

// A muxer has room for a hundred; more than this many come from damage.
constexpr size_t kMaxTracks = 1000;
constexpr size_t kMaxAttachments = 10000;

} // namespace

std::optional<MatroskaFile> HeadReader::Read() {
    const std::optional<Element> segment = FindSegment();
    if (!segment) {
        return {};
    }
    m_file.segment = *segment;
    UINT64 position = segment->data;
    while (position < segment->end) {
        const std::optional<Element> element = m_reader.ElementAt(position, segment->end);
        if (!element || (element->unknownSize && element->id != IdOf<KaxCluster>()) ||
            !MayContain<KaxSegment>(element->id)) {
            position = FindCluster(m_reader, position + 1, segment->end);
            continue;
        }
        ReadTopLevel(*element);
        position = element->id == IdOf<KaxCluster>() ? EndOfCluster(*element) : element->end;
    }
    if (m_file.tracks.empty()) {
        return {};
    }
    return std::move(m_file);
}

std::optional<Element> HeadReader::FindSegment() const {
    const UINT64 size = m_reader.Source().Size();
    const std::optional<Element> head = m_reader.ElementAt(0, size);
    if (!head || head->id != IdOf<libebml::EbmlHead>() || !head->whole || head->unknownSize) {
        return {};
    }
    std::string docType = "matroska"; // what the format says of a head that does not say
    (void)m_reader.ForEachChild(*head, [&](const Element& child) {
        if (child.id == IdOf<libebml::EDocType>()) {
            docType = m_reader.ReadString(child);
        }
    });
    if (docType != "matroska" && docType != "webm") {
        return {};
    }
    UINT64 position = head->end;
    while (const std::optional<Element> element = m_reader.ElementAt(position, size)) {
        if (element->id == IdOf<KaxSegment>()) {
            return element;
        }
        position = element->end; // padding
    }
    return {};
}

// An unknown size lasts until something comes that is no part of a cluster.
UINT64 HeadReader::EndOfCluster(const Element& cluster) const {
    if (!cluster.unknownSize) {
        return cluster.end;
    }
    UINT64 position = cluster.data;
    while (const std::optional<Element> child = m_reader.ElementAt(position, cluster.end)) {
        if (!MayContain<KaxCluster>(child->id)) {
            break;
        }
        position = child->end;
    }
    return position;
}

void HeadReader::ReadTopLevel(const Element& element) {
    if (element.id == IdOf<KaxInfo>()) {
        ReadInfo(element);
    } else if (element.id == IdOf<KaxTracks>()) {
        ReadTracks(element);
    } else if (element.id == IdOf<KaxAttachments>()) {
        ReadAttachments(element);
    } else if (element.id == IdOf<KaxChapters>() && m_file.chapters.empty()) {
        m_file.chapters = ReadChapters(m_reader, element);
    } else if (element.id == IdOf<KaxTags>()) {
        ReadGlobalTags(m_reader, element, m_file.tags);
    }
}

void HeadReader::ReadInfo(const Element& info) {
    (void)m_reader.ForEachChild(info, [this](const Element& child) {
        if (child.id == IdOf<KaxTimecodeScale>()) {
            m_file.timestampScaleNs = std::max<UINT64>(m_reader.ReadUnsigned(child, m_file.timestampScaleNs), 1);
        } else if (child.id == IdOf<KaxDuration>()) {
            m_file.durationTicks = m_reader.ReadFloat(child);
        } else if (child.id == IdOf<KaxTitle>()) {
            m_file.title = m_reader.ReadString(child);
        }
    });
}

void HeadReader::ReadTracks(const Element& tracks) {
    (void)m_reader.ForEachChild(tracks, [this](const Element& child) {
        if (child.id != IdOf<KaxTrackEntry>() || m_file.tracks.size() >= kMaxTracks) {
            return;
        }
        Track track = ReadTrackEntry(m_reader, child, m_privateRoom);
        const bool isKnown = std::any_of(m_file.tracks.begin(), m_file.tracks.end(),
                                         [&track](const Track& other) { return other.number == track.number; });
        if (track.number != 0 && !isKnown) {
            m_privateRoom -= track.codecPrivate.size();
            m_file.tracks.push_back(std::move(track));
        }
    });
}

void HeadReader::ReadAttachments(const Element& attachments) {
    const bool intact = m_reader.ForEachChild(attachments, [this](const Element& child) {
        if (child.id != IdOf<KaxAttached>()) {
            return;
        }
        if (m_file.attachments.size() < kMaxAttachments) {
            m_file.attachments.push_back(ReadAttachedFile(child));
        } else {
            m_file.lacksAttachments = true;
        }
    });
    m_file.lacksAttachments = m_file.lacksAttachments || !intact;
}

AttachedFile HeadReader::ReadAttachedFile(const Element& element) const {
    AttachedFile file;
    const bool intact = m_reader.ForEachChild(element, [&](const Element& child) {
        if (child.id == IdOf<KaxFileName>()) {
            file.fileName = m_reader.ReadString(child);
        } else if (child.id == IdOf<KaxFileDescription>()) {
            file.description = m_reader.ReadString(child);
        } else if (child.id == IdOf<KaxMimeType>()) {
            file.mimeType = m_reader.ReadString(child);
        } else if (child.id == IdOf<KaxFileUID>()) {
            file.uid = m_reader.ReadUnsigned(child);
        } else if (child.id == IdOf<KaxFileData>()) {
            file.data = child;
        }
    });
    file.isDamaged = !intact || file.data.id == 0;
    return file;
}

std::optional<MatroskaFile> ReadMatroskaFile(const source::ByteSource& source) {
    return HeadReader(source).Read();
}

} // namespace matroska
