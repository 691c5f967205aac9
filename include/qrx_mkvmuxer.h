// Quorlex Matroska Muxer: all that an application needs to load and steer the filter.
//
// Plain C++17; includes platform headers only. The identifiers are declared here; in exactly one source file of
// the application, include <initguid.h> first, and this header defines them there.
//
// Strings are BSTRs: whoever holds a record frees its strings with SysFreeString. The filter copies what it is given
// before SetValue returns. GetValue frees the strings that the record holds and puts copies there for the caller.
#ifndef QRX_MKVMUXER_H
#define QRX_MKVMUXER_H

#include <windows.h>

#include <oaidl.h>
#include <objbase.h>
#include <objidl.h>
#include <oleauto.h>

// clang-format off

// ---- Classes of the module QRX_MKVMuxer.ax ----------------------------------------------------------------------

// The filter. {BDCE2C3A-4B83-480E-9B5F-8E96F0A9D3C1}
DEFINE_GUID(CLSID_MatroskaMuxer, 0xbdce2c3a, 0x4b83, 0x480e, 0x9b, 0x5f, 0x8e, 0x96, 0xf0, 0xa9, 0xd3, 0xc1);
// Its property pages. {5B0E1F2D-93C8-4A61-8D37-2C6E5FA1B904} {E49A7D16-0C52-4F8B-A1E3-7790B86C1D25}
DEFINE_GUID(CLSID_MKVMuxerAboutPage, 0x5b0e1f2d, 0x93c8, 0x4a61, 0x8d, 0x37, 0x2c, 0x6e, 0x5f, 0xa1, 0xb9, 0x04);
DEFINE_GUID(CLSID_MKVMuxerPropertyPage, 0xe49a7d16, 0x0c52, 0x4f8b, 0xa1, 0xe3, 0x77, 0x90, 0xb8, 0x6c, 0x1d, 0x25);

// ---- Parameter keys of IModuleConfig ----------------------------------------------------------------------------

// Set and get, VARIANT::byref: a TrackSettings record; its index chooses the row.
DEFINE_GUID(MKVMUX_TrackInfo, 0x3f6c2b91, 0x7d04, 0x4e5a, 0xb8, 0x13, 0x60, 0x9d, 0x4c, 0xe2, 0x57, 0xa8);
// Set only, VARIANT::byref: a MuxAttachment record, added to the file as a copy.
DEFINE_GUID(MKVMUX_Attachment, 0x8a15d0e7, 0x26bf, 0x43c9, 0x9e, 0x70, 0xd4, 0x3b, 0x81, 0x0f, 0x62, 0x5c);
// Set and get, VARIANT::ulVal: a MuxDocType; other values are ignored.
DEFINE_GUID(MKVMUX_DocType, 0xc7e94f03, 0x51a8, 0x4d26, 0x87, 0xbe, 0x1f, 0x6a, 0xd3, 0x95, 0x0b, 0x74);
// Set only, VARIANT::bstrVal: the directory of the trace log; an empty string switches it off.
DEFINE_GUID(MKVMUX_LogDirectory, 0x14b2a86d, 0xe97c, 0x4058, 0xa6, 0x2f, 0x83, 0xc0, 0x5e, 0x19, 0xf4, 0xb7);
// Get only, VARIANT::llVal: the length written so far, in units of 100 ns.
DEFINE_GUID(MKVMUX_Position, 0x6d80f35a, 0xb241, 0x4c97, 0x95, 0x08, 0xae, 0x7f, 0x23, 0xd6, 0x4b, 0x10);
// Get only, VARIANT::uiVal: the number of input pins without the spare one.
DEFINE_GUID(MKVMUX_InputCount, 0xf2573ec4, 0x0896, 0x4ab3, 0xbd, 0x54, 0x3e, 0x12, 0x9c, 0x68, 0xa7, 0xd1);

