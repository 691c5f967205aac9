#include "matroska_muxer/options_block.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "records/record_list.h"
#include "records/record_text.h"

namespace {

using records::AllOptions;

constexpr UINT32 kMagic = 0x4F585251; // "QRXO"
constexpr UINT32 kVersion = 1;
constexpr UINT32 kFieldHeadBytes = 2 * sizeof(UINT32); // tag and length
constexpr UINT32 kFlagBytes = 5;

enum Tag : UINT32 {
    kProfile = 1,
    kTitle = 2,
    kSeed = 3,
    kTrackStatistics = 4,
    kTrackFlags = 5,
    kReserveIndex = 6,
    kChapter = 7, // one of them, as many as there are
    kTag = 8,
};

// ---- Writing -------------------------------------------------------------------------------------------------------

// The fields in memory, since their length stands before them.
class Fields {
  public:
    template <typename Number>
    void Put(Number value) {
        for (size_t i = 0; i < sizeof(value); ++i) {
            m_bytes.push_back(static_cast<BYTE>(static_cast<UINT64>(value) >> (8 * i)));
        }
    }
    void PutHead(Tag tag, size_t size) {
        Put(UINT32{tag});
        Put(static_cast<UINT32>(size));
    }
    template <typename Number>
    void PutNumber(Tag tag, Number value) {
        PutHead(tag, sizeof(value));
        Put(value);
    }
    void PutUnits(const WideString& text) {
        for (const WCHAR unit : text) {
            Put(static_cast<UINT16>(unit));
        }
    }
    // Behind its length in code units.
    void PutText(const WideString& text) {
        Put(static_cast<UINT32>(text.size()));
        PutUnits(text);
    }
    void PutField(Tag tag, const Fields& content) {
        PutHead(tag, content.m_bytes.size());
        m_bytes.insert(m_bytes.end(), content.m_bytes.begin(), content.m_bytes.end());
    }
    [[nodiscard]] const std::vector<BYTE>& Bytes() const { return m_bytes; }

  private:
    std::vector<BYTE> m_bytes;
};

void PutTitle(Fields& fields, const WideString& title) {
    fields.PutHead(kTitle, title.size() * sizeof(WCHAR));
    fields.PutUnits(title);
}

void PutFlags(Fields& fields, const MuxTrackFlags& flags) {
    fields.PutHead(kTrackFlags, sizeof(flags.index) + kFlagBytes);
    fields.Put(static_cast<UINT32>(flags.index));
    for (const BYTE flag :
         {flags.forced, flags.hearingImpaired, flags.visualImpaired, flags.original, flags.commentary}) {
        fields.Put(flag);
    }
}

void PutChapter(Fields& fields, const records::Chapter& chapter) {
    Fields content;
    content.Put(static_cast<UINT32>(chapter.level));
    content.Put(static_cast<UINT64>(chapter.start));
    content.Put(static_cast<UINT64>(chapter.end));
    content.Put(chapter.uid);
    content.Put(static_cast<BYTE>(chapter.hidden ? 1 : 0));
    content.Put(static_cast<BYTE>(chapter.disabled ? 1 : 0));
    content.PutText(chapter.title);
    content.PutText(chapter.language);
    fields.PutField(kChapter, content);
}

void PutTag(Fields& fields, const records::Tag& tag) {
    Fields content;
    content.Put(static_cast<UINT32>(tag.track));
    content.Put(static_cast<UINT32>(tag.level));
    content.Put(tag.targetType);
    for (const WideString* text : {&tag.target, &tag.name, &tag.value, &tag.language}) {
        content.PutText(*text);
    }
    fields.PutField(kTag, content);
}

void PutReserveIndex(Fields& fields, const records::FileOptions& options) {
    fields.PutHead(kReserveIndex, sizeof(options.indexBytes) + sizeof(options.indexLength));
    fields.Put(options.indexBytes);
    fields.Put(options.indexLength);
}

// ---- Reading -------------------------------------------------------------------------------------------------------

void RequireThat(bool isWhole) {
    if (!isWhole) {
        throw StreamFailure{VFW_E_INVALID_FILE_FORMAT};
    }
}

template <typename Number>
Number ReadNumber(CFieldReader& in, UINT32 size) {
    RequireThat(size == sizeof(Number));
    return in.Read<Number>();
}

void ReadProfile(CFieldReader& in, UINT32 size, AllOptions& options) {
    const auto profile = ReadNumber<UINT32>(in, size);
    RequireThat(records::IsProfile(profile));
    options.file.profile = static_cast<MuxProfile>(profile);
}

void ReadTitle(CFieldReader& in, UINT32 size, AllOptions& options) {
    RequireThat(size % sizeof(WCHAR) == 0 && size / sizeof(WCHAR) <= records::kMaxTitleLength);
    const win::Bstr title = in.ReadText(size);
    RequireThat(records::IsTitle(title.View()));
    options.file.title = title.View();
}

void ReadSeed(CFieldReader& in, UINT32 size, AllOptions& options) {
    options.file.seed = ReadNumber<UINT64>(in, size);
}

void ReadTrackStatistics(CFieldReader& in, UINT32 size, AllOptions& options) {
    const auto statistics = ReadNumber<BYTE>(in, size);
    RequireThat(statistics <= 1);
    options.file.trackStatistics = statistics != 0;
}

void ReadTrackFlags(CFieldReader& in, UINT32 size, AllOptions& options) {
    MuxTrackFlags flags{};
    RequireThat(size == sizeof(flags.index) + kFlagBytes);
    flags.index = in.Read<INT32>();
    for (BYTE* const flag :
         {&flags.forced, &flags.hearingImpaired, &flags.visualImpaired, &flags.original, &flags.commentary}) {
        *flag = in.Read<BYTE>();
    }
    RequireThat(flags.index >= 0 && records::AreTrackFlags(flags));
    options.flags[flags.index] = flags;
}

// The fields of one record, which fill its size exactly.
class RecordReader {
  public:
    RecordReader(CFieldReader& in, UINT32 size) : m_in(in), m_left(size) {}

