#include "media/subtitle_codec_mapper.h"

#include "dshow/media_subtypes.h"
#include "media/format_block.h"

namespace media {

namespace {

constexpr UINT64 kDefaultDurationNs = 3'000'000'000;

// The block starts with the offset of the codec header; an offset at the block's end means that there is none, and so
// does a type without a block.
bool DescribeWithHeader(const FormatBlock& block, CodecDescription& description) {
    if (block.Bytes().empty()) {
        return true;
    }
    const auto offset = block.Read<DWORD>();
    const auto header = block.From(offset.value_or(0));
    if (!offset || !header) {
        return false;
    }
    if (!header->empty()) {
        description.codecPrivate.emplace(header->begin(), header->end());
    }
    return true;
}

bool DescribePlain(const FormatBlock& /*block*/, CodecDescription& /*description*/) {
    return true;
}

struct SubtitleRow {
    const GUID* major;
    const GUID* subtype; // null: any
    const GUID* format;  // null: any
    const char* codecId;
    bool (*describe)(const FormatBlock&, CodecDescription&);
};

// In the order in which they are tried.
// clang-format off
constexpr SubtitleRow kRows[] = {
    {&MEDIATYPE_Text,       nullptr,                nullptr,                     "S_TEXT/ASCII", DescribePlain},
    {&mediatype::kSubtitle, &mediasubtype::kUtf8,   nullptr,                     "S_TEXT/UTF8",  DescribeWithHeader},
    {&mediatype::kSubtitle, &mediasubtype::kSsa,    nullptr,                     "S_TEXT/SSA",   DescribeWithHeader},
    {&mediatype::kSubtitle, &mediasubtype::kAss,    nullptr,                     "S_TEXT/ASS",   DescribeWithHeader},
    {&mediatype::kSubtitle, &mediasubtype::kUsf,    nullptr,                     "S_TEXT/USF",   DescribeWithHeader},
    {&mediatype::kSubtitle, &mediasubtype::kVobSub, nullptr,                     "S_VOBSUB",     DescribeWithHeader},
    {&mediatype::kSubtitle, &GUID_NULL,             &mediaformat::kSubtitleInfo, "S_HDMV/PGS",   DescribeWithHeader},
};
// clang-format on

bool Matches(const GUID* wanted, const GUID& value) {
    return wanted == nullptr || *wanted == value;
}

const SubtitleRow* FindRow(const AM_MEDIA_TYPE& type) {
    for (const SubtitleRow& row : kRows) {
        if (*row.major == type.majortype && Matches(row.subtype, type.subtype) &&
            Matches(row.format, type.formattype)) {
            return &row;
        }
    }
    return nullptr;
}

} // namespace

CodecDescription DescribeSubtitleCodec(const AM_MEDIA_TYPE& type) {
    CodecDescription unsupported;
    unsupported.defaultDurationNs = kDefaultDurationNs;
    const SubtitleRow* const row = FindRow(type);
    CodecDescription description = unsupported;
    if (row == nullptr || !row->describe(FormatBlock(type), description)) {
        return unsupported;
    }
    description.codecId = row->codecId;
    return description;
}

} // namespace media