// What the file is written as, and told beside the rows. All are read at the next start.
// Set and get, VARIANT::ulVal: a MuxProfile; E_INVALIDARG for others.
DEFINE_GUID(MKVMUX_Profile, 0xeaa75000, 0x2f0b, 0x4a2f, 0xb6, 0x92, 0xad, 0x15, 0x74, 0x62, 0x17, 0x4f);
// Set and get, VARIANT::byref: a MuxTrackFlags record; its index chooses the input. E_INVALIDARG for an index without
// a row and for a value that is no MuxFlag; nothing is changed then. Written by the strict profile alone.
DEFINE_GUID(MKVMUX_TrackFlags, 0x0535d624, 0x29dc, 0x441c, 0xb1, 0x97, 0xf5, 0x10, 0x94, 0xc6, 0xde, 0x27);
// Set and get, VARIANT::bstrVal: the title of the file; null or empty for none. E_INVALIDARG for more than 32,767
// characters and for a null character within. What is got is the caller's to free; what stood in the VARIANT is not
// freed. Written by the strict profile alone.
DEFINE_GUID(MKVMUX_Title, 0x8e381704, 0x0ef5, 0x4d3a, 0x8a, 0xc8, 0x3b, 0x55, 0xb7, 0x10, 0x5d, 0xaa);
// Set and get, VARIANT::ullVal: where the strict profile takes its identifiers and its date from, so that the same
// packets make the same file; 0 for the system's random numbers and clock.
DEFINE_GUID(MKVMUX_Seed, 0x9ad118ee, 0xd9ac, 0x4810, 0x85, 0xec, 0x5c, 0xa1, 0x3f, 0xbc, 0xee, 0xa0);
// Set and get, VARIANT::ulVal: whether the strict profile writes statistics tags: 1, as at first, or 0; E_INVALIDARG for
// others.
DEFINE_GUID(MKVMUX_TrackStatistics, 0xa461331f, 0xa1cf, 0x4494, 0x82, 0x35, 0x94, 0xfc, 0x75, 0xda, 0xd4, 0x78);
// Set and get, VARIANT::byref: a MuxTrackColour record, what somebody knows better of a video track's colours than its
// media type and its stream tell; its index chooses the input. E_INVALIDARG for an index without a row and for a value
// below -1 or that is no number; nothing is changed then. Of what Matroska has no meaning for nothing is written. Not
// saved. Written by the strict profile alone.
DEFINE_GUID(MKVMUX_TrackColour, 0xf4240379, 0x1b2c, 0x438c, 0xae, 0xab, 0x5c, 0x55, 0x61, 0x03, 0x8f, 0xd2);
// Set and get, VARIANT::byref: a MuxChapter record. Set adds, replaces or removes as its index says, also while a file is
// recorded: what is set until Stop is in that file. Get gives the chapter of that index, E_INVALIDARG behind the last one;
// the strings that the record holds are freed. E_INVALIDARG for a value that cannot be, and for more than 10,000 chapters
// or 1,048,576 characters of all together; nothing is changed then. Written by the strict profile alone.
DEFINE_GUID(MKVMUX_Chapter, 0x8d554f3d, 0x75da, 0x403a, 0xa7, 0x77, 0x61, 0xa8, 0x0f, 0x55, 0x76, 0xc0);
// Set and get, VARIANT::byref: a MuxTag record, as above.
DEFINE_GUID(MKVMUX_Tag, 0x435f978f, 0x01af, 0x4084, 0xb6, 0xeb, 0x03, 0x28, 0x4b, 0x5c, 0x56, 0xc7);

// What is going on: the current run's figures, after Stop those of the last one, zeros before the first. From any thread
// and in any state; they wait for nothing that writes. The caller sets the record's size; see there.
// Get only, VARIANT::byref: a MuxStatistics record.
DEFINE_GUID(MKVMUX_Statistics, 0x37c55997, 0x434d, 0x482a, 0xa1, 0xe7, 0xac, 0xb3, 0xb9, 0xfb, 0xb7, 0xb5);
// Get only, VARIANT::byref: a MuxInputStatistics record; its index chooses the input. E_INVALIDARG when there is no such
// input.
DEFINE_GUID(MKVMUX_InputStatistics, 0xd9fb599e, 0x6782, 0x4f3b, 0x95, 0x36, 0x56, 0x39, 0x76, 0x76, 0xcb, 0x84);