    template <typename Number>
    [[nodiscard]] Number Read() {
        Take(sizeof(Number));
        return m_in.Read<Number>();
    }
    [[nodiscard]] bool ReadFlag() {
        const auto flag = Read<BYTE>();
        RequireThat(flag <= 1);
        return flag != 0;
    }
    [[nodiscard]] WideString ReadText() {
        const auto length = Read<UINT32>();
        RequireThat(length <= m_left / sizeof(WCHAR));
        Take(length * static_cast<UINT32>(sizeof(WCHAR)));
        return WideString(m_in.ReadText(length * sizeof(WCHAR)).View());
    }
    void RequireEnd() const { RequireThat(m_left == 0); }

  private:
    void Take(UINT32 size) {
        RequireThat(size <= m_left);
        m_left -= size;
    }

    CFieldReader& m_in;
    UINT32 m_left;
};

// More than a record of that list can be; whoever claims more is refused before anything is read.
constexpr UINT32 kMaxRecordBytes = 4 * sizeof(UINT64) + (4 * (records::kMaxTextLength + 2)) * sizeof(WCHAR);

// As the list would refuse it.
template <typename Record>
void AddTo(std::vector<Record>& list, Record record) {
    using List = records::CRecordList<Record>;
    RequireThat(!list.empty() || !record.NeedsOneBefore());
    list.push_back(std::move(record));
    RequireThat(list.size() <= List::kMaxCount && List::TextLengthOf(list) <= List::kMaxTextLength);
}

void ReadChapter(CFieldReader& in, UINT32 size, AllOptions& options) {
    RequireThat(size <= kMaxRecordBytes);
    RecordReader fields(in, size);
    records::Chapter chapter;
    chapter.level = fields.Read<INT32>();
    chapter.start = fields.Read<INT64>();
    chapter.end = fields.Read<INT64>();
    chapter.uid = fields.Read<UINT64>();
    chapter.hidden = fields.ReadFlag();
    chapter.disabled = fields.ReadFlag();
    chapter.title = fields.ReadText();
    chapter.language = fields.ReadText();
    fields.RequireEnd();
    RequireThat(records::IsChapter(chapter));
    AddTo(options.chapters, std::move(chapter));
}

void ReadTag(CFieldReader& in, UINT32 size, AllOptions& options) {
    RequireThat(size <= kMaxRecordBytes);
    RecordReader fields(in, size);
    records::Tag tag;
    tag.track = fields.Read<INT32>();
    tag.level = fields.Read<INT32>();
    tag.targetType = fields.Read<UINT32>();
    for (WideString* const text : {&tag.target, &tag.name, &tag.value, &tag.language}) {
        *text = fields.ReadText();
    }
    fields.RequireEnd();
    RequireThat(records::IsTag(tag));
    AddTo(options.tags, std::move(tag));
}

void ReadReserveIndex(CFieldReader& in, UINT32 size, AllOptions& options) {
    MuxReservedIndex index{};
    RequireThat(size == sizeof(index.bytes) + sizeof(index.expectedLength));
    index.bytes = in.Read<UINT64>();
    index.expectedLength = in.Read<INT64>();
    RequireThat(records::IsReservedIndex(index));
    options.file.indexBytes = index.bytes;
    options.file.indexLength = index.expectedLength;
}

struct FieldReader {
    UINT32 tag;
    void (*read)(CFieldReader& in, UINT32 size, AllOptions& options);
};

constexpr FieldReader kReaders[] = {
    {kProfile, ReadProfile},
    {kTitle, ReadTitle},
    {kSeed, ReadSeed},
    {kTrackStatistics, ReadTrackStatistics},
    {kTrackFlags, ReadTrackFlags},
    {kReserveIndex, ReadReserveIndex},
    {kChapter, ReadChapter},
    {kTag, ReadTag},
};

void ReadField(CFieldReader& in, UINT32 tag, UINT32 size, AllOptions& options) {
    const auto* const known = std::find_if(std::begin(kReaders), std::end(kReaders),
                                           [tag](const FieldReader& reader) { return reader.tag == tag; });
    if (known == std::end(kReaders)) {
        in.Skip(size);
    } else {
        known->read(in, size, options);
    }
}

} // namespace

