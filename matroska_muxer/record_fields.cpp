#include "matroska_muxer/record_fields.h"

#include <cstring>

#include "mkv/mkv_writer.h"

namespace {

void WriteText(CFieldWriter& out, BSTR text) {
    const UINT length = SysStringLen(text); // code units
    out.Write(static_cast<UINT32>(length));
    out.WriteBytes(text, length * static_cast<ULONG>(sizeof(WCHAR)));
}

win::Bstr ReadText(CFieldReader& in) {
    return in.ReadText(UINT64{in.Read<UINT32>()} * sizeof(WCHAR));
}

void WriteSized(CFieldWriter& out, const void* bytes, UINT32 size) {
    out.Write(size);
    out.WriteBytes(bytes, size);
}

// A length of 0 leaves the string unset.
win::Bstr ReadSizedText(CFieldReader& in) {
    const auto bytes = in.Read<UINT32>();
    return bytes == 0 ? win::Bstr() : in.ReadText(bytes);
}

} // namespace

void WriteRow(CFieldWriter& out, const TrackSettings& row) {
    out.Write(row.bEnabled);
    out.Write(row.bDefault);
    out.Write(row.bReserved);
    out.Write(row.index);
    out.Write(row.trackType);
    WriteText(out, row.language);
    WriteText(out, row.name);
}

records::CTrackSettingsRow ReadRow(CFieldReader& in) {
    TrackSettings row{};
    row.bEnabled = in.Read<BYTE>();
    row.bDefault = in.Read<BYTE>();
    row.bReserved = in.Read<BYTE>();
    row.index = in.Read<INT32>();
    row.trackType = in.Read<INT32>();
    const win::Bstr language = ReadText(in);
    const win::Bstr name = ReadText(in);
    row.language = language.Get();
    row.name = name.Get();
    return records::CTrackSettingsRow(row);
}

void WriteAttachment(CFieldWriter& out, const MuxAttachment& attachment) {
    WriteSized(out, attachment.fileName, SysStringByteLen(attachment.fileName));
    WriteSized(out, attachment.description, SysStringByteLen(attachment.description));
    const size_t mimeLength = attachment.mimeType == nullptr ? 0 : std::strlen(attachment.mimeType);
    WriteSized(out, attachment.mimeType, static_cast<UINT32>(mimeLength));
    WriteSized(out, attachment.data, attachment.dataSize);
    out.Write(attachment.uid);
}

void ReadAttachment(CFieldReader& in, CMkvWriter& writer) {
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