// Set and get, VARIANT::byref: a MuxReservedIndex record, the room that the strict profile keeps for the index in front
// of the clusters; at first all 0, and the index stands at the end of the file. E_INVALIDARG for more than 16 MiB and for
// a length below 0; nothing is changed then.
DEFINE_GUID(MKVMUX_ReserveIndex, 0x7dc98997, 0xc973, 0x47c5, 0x80, 0x9c, 0xf3, 0x6c, 0x10, 0x4b, 0x6f, 0x42);
// Going on into another file, while one is recorded. Neither is saved.
// Set and get, VARIANT::punkVal: an object with IStream, the next file. The muxer goes over to it at the next keyframe of
// the first video track, as MKVMUX_NextOutputRule says, and tells so with MuxEvent_NextOutputBegun. What is set takes the
// place of what still waits; null withdraws that. The stream is called on the muxer's own thread, and let go when its
// file is finished, or when it is no longer wanted. VFW_E_WRONG_STATE while no file is open, E_NOINTERFACE for an object
// without IStream. What is got is what still waits, and the caller's to release, or null.
DEFINE_GUID(MKVMUX_NextOutput, 0xeb7b8acd, 0xfd8f, 0x4f1c, 0x9f, 0x48, 0x1f, 0x80, 0xbd, 0xe6, 0x97, 0x84);
// Set and get, VARIANT::byref: a MuxNextOutputRule record, of what is set with MKVMUX_NextOutput from then on. E_INVALIDARG
// for a size or a value that cannot be; nothing is changed then.
DEFINE_GUID(MKVMUX_NextOutputRule, 0x897674eb, 0x6b90, 0x4a1d, 0xa4, 0x4a, 0xbc, 0xb6, 0x44, 0x0d, 0x62, 0x5c);

// {9C41D7B5-68E2-4F30-A50C-D1B7E83F2946}
DEFINE_GUID(IID_IModuleConfig, 0x9c41d7b5, 0x68e2, 0x4f30, 0xa5, 0x0c, 0xd1, 0xb7, 0xe8, 0x3f, 0x29, 0x46);

// clang-format on

// ---- Values of parameters and fields ----------------------------------------------------------------------------

// What the file says that it is; the value of MKVMUX_DocType.
enum MuxDocType {
    MuxDocType_Matroska = 0, // "matroska"
    MuxDocType_Webm = 1      // "webm"
};

// How the file is written; the value of MKVMUX_Profile.
enum MuxProfile {
    MuxProfile_Compatible = 0, // as this muxer has always written
    MuxProfile_Strict = 1      // as RFC 9559 and the WebM guidelines ask
};

// The value of a flag of MuxTrackFlags.
enum MuxFlag {
    MuxFlag_Off = 0,
    MuxFlag_On = 1,
    MuxFlag_Unset = 0xFF // not written, except FlagForced, which is off then
};

// What a connected input carries; read in TrackSettings::trackType. The numbers are Matroska's.
enum MuxTrackType {
    MuxTrackType_Unknown = -1, // of a row whose input is not connected, unless something else was stored there
    MuxTrackType_Video = 1,
    MuxTrackType_Audio = 2,
    MuxTrackType_Subtitle = 17 // texts too
};

// Indices of MuxChapter and MuxTag that are no places in the list.
enum MuxListIndex {
    MuxListIndex_Add = -1,  // one more, at the end of the list
    MuxListIndex_Clear = -2 // all of them go; the rest of the record is not looked at
};

// Times of MuxChapter that are none.
inline constexpr INT64 MuxChapterTime_None = -1; // of an end: where the next one begins
inline constexpr INT64 MuxChapterTime_Now = -2;  // of a start: what is written of the file so far

// The times of a file that goes on where another one ended; the value of MuxNextOutputRule::times.
enum MuxOutputTimes {
    MuxOutputTimes_FromZero = 0, // each file begins at 0
    MuxOutputTimes_RunOn = 1     // they go on from file to file
};