void WriteOptionsBlock(CFieldWriter& out, const AllOptions& options) {
    Fields fields;
    const records::FileOptions standard;
    if (options.file.profile != standard.profile) {
        fields.PutNumber(kProfile, static_cast<UINT32>(options.file.profile));
    }
    if (options.file.title != standard.title) {
        PutTitle(fields, options.file.title);
    }
    if (options.file.seed != standard.seed) {
        fields.PutNumber(kSeed, options.file.seed);
    }
    if (options.file.trackStatistics != standard.trackStatistics) {
        fields.PutNumber(kTrackStatistics, static_cast<BYTE>(options.file.trackStatistics ? 1 : 0));
    }
    if (options.file.indexBytes != 0 || options.file.indexLength != 0) {
        PutReserveIndex(fields, options.file);
    }
    for (const auto& [index, flags] : options.flags) {
        PutFlags(fields, flags);
    }
    for (const records::Chapter& chapter : options.chapters) {
        PutChapter(fields, chapter);
    }
    for (const records::Tag& tag : options.tags) {
        PutTag(fields, tag);
    }
    const auto size = static_cast<UINT32>(fields.Bytes().size());
    out.Write(kMagic);
    out.Write(kVersion);
    out.Write(size);
    out.WriteBytes(fields.Bytes().data(), size);
}

AllOptions ReadOptionsBlock(CFieldReader& in) {
    RequireThat(in.Read<UINT32>() == kMagic);
    RequireThat(in.Read<UINT32>() == kVersion);
    AllOptions options;
    for (auto left = in.Read<UINT32>(); left > 0;) {
        RequireThat(left >= kFieldHeadBytes);
        const auto tag = in.Read<UINT32>();
        const auto size = in.Read<UINT32>();
        left -= kFieldHeadBytes;
        RequireThat(size <= left);
        ReadField(in, tag, size, options);
        left -= size;
    }
    // What is all unset is as if it had not been written.
    std::erase_if(options.flags, [](const auto& flags) { return records::AreAllUnset(flags.second); });
    return options;
}
