#include "matroska_muxer/configuration_stream.h"

#include <cstring>

#include "matroska_muxer/field_stream.h"

namespace {

void WriteText(FieldWriter& out, BSTR text) {
    const UINT length = SysStringLen(text); // code units
    out.Write(static_cast<UINT32>(length));
    out.WriteBytes(text, length * static_cast<ULONG>(sizeof(WCHAR)));
}

void WriteRow(FieldWriter& out, const TrackSettings& row) {
    out.Write(row.bEnabled);
    out.Write(row.bDefault);
    out.Write(row.bReserved);
    out.Write(row.index);
    out.Write(row.trackType);
    WriteText(out, row.language);
    WriteText(out, row.name);
}

void WriteSized(FieldWriter& out, const void* bytes, UINT32 size) {
    out.Write(size);
    out.WriteBytes(bytes, size);
}

void WriteAttachment(FieldWriter& out, const MuxAttachment& attachment) {
    WriteSized(out, attachment.fileName, SysStringByteLen(attachment.fileName));
    WriteSized(out, attachment.description, SysStringByteLen(attachment.description));
    const size_t mimeLength = attachment.mimeType == nullptr ? 0 : std::strlen(attachment.mimeType);
    WriteSized(out, attachment.mimeType, static_cast<UINT32>(mimeLength));
    WriteSized(out, attachment.data, attachment.dataSize);
    out.Write(attachment.uid);
}

records::CTrackSettingsRow ReadRow(FieldReader& in) {
    TrackSettings row{};
    row.bEnabled = in.Read<BYTE>();
    row.bDefault = in.Read<BYTE>();
    row.bReserved = in.Read<BYTE>();
    row.index = in.Read<INT32>();
    row.trackType = in.Read<INT32>();
    const win::Bstr language = in.ReadText(UINT64{in.Read<UINT32>()} * sizeof(WCHAR));
    const win::Bstr name = in.ReadText(UINT64{in.Read<UINT32>()} * sizeof(WCHAR));
    row.language = language.Get();
    row.name = name.Get();
    return records::CTrackSettingsRow(row);
}

// A length of 0 leaves the string unset.
win::Bstr ReadSizedText(FieldReader& in) {
    const auto bytes = in.Read<UINT32>();
    return bytes == 0 ? win::Bstr() : in.ReadText(bytes);
}

void ReadAttachment(FieldReader& in, CMkvWriter& writer) {
    MuxAttachment record{};
    const win::Bstr fileName = ReadSizedText(in);
    const win::Bstr description = ReadSizedText(in);
    std::vector<BYTE> mimeType = in.ReadBytes(in.Read<UINT32>());
    std::vector<BYTE> data = in.ReadBytes(in.Read<UINT32>());
    record.fileName = fileName.Get();
    record.description = description.Get();
    if (!mimeType.empty()) {
        mimeType.push_back(0);
        record.mimeType = reinterpret_cast<char*>(mimeType.data());
    }
    record.dataSize = static_cast<UINT32>(data.size());
    record.data = data.empty() ? nullptr : data.data();
    record.uid = in.Read<UINT64>();
    writer.addAttachment(record);
}

} // namespace

HRESULT WriteConfiguration(IStream& stream, const records::CTrackSettingsTable& settings, const CMkvWriter& writer) {
    try {
        FieldWriter out(stream);
        const std::vector<records::CTrackSettingsRow> rows = settings.All();
        out.Write(static_cast<UINT64>(rows.size()));
        for (const records::CTrackSettingsRow& row : rows) {
            WriteRow(out, row.Get());
        }
        out.Write(writer.outputFormat());
        const size_t attachments = writer.attachmentCount(); // the list only grows
        out.Write(static_cast<UINT32>(attachments));
        for (size_t i = 0; i < attachments; ++i) {
            WriteAttachment(out, *writer.attachment(i));
        }
        return S_OK;
    } catch (const StreamFailure& failure) {
        return failure.result;
    }
}

HRESULT ReadConfiguration(IStream& stream, records::CTrackSettingsTable& settings, CMkvWriter& writer) {
    try {
        FieldReader in(stream);
        settings.Clear();
        for (auto rows = in.Read<UINT64>(); rows > 0; --rows) {
            settings.Append(ReadRow(in));
        }
        writer.setOutputFormat(in.Read<UINT32>());
        for (auto attachments = in.Read<UINT32>(); attachments > 0; --attachments) {
            ReadAttachment(in, writer);
        }
        return S_OK;
    } catch (const StreamFailure& failure) {
        return failure.result;
    }
}