// Levels of MuxChapter and MuxTag.
enum MuxLevel {
    MuxLevel_Top = 0,          // others are parts of the one before that is one level up
    MuxLevel_FurtherTitle = -1 // no chapter, but the same one's title in one more language
};

// Of MuxTag::track.
inline constexpr INT32 MuxTagTrack_All = -1; // the tag speaks of the whole file

// ---- Results ----------------------------------------------------------------------------------------------------

// Why the strict profile does not begin a WebM file, as Pause answers it: the filter stays stopped, and nothing is
// written. The low byte tells the input, so filter graphs hand that on, too; the log names the input with its codec.
inline constexpr HRESULT MUX_E_NOT_WEBM = static_cast<HRESULT>(0x80045700U); // input 0 carries what is no codec of WebM
inline constexpr HRESULT MUX_E_NOT_WEBM_ATTACHMENT = MUX_E_NOT_WEBM + 0xFF;  // WebM has no attachments

// That of an input, from 0; those from 254 on share one.
constexpr HRESULT MuxNotWebmInput(INT32 input) {
    return MUX_E_NOT_WEBM + (input >= 0 && input < 0xFE ? input : 0xFE);
}
// Whether it is one of them.
constexpr bool MuxIsNotWebm(HRESULT hr) {
    return hr >= MUX_E_NOT_WEBM && hr <= MUX_E_NOT_WEBM_ATTACHMENT;
}

// ---- Events for the filter graph --------------------------------------------------------------------------------

// Numbers from EC_USER on. IMediaEvent::GetEvent gives them to the application; the graph does nothing about them.
enum MuxEvent {
    // Not all that arrived is in the file, since a write failed, as on a full disk, or memory ran out. The first
    // parameter is the HRESULT of the first such failure, the second one 0. Once a run, from its start until Stop.
    // The run goes on, but the inputs begin to refuse samples with that result; Stop finishes the file with what fits.
    // With MKVMUX_NextOutput once a file.
    MuxEvent_OutputFailed = 0x8000 + 0x4D58,
    // The file before is finished and let go, and the one of MKVMUX_NextOutput has begun. The first parameter is its
    // number, 2 for the first such file of a run, the second one where it begins, in milliseconds of the recording.
    MuxEvent_NextOutputBegun = MuxEvent_OutputFailed + 1,
    // The stream of MKVMUX_NextOutput was let go, and the file before goes on, without a loss: the head of the next one
    // could not be written, or Stop came first (E_ABORT). The first parameter is the HRESULT, the second one the number
    // that the file would have had.
    MuxEvent_NextOutputFailed = MuxEvent_OutputFailed + 2,
    // The index stands at the end of the file, since it does not fit into the room that was kept for it. The first
    // parameter is its size, the second one that of the room, both in bytes. When the file is finished.
    MuxEvent_IndexAtEnd = MuxEvent_OutputFailed + 3
};

// ---- Records passed by reference --------------------------------------------------------------------------------

// The settings of one track; the filter has 100 rows, one for each of its first input pins.
struct TrackSettings {
    INT32 index;     // the input pin, from 0
    BYTE bEnabled;   // 0: the pin's stream is not written
    BYTE bDefault;   // written as the track's default flag and as its forced flag
    BYTE bReserved;  // kept and saved, but not read by the muxer
    BSTR language;   // English name as in ISO 639-2, for example "English"
    BSTR name;       // the track's name; not written when empty
    INT32 trackType; // read back: the MuxTrackType of a connected pin; otherwise as stored
};

// What else is told of a track, each a MuxFlag; all are unset at first.
struct MuxTrackFlags {
    INT32 index;          // the input pin, from 0
    BYTE forced;          // shown to those who asked for no subtitles
    BYTE hearingImpaired; // for people who do not hear well
    BYTE visualImpaired;  // for people who do not see well
    BYTE original;        // in the language that the content was made in
    BYTE commentary;
};

