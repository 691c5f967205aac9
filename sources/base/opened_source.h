// OpenedSource: a source filter of our own, and what its input says besides the media types.
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "sources/base/chapters.h"
#include "sources/base/packet_reader.h"
#include "win/com_ptr.h"

namespace source {

struct OpenedSource {
    win::ComPtr<IBaseFilter> filter;
    std::vector<StreamDescription> streams; // those without a pin too, in the order of the input
    std::vector<Attachment> attachments;
    std::vector<Chapter> chapters;
    std::vector<Tag> tags;
    std::string title;                 // UTF-8; empty: none
    std::vector<std::string> warnings; // what is lost; UTF-8
    // A failure once the source has found damage, which it can only while it streams; set before the graph is told.
    std::shared_ptr<const std::atomic<HRESULT>> damage;
};

} // namespace source
