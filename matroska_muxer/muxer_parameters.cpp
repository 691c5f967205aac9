#include "matroska_muxer/muxer_parameters.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <qrx_mkvmuxer.h>

#include "dshow/media_type.h"
#include "dshow/ref_time.h"
#include "log/logger.h"
#include "matroska_muxer/field_stream.h"
#include "matroska_muxer/list_parameters.h"
#include "matroska_muxer/next_output_parameters.h"
#include "matroska_muxer/option_parameters.h"
#include "matroska_muxer/options_block.h"
#include "matroska_muxer/record_fields.h"
#include "matroska_muxer/statistics_parameters.h"
#include "mkv/mkv_writer.h"
#include "mux/connected_inputs.h"

namespace {

using Replaced = records::CTrackSettingsTable::Replaced;

// ---- The settings of the tracks ------------------------------------------------------------------------------------

HRESULT SetTrackInfo(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const auto* const record = static_cast<const TrackSettings*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    if (!targets.rows.Has(record->index)) {
        return E_INVALIDARG; // before the strings are read: such a record may hold anything
    }
    const Replaced replaced = targets.rows.Replace(record->index, records::CTrackSettingsRow(*record));
    changed = replaced == Replaced::Changed;
    return replaced == Replaced::OutsideTheTable ? E_INVALIDARG : S_OK;
}

HRESULT GetTrackInfo(const ParameterTargets& targets, VARIANT& value) {
    auto* const record = static_cast<TrackSettings*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    const auto majorType = targets.inputs.MajorTypeOf(record->index);
    const auto row = targets.rows.At(record->index);
    if (!row) {
        return E_INVALIDARG;
    }
    row->CopyTo(*record);
    if (majorType) {
        CMediaType type;
        type.SetType(&*majorType);
        record->trackType = CMkvWriter::getTrackType(type);
    }
    return S_OK;
}

void WriteRows(const ParameterTargets& targets, CFieldWriter& out) {
    const auto rows = targets.rows.All();
    out.Write(static_cast<UINT64>(rows.size()));
    for (const records::CTrackSettingsRow& row : rows) {
        WriteRow(out, row.Get());
    }
}

void ReadRows(const ParameterTargets& targets, CFieldReader& in) {
    targets.rows.Clear();
    for (auto rows = in.Read<UINT64>(); rows > 0; --rows) {
        targets.rows.Append(ReadRow(in));
    }
}

// ---- The document type ---------------------------------------------------------------------------------------------

HRESULT SetDocType(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const UINT32 before = targets.writer.outputFormat();
    targets.writer.setOutputFormat(V_UI4(&value)); // ignores all but 0 and 1
    changed = targets.writer.outputFormat() != before;
    return S_OK;
}

HRESULT GetDocType(const ParameterTargets& targets, VARIANT& value) {
    V_UI4(&value) = targets.writer.outputFormat();
    return S_OK;
}

void WriteDocType(const ParameterTargets& targets, CFieldWriter& out) {
    out.Write(targets.writer.outputFormat());
}

void ReadDocType(const ParameterTargets& targets, CFieldReader& in) {
    targets.writer.setOutputFormat(in.Read<UINT32>());
}

// ---- The attachments -----------------------------------------------------------------------------------------------

HRESULT AddAttachment(const ParameterTargets& targets, const VARIANT& value, bool& changed) {
    const auto* const record = static_cast<const MuxAttachment*>(V_BYREF(&value));
    if (record == nullptr) {
        return E_POINTER;
    }
    changed = targets.writer.addAttachment(*record);
    return changed ? S_OK : E_INVALIDARG;
}

void WriteAttachments(const ParameterTargets& targets, CFieldWriter& out) {
    const size_t count = targets.writer.attachmentCount(); // the list only grows
    out.Write(static_cast<UINT32>(count));
    for (size_t i = 0; i < count; ++i) {
        WriteAttachment(out, *targets.writer.attachment(i));
    }
}

void ReadAttachments(const ParameterTargets& targets, CFieldReader& in) {
    for (auto count = in.Read<UINT32>(); count > 0; --count) {
        ReadAttachment(in, targets.writer);
    }
}

// ---- What is not saved ---------------------------------------------------------------------------------------------

HRESULT SetLogDirectory(const ParameterTargets& /*targets*/, const VARIANT& value, bool& /*changed*/) {
    const BSTR directory = V_BSTR(&value);
    if (SysStringLen(directory) == 0) {
        g_Logger.CloseLog();
        g_Logger.SetEnabled(false);
        return S_OK;
    }
    g_Logger.SetEnabled(true);
    g_Logger.OpenNamedLog(directory, OLESTR("QRX_MKVMuxer"), false);
    return S_OK;
}

HRESULT GetPosition(const ParameterTargets& targets, VARIANT& value) {
    V_I8(&value) = static_cast<REFERENCE_TIME>(targets.writer.duration() / double{kNsPerReferenceTime});
    return S_OK;
}

HRESULT GetInputCount(const ParameterTargets& targets, VARIANT& value) {
    V_UI2(&value) = static_cast<USHORT>(targets.inputs.Count() - 1); // without the spare one
    return S_OK;
}

// ---- The table -----------------------------------------------------------------------------------------------------

// How a parameter is written into a configuration and read from it.
struct Saved {
    void (*write)(const ParameterTargets& targets, CFieldWriter& out);
    void (*read)(const ParameterTargets& targets, CFieldReader& in);
};

struct Parameter {
    const GUID& key;
    HRESULT (*set)(const ParameterTargets& targets, const VARIANT& value, bool& changed); // null: cannot be set
    HRESULT (*get)(const ParameterTargets& targets, VARIANT& value);                      // null: cannot be got
    const Saved* saved = nullptr;                                                         // null: is not saved
};

constexpr Saved kSavedRows{WriteRows, ReadRows};
constexpr Saved kSavedDocType{WriteDocType, ReadDocType};
constexpr Saved kSavedAttachments{WriteAttachments, ReadAttachments};

// The rows that are saved are saved in this order, which every graph file out there has. The options follow in a block
// (options_block.h), which is written only when one of them differs from its default; so configurations that do not use
// them stay as they are. What a later version adds gets a tag in that block.
constexpr Parameter kParameters[] = {
    {MKVMUX_TrackInfo, SetTrackInfo, GetTrackInfo, &kSavedRows},
    {MKVMUX_DocType, SetDocType, GetDocType, &kSavedDocType},
    {MKVMUX_Attachment, AddAttachment, nullptr, &kSavedAttachments},
    {MKVMUX_Profile, SetProfile, GetProfile},
    {MKVMUX_TrackFlags, SetTrackFlags, GetTrackFlags},
    {MKVMUX_Title, SetTitle, GetTitle},
    {MKVMUX_Seed, SetSeed, GetSeed},
    {MKVMUX_TrackStatistics, SetTrackStatistics, GetTrackStatistics},
    {MKVMUX_TrackColour, SetTrackColour, GetTrackColour},
    {MKVMUX_Chapter, SetChapter, GetChapter},
    {MKVMUX_Tag, SetTag, GetTag},
    {MKVMUX_ReserveIndex, SetReserveIndex, GetReserveIndex},
    {MKVMUX_LogDirectory, SetLogDirectory, nullptr},
    {MKVMUX_Position, nullptr, GetPosition},
    {MKVMUX_InputCount, nullptr, GetInputCount},
    {MKVMUX_Statistics, nullptr, GetStatistics},
    {MKVMUX_InputStatistics, nullptr, GetInputStatistics},
    {MKVMUX_NextOutput, SetNextOutput, GetNextOutput},
    {MKVMUX_NextOutputRule, SetNextOutputRule, GetNextOutputRule},
};

// Null for an unknown key.
const Parameter* Find(const GUID& key) {
    const auto* const found = std::find_if(std::begin(kParameters), std::end(kParameters),
                                           [&key](const Parameter& row) { return IsEqualGUID(row.key, key); });
    return found == std::end(kParameters) ? nullptr : found;
}

template <typename Body>
void ForEverySaved(Body body) {
    for (const Parameter& parameter : kParameters) {
        if (parameter.saved != nullptr) {
            body(*parameter.saved);
        }
    }
}

// What the body throws as a failure of the stream becomes its HRESULT.
template <typename Body>
HRESULT GuardStream(Body body) {
    try {
        body();
        return S_OK;
    } catch (const StreamFailure& failure) {
        return failure.hr;
    }
}

} // namespace