// How the numbers of a track's pictures are colours, in Matroska's values: those that name a standard are the values of
// ISO/IEC 23091-2. -1 is not told: then the media type and the stream are asked.
struct MuxTrackColour {
    INT32 index; // the input pin, from 0
    INT32 matrixCoefficients;
    INT32 bitsPerChannel;
    INT32 chromaSubsamplingHorz; // how many samples are left out for each that is there
    INT32 chromaSubsamplingVert;
    INT32 cbSubsamplingHorz; // in addition
    INT32 cbSubsamplingVert;
    INT32 chromaSitingHorz; // 1 with the left sample of luma, 2 between
    INT32 chromaSitingVert; // 1 with the upper one, 2 between
    INT32 range;            // 1 broadcast, 2 full, 3 as matrix and transfer tell
    INT32 transferCharacteristics;
    INT32 primaries;
    INT32 maxContentLight;      // of the brightest pixel, in candelas per square metre
    INT32 maxFrameAverageLight; // of the brightest picture
    // The display that the pictures were made on: CIE 1931 coordinates, candelas per square metre.
    double redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY;
    double maxLuminance;
    double minLuminance;
    // DOVIDecoderConfigurationRecord as the box dvcC has it; all 0 where the stream is no Dolby Vision.
    BYTE dolbyVision[24];
};

// The room for the index, with which players seek in a file without reading its end; the value of MKVMUX_ReserveIndex.
// An index that does not fit is written at the end of the file (MuxEvent_IndexAtEnd). An output that cannot seek has
// neither.
struct MuxReservedIndex {
    UINT64 bytes;            // 0: what a recording of the expected length will need
    LONGLONG expectedLength; // in 100 ns; counts without bytes; 0: nothing is kept
};

// A file that is attached to the output. Null fields are left out of the file, empty ones are not.
struct MuxAttachment {
    BSTR fileName;
    BSTR description;
    char* mimeType;  // zero-terminated
    UINT32 dataSize; // bytes; of no meaning without data
    BYTE* data;
    UINT64 uid; // not 0, unique among the attachments of a file
};

// A chapter of the file. One with the start MuxChapterTime_Now marks the moment of the file that is being recorded: it
// belongs to that file, is not saved, and goes when the next file begins; E_INVALIDARG for a level other than
// MuxLevel_Top or an index other than MuxListIndex_Add, VFW_E_WRONG_STATE while no file is open.
struct MuxChapter {
    INT32 index;   // from 0, or a MuxListIndex
    INT32 level;   // up to 15, or MuxLevel_FurtherTitle, of which index, title and language alone count
    INT64 start;   // 100 ns from the beginning of the file, or MuxChapterTime_Now
    INT64 end;     // not before the start, or MuxChapterTime_None
    UINT64 uid;    // 0, or one that the file has but once: the muxer makes one
    BYTE hidden;   // 1: players do not list it; else 0
    BYTE disabled; // 1: players pass over it; else 0
    BSTR title;    // null or empty: none
    BSTR language; // "en", "eng", "pt-BR" or an English name as in TrackSettings; null or empty: not said
};

// A tag of the file or of a track: what it is called, who made it.
struct MuxTag {
    INT32 index;       // from 0, or a MuxListIndex
    INT32 track;       // the input pin, from 0, or MuxTagTrack_All; without that track in the file it is not written
    INT32 level;       // up to 15; above MuxLevel_Top it says more of the tag before it
    UINT32 targetType; // Matroska's TargetTypeValue, such as 50 for a film or 30 for a song; 0 for 50
    BSTR target;       // its name, such as "ALBUM"; null or empty: none
    BSTR name;         // such as "ARTIST"; never empty
    BSTR value;        // null and empty are the same
    BSTR language;     // as above
};

// When and how the muxer goes over to the stream of MKVMUX_NextOutput: at the first keyframe at which all of this is
// so. The caller sets size to the size of its record; times are in units of 100 ns.
struct MuxNextOutputRule {
    UINT32 size;       // of this record in bytes
    UINT32 times;      // a MuxOutputTimes
    INT64 notBefore;   // the time of the recording, as MKVMUX_Position counts it, that must have come; 0 for any
    INT64 minDuration; // how long the file before must be; 0 for any length
    UINT64 minBytes;   // and how large
};

