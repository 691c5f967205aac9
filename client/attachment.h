// Attachment: a file that is to be attached to the output.
//
// Units: bytes. Owner: its texts; the data stays its holder's, and is read while ModuleConfig::Attach lasts.
#pragma once

#include <optional>
#include <span>
#include <string>

#include <qrx_mkvmuxer.h>

#include "win/wide_string.h"

namespace client {

// What is not given is left out of the file, what is empty is not.
struct Attachment {
    std::optional<WideString> fileName;
    std::optional<WideString> description;
    std::optional<std::string> mimeType;
    std::optional<std::span<const BYTE>> data;
    UINT64 uid = 0; // 0: none; else unique among the attachments of a file
};

} // namespace client