CMuxerParameters::CMuxerParameters(const Reach& reach)
    : m_options(reach.options), m_targets{m_rows,       m_options,        reach.writer, reach.nextOutput,
                                          reach.inputs, reach.statistics, reach.writes} {}

HRESULT CMuxerParameters::Set(const GUID& key, const VARIANT& value, bool& changed) {
    changed = false;
    const Parameter* const parameter = Find(key);
    return parameter == nullptr || parameter->set == nullptr ? E_FAIL : parameter->set(m_targets, value, changed);
}

HRESULT CMuxerParameters::Get(const GUID& key, VARIANT& value) const {
    const Parameter* const parameter = Find(key);
    return parameter == nullptr || parameter->get == nullptr ? E_FAIL : parameter->get(m_targets, value);
}

records::AllOptions CMuxerParameters::AllOptions() const {
    records::AllOptions all = m_options.All();
    all.chapters = m_targets.writer.chapters().Lasting();
    all.tags = m_targets.writer.tags().Lasting();
    return all;
}

DWORD CMuxerParameters::FormatToSave() const {
    return AllOptions().IsDefault() ? kPlainFormat : kFormatWithOptions;
}

HRESULT CMuxerParameters::Save(IStream& stream, DWORD format) const {
    return GuardStream([&] {
        CFieldWriter out(stream);
        ForEverySaved([&](const Saved& saved) { saved.write(m_targets, out); });
        if (format == kFormatWithOptions) {
            WriteOptionsBlock(out, AllOptions());
        }
    });
}

HRESULT CMuxerParameters::Load(IStream& stream, DWORD format) {
    return GuardStream([&] {
        CFieldReader in(stream);
        ForEverySaved([&](const Saved& saved) { saved.read(m_targets, in); });
        records::AllOptions options;
        if (format == kFormatWithOptions) {
            options = ReadOptionsBlock(in);
        }
        // As SetValue would refuse them.
        std::erase_if(options.flags, [this](const auto& flags) { return !m_rows.Has(flags.first); });
        // The block has no more of them than the lists hold.
        (void)m_targets.writer.chapters().ReplaceAll(std::exchange(options.chapters, {}));
        (void)m_targets.writer.tags().ReplaceAll(std::exchange(options.tags, {}));
        m_options.ReplaceAll(std::move(options));
    });
}