// What a run has written, all its files together. The caller sets size to the size of its record, E_INVALIDARG when
// that is less than this one's; as much is filled as both know, and size says how many bytes these are. Times are in
// units of 100 ns.
struct MuxStatistics {
    UINT32 size;         // of this record in bytes
    UINT32 isRunning;    // 1 from Pause to Stop
    UINT64 bytesWritten; // that the stream took, what was written twice counted twice
    UINT64 writes;       // calls of IStream::Write; the one that lasts just now counts, its time so far as well
    UINT64 clusters;     // that are in the file
    INT64 writeTime;     // spent in Write
    INT64 longestWrite;
    INT64 elapsed; // since Pause, or from Pause to the end of Stop
};

// What a run got from one input. size as above.
struct MuxInputStatistics {
    UINT32 size;          // of this record in bytes
    INT32 index;          // the input pin, from 0; the caller sets it
    UINT64 packets;       // handed to the file; frames of several samples are one packet
    UINT64 bytes;         // of these
    UINT64 queuedPackets; // that wait for their turn
    UINT64 queuedBytes;
    UINT64 queueLimit; // bytes at which Receive waits; 0 for an input without a queue, as one that is disabled
    UINT64 queuePeak;  // the most bytes that were queued, to a thousandth of the limit
    INT64 lastPacket;  // the start time of the packet that was handed to the file last, in units of 100 ns
    UINT64 dropped;    // that are not in the file: samples refused, also by a disabled input; packets that the file did
                       // not take, or that Stop found queued
    UINT64 late;     // packets that begin before what was written already, because nobody waited for the input any more
    UINT32 silences; // how often the muxer gave up waiting for this input
    UINT32 isSilent; // 1: it has not come back since
};

// ---- The parameter interface ------------------------------------------------------------------------------------

#if defined(_MSC_VER)
struct __declspec(uuid("9C41D7B5-68E2-4F30-A50C-D1B7E83F2946")) IModuleConfig; // for __uuidof; others: below
#endif

// Named parameters of the filter, and its persisted configuration. What is set is stored at once and can be got back;
// rows, document type, attachments, profile, flags, title, seed, statistics and the room for the index reach the file
// when streaming starts, and a file that is being written keeps what it began with; chapters and tags reach it until
// Stop. Title, seed, attachments, statistics and room for the index of a file that follows within a run are those of
// its beginning. The log directory takes effect at once. The VARIANT's type tag is neither checked nor set.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor" // COM objects are destroyed by Release alone
#endif
struct IModuleConfig : public IPersistStream {
    virtual HRESULT STDMETHODCALLTYPE SetValue(const GUID* key, const VARIANT* value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetValue(const GUID* key, VARIANT* value) = 0;

    // These answer E_NOTIMPL: there are no descriptions, no defaults and no pending changes.
    virtual HRESULT STDMETHODCALLTYPE DescribeValue(const GUID* key, IUnknown** description) = 0;
    virtual HRESULT STDMETHODCALLTYPE IsSupported(const GUID* key) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetDefaults() = 0;
    virtual HRESULT STDMETHODCALLTYPE EnumValues(LONG* count, GUID** keys) = 0;
    virtual HRESULT STDMETHODCALLTYPE CommitChanges() = 0;
    virtual HRESULT STDMETHODCALLTYPE DeclineChanges() = 0;
    virtual HRESULT STDMETHODCALLTYPE SaveToRegistry(HKEY root, BSTR path) = 0;
    virtual HRESULT STDMETHODCALLTYPE LoadFromRegistry(HKEY root, BSTR path) = 0;
    virtual HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink) = 0;
    virtual HRESULT STDMETHODCALLTYPE Unadvise(IUnknown* sink) = 0;
};
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

#ifdef __CRT_UUID_DECL
__CRT_UUID_DECL(IModuleConfig, 0x9c41d7b5, 0x68e2, 0x4f30, 0xa5, 0x0c, 0xd1, 0xb7, 0xe8, 0x3f, 0x29, 0x46)
#endif

#endif
