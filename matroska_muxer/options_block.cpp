#include "matroska_muxer/options_block.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace {

using records::AllOptions;

constexpr UINT32 kMagic = 0x4F585251; // "QRXO"
constexpr UINT32 kVersion = 1;
constexpr UINT32 kFieldHeadBytes = 2 * sizeof(UINT32); // tag and length
constexpr UINT32 kFlagBytes = 5;

enum Tag : UINT32 { kProfile = 1, kTitle = 2, kSeed = 3, kTrackStatistics = 4, kTrackFlags = 5 };

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
    [[nodiscard]] const std::vector<BYTE>& Bytes() const { return m_bytes; }

  private:
    std::vector<BYTE> m_bytes;
};

void PutTitle(Fields& fields, const WideString& title) {
    fields.PutHead(kTitle, title.size() * sizeof(WCHAR));
    for (const WCHAR unit : title) {
        fields.Put(static_cast<UINT16>(unit));
    }
}

void PutFlags(Fields& fields, const MuxTrackFlags& flags) {
    fields.PutHead(kTrackFlags, sizeof(flags.index) + kFlagBytes);
    fields.Put(static_cast<UINT32>(flags.index));
    for (const BYTE flag :
         {flags.forced, flags.hearingImpaired, flags.visualImpaired, flags.original, flags.commentary}) {
        fields.Put(flag);
    }
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

struct FieldReader {
    UINT32 tag;
    void (*read)(CFieldReader& in, UINT32 size, AllOptions& options);
};

constexpr FieldReader kReaders[] = {
    {kProfile, ReadProfile},       {kTitle, ReadTitle}, {kSeed, ReadSeed}, {kTrackStatistics, ReadTrackStatistics},
    {kTrackFlags, ReadTrackFlags},
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
    for (const auto& [index, flags] : options.flags) {
        PutFlags(fields, flags);
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
