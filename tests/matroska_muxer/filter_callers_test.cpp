// Callers that cannot be trusted: every method of the filter's interfaces with nothing, with rubbish, and out of turn.
#include <gtest/gtest.h>

#include <limits>

#include "tests/matroska_muxer/caller_rig.h"
#include "tests/matroska_muxer/golden_configuration.h"
#include "tests/support/known_interfaces.h"

using namespace test_support;

namespace {

constexpr INT64 kNever = std::numeric_limits<INT64>::min();

// A structure that the callee fills.
template <typename Structure>
struct Room {
    Structure value{};
    operator Structure*() { return &value; }
};

// QueryFilterInfo's graph is a reference.
HRESULT AskInfo(IBaseFilter& filter) {
    FILTER_INFO info{};
    const HRESULT hr = filter.QueryFilterInfo(&info);
    EXPECT_NE(nullptr, info.pGraph);
    if (info.pGraph != nullptr) {
        info.pGraph->Release();
    }
    return hr;
}

InterfaceTable<IBaseFilter> BaseFilterTable() {
    InterfaceTable<IBaseFilter> table("IBaseFilter");
    table.Nulls("GetClassID", &IBaseFilter::GetClassID, E_POINTER)
        .Nulls("Stop", &IBaseFilter::Stop, S_OK)
        .Nulls("Pause", &IBaseFilter::Pause, S_OK)
        .Nulls("Run", &IBaseFilter::Run, S_OK)
        .With(
            "Run from long ago", &IBaseFilter::Run, [](IBaseFilter& f) { return f.Run(kNever); }, S_OK)
        .With(
            "Run twice", &IBaseFilter::Run, [](IBaseFilter& f) { return f.Run(1) | f.Run(kNever); }, S_OK)
        .With(
            "Stop twice", &IBaseFilter::Stop, [](IBaseFilter& f) { return f.Stop() | f.Stop(); }, S_OK)
        .Nulls("GetState", &IBaseFilter::GetState, E_POINTER)
        .With(
            "GetState without end", &IBaseFilter::GetState,
            [](IBaseFilter& f) { return f.GetState(INFINITE, Room<FILTER_STATE>()); }, S_OK)
        .Nulls("SetSyncSource", &IBaseFilter::SetSyncSource, S_OK) // no clock is an answer
        .Nulls("GetSyncSource", &IBaseFilter::GetSyncSource, E_POINTER)
        .With(
            "GetSyncSource without one", &IBaseFilter::GetSyncSource,
            [](IBaseFilter& f) { return f.GetSyncSource(OutReference<IReferenceClock>()); }, S_OK)
        .Nulls("EnumPins", &IBaseFilter::EnumPins, E_POINTER)
        .With(
            "EnumPins", &IBaseFilter::EnumPins, [](IBaseFilter& f) { return f.EnumPins(OutReference<IEnumPins>()); },
            S_OK)
        .Nulls("FindPin", &IBaseFilter::FindPin, E_POINTER)
        .With(
            "FindPin without a name", &IBaseFilter::FindPin,
            [](IBaseFilter& f) { return f.FindPin(nullptr, OutReference<IPin>()); }, E_POINTER)
        .With(
            "FindPin without room", &IBaseFilter::FindPin,
            [](IBaseFilter& f) { return f.FindPin(OLESTR("In 0"), nullptr); }, E_POINTER)
        .With(
            "FindPin of nobody", &IBaseFilter::FindPin,
            [](IBaseFilter& f) { return f.FindPin(OLESTR("In 99999999999999999999"), OutReference<IPin>()); },
            VFW_E_NOT_FOUND)
        .With(
            "FindPin without letters", &IBaseFilter::FindPin,
            [](IBaseFilter& f) { return f.FindPin(OLESTR(""), OutReference<IPin>()); }, VFW_E_NOT_FOUND)
        .Nulls("QueryFilterInfo", &IBaseFilter::QueryFilterInfo, E_POINTER)
        .With("QueryFilterInfo", &IBaseFilter::QueryFilterInfo, AskInfo, S_OK)
        .With(
            "QueryFilterInfo of a long name", &IBaseFilter::QueryFilterInfo,
            [](IBaseFilter& f) {
                FILTER_INFO info{};
                EXPECT_EQ(S_OK, f.JoinFilterGraph(nullptr, WideString(5000, OLESTR('n')).c_str()));
                const HRESULT hr = f.QueryFilterInfo(&info);
                EXPECT_EQ(WideString(127, OLESTR('n')), info.achName);
                EXPECT_EQ(nullptr, info.pGraph);
                return hr;
            },
            S_OK)
        .Nulls("JoinFilterGraph", &IBaseFilter::JoinFilterGraph, S_OK) // leaves
        .Nulls("QueryVendorInfo", &IBaseFilter::QueryVendorInfo, E_POINTER)
        .With(
            "QueryVendorInfo", &IBaseFilter::QueryVendorInfo,
            [](IBaseFilter& f) { return f.QueryVendorInfo(OutText()); }, E_NOTIMPL);
    return table;
}

InterfaceTable<IMediaFilter> MediaFilterTable() {
    InterfaceTable<IMediaFilter> table("IMediaFilter");
    table.Nulls("GetClassID", &IMediaFilter::GetClassID, E_POINTER)
        .Nulls("Stop", &IMediaFilter::Stop, S_OK)
        .Nulls("Pause", &IMediaFilter::Pause, S_OK)
        .Nulls("Run", &IMediaFilter::Run, S_OK)
        .Nulls("GetState", &IMediaFilter::GetState, E_POINTER)
        .Nulls("SetSyncSource", &IMediaFilter::SetSyncSource, S_OK)
        .Nulls("GetSyncSource", &IMediaFilter::GetSyncSource, E_POINTER);
    return table;
}

InterfaceTable<IPersist> PersistTable() {
    InterfaceTable<IPersist> table("IPersist");
    table.Nulls("GetClassID", &IPersist::GetClassID, E_POINTER)
        .With(
            "GetClassID", &IPersist::GetClassID, [](IPersist& p) { return p.GetClassID(Room<CLSID>()); }, S_OK);
    return table;
}

InterfaceTable<IAMovieSetup> SetupTable() {
    InterfaceTable<IAMovieSetup> table("IAMovieSetup");
    table
        .Nulls("Register", &IAMovieSetup::Register, S_FALSE) // the module registers, not the filter
        .Nulls("Unregister", &IAMovieSetup::Unregister, S_FALSE);
    return table;
}

InterfaceTable<ISpecifyPropertyPages> PagesTable() {
    InterfaceTable<ISpecifyPropertyPages> table("ISpecifyPropertyPages");
    table.Nulls("GetPages", &ISpecifyPropertyPages::GetPages, E_POINTER)
        .With(
            "GetPages into rubbish", &ISpecifyPropertyPages::GetPages,
            [](ISpecifyPropertyPages& p) {
                CAUUID pages{0xffffffff, nullptr};
                const HRESULT hr = p.GetPages(&pages);
                EXPECT_EQ(2u, pages.cElems);
                CoTaskMemFree(pages.pElems);
                return hr;
            },
            S_OK);
    return table;
}

// ---- The saved configuration ---------------------------------------------------------------------------------------

HRESULT LoadBytes(IPersistStream& object, const std::vector<BYTE>& bytes) {
    MemoryStream stream;
    EXPECT_EQ(S_OK, stream.Write(bytes.data(), static_cast<ULONG>(bytes.size()), nullptr));
    EXPECT_EQ(S_OK, stream.Seek({}, STREAM_SEEK_SET, nullptr));
    return object.Load(&stream);
}

// The version's digits and their space, and then rubbish for a number of rows.
std::vector<BYTE> HeaderAndRubbish() {
    std::vector<BYTE> bytes;
    for (int i = 0; i < 12; ++i) {
        bytes.push_back(i < 11 ? '0' : ' ');
        bytes.push_back(0);
    }
    bytes.insert(bytes.end(), 64, 0xff);
    return bytes;
}

// Where the options should be, rubbish.
std::vector<BYTE> OptionsThatAreNone() {
    golden::Golden bytes;
    return bytes.HeaderOfOptions().Append(golden::FreshBody()).Append(std::vector<BYTE>(64, 0xff)).Get();
}

template <typename Interface>
void AddPersistRows(InterfaceTable<Interface>& table) {
    const HRESULT tooShort = HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
    table.Nulls("GetClassID", &Interface::GetClassID, E_POINTER)
        .Nulls("IsDirty", &Interface::IsDirty, S_FALSE)
        .Nulls("Load", &Interface::Load, E_POINTER)
        .Nulls("Save", &Interface::Save, E_POINTER)
        .Nulls("GetSizeMax", &Interface::GetSizeMax, E_POINTER)
        .With(
            "Load of nothing", &Interface::Load, [](Interface& p) { return LoadBytes(p, {}); }, tooShort)
        .With(
            "Load of no number", &Interface::Load,
            [](Interface& p) { return LoadBytes(p, std::vector<BYTE>(500, 0xee)); }, VFW_E_INVALID_FILE_FORMAT)
        .With(
            "Load of options that are none", &Interface::Load,
            [](Interface& p) { return LoadBytes(p, OptionsThatAreNone()); }, VFW_E_INVALID_FILE_FORMAT)
        .With(
            "Load of rows without end", &Interface::Load, [](Interface& p) { return LoadBytes(p, HeaderAndRubbish()); },
            tooShort);
}

InterfaceTable<IPersistStream> PersistStreamTable() {
    InterfaceTable<IPersistStream> table("IPersistStream");
    AddPersistRows(table);
    return table;
}

// ---- The parameters ------------------------------------------------------------------------------------------------

HRESULT SetBy(IModuleConfig& config, const GUID& key, void* record) {
    VARIANT value{};
    V_BYREF(&value) = record;
    return config.SetValue(&key, &value);
}

HRESULT GetBy(IModuleConfig& config, const GUID& key, void* record) {
    VARIANT value{};
    V_BYREF(&value) = record;
    return config.GetValue(&key, &value);
}

HRESULT SetRow(IModuleConfig& config, INT32 index) {
    TrackSettings row{};
    row.index = index;
    return SetBy(config, MKVMUX_TrackInfo, &row);
}

HRESULT GetRow(IModuleConfig& config, INT32 index) {
    TrackSettings row{};
    row.index = index;
    const HRESULT hr = GetBy(config, MKVMUX_TrackInfo, &row);
    SysFreeString(row.language);
    SysFreeString(row.name);
    return hr;
}

HRESULT Attach(IModuleConfig& config, UINT32 size) {
    BYTE data[4] = {1, 2, 3, 4};
    MuxAttachment attachment{};
    attachment.dataSize = size;
    attachment.data = data;
    return SetBy(config, MKVMUX_Attachment, &attachment);
}

HRESULT SetWildDocType(IModuleConfig& config) {
    VARIANT value{};
    V_UI4(&value) = 0xdeadbeef;
    const HRESULT hr = config.SetValue(&MKVMUX_DocType, &value);
    EXPECT_EQ(S_OK, config.GetValue(&MKVMUX_DocType, &value));
    EXPECT_EQ(0u, V_UI4(&value)) << "as it was";
    return hr;
}

HRESULT SetNumber(IModuleConfig& config, const GUID& key, UINT32 number) {
    VARIANT value{};
    V_UI4(&value) = number;
    return config.SetValue(&key, &value);
}

HRESULT GetAny(IModuleConfig& config, const GUID& key) {
    VARIANT value{};
    return config.GetValue(&key, &value);
}

HRESULT SetFlags(IModuleConfig& config, INT32 index, BYTE forced) {
    MuxTrackFlags flags{index, forced, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset};
    const HRESULT hr = SetBy(config, MKVMUX_TrackFlags, &flags);
    flags = {0, 0, 0, 0, 0, 0};
    EXPECT_EQ(S_OK, GetBy(config, MKVMUX_TrackFlags, &flags));
    EXPECT_EQ(MuxFlag_Unset, flags.forced) << "as it was";
    return hr;
}

HRESULT GetFlags(IModuleConfig& config, INT32 index) {
    MuxTrackFlags flags{index, 0, 0, 0, 0, 0};
    return GetBy(config, MKVMUX_TrackFlags, &flags);
}

// A string that says that it is 4 GiB long, and has room for nothing.
HRESULT SetMonsterTitle(IModuleConfig& config) {
    alignas(8) UINT32 memory[4] = {0, 0xfffffffe, 0, 0};
    return SetBy(config, MKVMUX_Title, &memory[2]);
}

HRESULT GetTitle(IModuleConfig& config) {
    VARIANT value{};
    V_BSTR(&value) = reinterpret_cast<BSTR>(8); // not followed, not freed
    const HRESULT hr = config.GetValue(&MKVMUX_Title, &value);
    EXPECT_EQ(0u, SysStringLen(V_BSTR(&value)));
    SysFreeString(V_BSTR(&value));
    return hr;
}

HRESULT GetSized(IModuleConfig& config, const GUID& key, UINT32 size, INT32 index) {
    MuxInputStatistics record{};
    record.size = size;
    record.index = index;
    return GetBy(config, key, &record);
}

constexpr INT32 kLeast = std::numeric_limits<INT32>::min();
constexpr INT32 kMost = std::numeric_limits<INT32>::max();

void AddValueRows(InterfaceTable<IModuleConfig>& table) {
    const auto set = &IModuleConfig::SetValue;
    const auto get = &IModuleConfig::GetValue;
    table.Nulls("SetValue", set, E_POINTER)
        .Nulls("GetValue", get, E_POINTER)
        .With(
            "SetValue without a value", set, [](IModuleConfig& c) { return c.SetValue(&MKVMUX_LogDirectory, nullptr); },
            E_POINTER)
        .With(
            "SetValue without a key", set, [](IModuleConfig& c) { return c.SetValue(nullptr, Room<VARIANT>()); },
            E_POINTER)
        .With(
            "GetValue without a value", get, [](IModuleConfig& c) { return c.GetValue(&MKVMUX_DocType, nullptr); },
            E_POINTER)
        .With(
            "GetValue without a key", get, [](IModuleConfig& c) { return c.GetValue(nullptr, Room<VARIANT>()); },
            E_POINTER)
        .With(
            "SetValue of nobody", set, [](IModuleConfig& c) { return SetBy(c, GUID_NULL, nullptr); }, E_FAIL)
        .With(
            "GetValue of nobody", get, [](IModuleConfig& c) { return GetBy(c, GUID_NULL, nullptr); }, E_FAIL)
        .With(
            "a row that is none", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_TrackInfo, nullptr); }, E_POINTER)
        .With(
            "a row into nothing", get, [](IModuleConfig& c) { return GetBy(c, MKVMUX_TrackInfo, nullptr); }, E_POINTER)
        .With(
            "row -1", set, [](IModuleConfig& c) { return SetRow(c, -1); }, E_INVALIDARG)
        .With(
            "row 100", set, [](IModuleConfig& c) { return SetRow(c, 100); }, E_INVALIDARG)
        .With(
            "the least row", set, [](IModuleConfig& c) { return SetRow(c, kLeast); }, E_INVALIDARG)
        .With(
            "the last row of all", set, [](IModuleConfig& c) { return SetRow(c, kMost); }, E_INVALIDARG)
        .With(
            "row -1 back", get, [](IModuleConfig& c) { return GetRow(c, -1); }, E_INVALIDARG)
        .With(
            "row 100 back", get, [](IModuleConfig& c) { return GetRow(c, 100); }, E_INVALIDARG)
        .With(
            "the least row back", get, [](IModuleConfig& c) { return GetRow(c, kLeast); }, E_INVALIDARG)
        .With(
            "the last row of all back", get, [](IModuleConfig& c) { return GetRow(c, kMost); }, E_INVALIDARG)
        .With(
            "a row that nobody uses", get, [](IModuleConfig& c) { return GetRow(c, 99); }, S_OK)
        .With(
            "an attachment that is none", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_Attachment, nullptr); },
            E_POINTER)
        .With(
            "an attachment of 2 GiB", set, [](IModuleConfig& c) { return Attach(c, 0x80000000); }, E_INVALIDARG)
        .With(
            "an attachment of all sizes", set, [](IModuleConfig& c) { return Attach(c, 0xffffffff); }, E_INVALIDARG)
        .With(
            "an attachment back", get, [](IModuleConfig& c) { return GetBy(c, MKVMUX_Attachment, nullptr); }, E_FAIL)
        .With("a document type that is none", set, SetWildDocType, S_OK)
        .With(
            "no directory for the log", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_LogDirectory, nullptr); },
            S_OK)
        .With(
            "the log's directory back", get, [](IModuleConfig& c) { return GetBy(c, MKVMUX_LogDirectory, nullptr); },
            E_FAIL)
        .With(
            "a position", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_Position, nullptr); }, E_FAIL)
        .With(
            "a number of inputs", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_InputCount, nullptr); }, E_FAIL);
}

void AddOptionRows(InterfaceTable<IModuleConfig>& table) {
    const auto set = &IModuleConfig::SetValue;
    const auto get = &IModuleConfig::GetValue;
    table
        .With(
            "a profile that is none", set, [](IModuleConfig& c) { return SetNumber(c, MKVMUX_Profile, 2); },
            E_INVALIDARG)
        .With(
            "a profile back", get, [](IModuleConfig& c) { return GetAny(c, MKVMUX_Profile); }, S_OK)
        .With(
            "flags that are none", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_TrackFlags, nullptr); },
            E_POINTER)
        .With(
            "flags into nothing", get, [](IModuleConfig& c) { return GetBy(c, MKVMUX_TrackFlags, nullptr); }, E_POINTER)
        .With(
            "flags of row -1", set, [](IModuleConfig& c) { return SetFlags(c, -1, MuxFlag_On); }, E_INVALIDARG)
        .With(
            "flags of row 100", set, [](IModuleConfig& c) { return SetFlags(c, 100, MuxFlag_On); }, E_INVALIDARG)
        .With(
            "flags of the least row", set, [](IModuleConfig& c) { return SetFlags(c, kLeast, MuxFlag_On); },
            E_INVALIDARG)
        .With(
            "flags of the last row of all", set, [](IModuleConfig& c) { return SetFlags(c, kMost, MuxFlag_On); },
            E_INVALIDARG)
        .With(
            "a flag that is none", set, [](IModuleConfig& c) { return SetFlags(c, 0, 2); }, E_INVALIDARG)
        .With(
            "flags of row -1 back", get, [](IModuleConfig& c) { return GetFlags(c, -1); }, E_INVALIDARG)
        .With(
            "flags of row 100 back", get, [](IModuleConfig& c) { return GetFlags(c, 100); }, E_INVALIDARG)
        .With(
            "flags that nobody set", get, [](IModuleConfig& c) { return GetFlags(c, 99); }, S_OK)
        .With(
            "no title", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_Title, nullptr); }, S_OK)
        .With("a title of 4 GiB", set, SetMonsterTitle, E_INVALIDARG)
        .With("a title back, over rubbish", get, GetTitle, S_OK)
        .With(
            "a seed", set, [](IModuleConfig& c) { return SetNumber(c, MKVMUX_Seed, 0xffffffff); }, S_OK)
        .With(
            "a seed back", get, [](IModuleConfig& c) { return GetAny(c, MKVMUX_Seed); }, S_OK)
        .With(
            "statistics that are neither", set,
            [](IModuleConfig& c) { return SetNumber(c, MKVMUX_TrackStatistics, 2); }, E_INVALIDARG)
        .With(
            "statistics back", get, [](IModuleConfig& c) { return GetAny(c, MKVMUX_TrackStatistics); }, S_OK);
}

void AddStatisticsRows(InterfaceTable<IModuleConfig>& table) {
    const auto get = &IModuleConfig::GetValue;
    table
        .With(
            "figures into nothing", get, [](IModuleConfig& c) { return GetBy(c, MKVMUX_Statistics, nullptr); },
            E_POINTER)
        .With(
            "figures of an input into nothing", get,
            [](IModuleConfig& c) { return GetBy(c, MKVMUX_InputStatistics, nullptr); }, E_POINTER)
        .With(
            "figures into no room", get, [](IModuleConfig& c) { return GetSized(c, MKVMUX_Statistics, 0, 0); },
            E_INVALIDARG)
        .With(
            "figures into more room than there is", get,
            [](IModuleConfig& c) { return GetSized(c, MKVMUX_InputStatistics, 0xffffffff, 0); }, S_OK)
        .With(
            "figures of input -1", get, [](IModuleConfig& c) { return GetSized(c, MKVMUX_InputStatistics, 88, -1); },
            E_INVALIDARG)
        .With(
            "figures of the least input", get,
            [](IModuleConfig& c) { return GetSized(c, MKVMUX_InputStatistics, 88, kLeast); }, E_INVALIDARG)
        .With(
            "figures of the last input of all", get,
            [](IModuleConfig& c) { return GetSized(c, MKVMUX_InputStatistics, 88, kMost); }, E_INVALIDARG);
}

HRESULT SetRuleOfSize(IModuleConfig& config, UINT32 size, UINT32 times) {
    MuxNextOutputRule rule{size, times, 0, 0, 0};
    return SetBy(config, MKVMUX_NextOutputRule, &rule);
}

// Null is no output; what waits is got back as null when nothing does.
void AddNextOutputRows(InterfaceTable<IModuleConfig>& table) {
    const auto set = &IModuleConfig::SetValue;
    const auto get = &IModuleConfig::GetValue;
    table
        .With(
            "no rule", set, [](IModuleConfig& c) { return SetBy(c, MKVMUX_NextOutputRule, nullptr); }, E_POINTER)
        .With(
            "a rule without room", set, [](IModuleConfig& c) { return SetRuleOfSize(c, 31, 0); }, E_INVALIDARG)
        .With(
            "times that are neither", set, [](IModuleConfig& c) { return SetRuleOfSize(c, 0xffffffff, 2); },
            E_INVALIDARG)
        .With(
            "a rule with more room than there is", set,
            [](IModuleConfig& c) { return SetRuleOfSize(c, 0xffffffff, 0); }, S_OK)
        .With(
            "a rule into nothing", get, [](IModuleConfig& c) { return GetBy(c, MKVMUX_NextOutputRule, nullptr); },
            E_POINTER)
        .With(
            "what waits to be next", get, [](IModuleConfig& c) { return GetAny(c, MKVMUX_NextOutput); }, S_OK);
}

InterfaceTable<IModuleConfig> ConfigTable() {
    InterfaceTable<IModuleConfig> table("IModuleConfig");
    AddPersistRows(table);
    AddValueRows(table);
    AddStatisticsRows(table);
    AddOptionRows(table);
    AddNextOutputRows(table);
    table.Nulls("DescribeValue", &IModuleConfig::DescribeValue, E_NOTIMPL)
        .With(
            "DescribeValue", &IModuleConfig::DescribeValue,
            [](IModuleConfig& c) { return c.DescribeValue(&MKVMUX_DocType, OutReference<IUnknown>()); }, E_NOTIMPL)
        .Nulls("IsSupported", &IModuleConfig::IsSupported, E_NOTIMPL)
        .Nulls("SetDefaults", &IModuleConfig::SetDefaults, E_NOTIMPL)
        .Nulls("EnumValues", &IModuleConfig::EnumValues, E_NOTIMPL)
        .Nulls("CommitChanges", &IModuleConfig::CommitChanges, E_NOTIMPL)
        .Nulls("DeclineChanges", &IModuleConfig::DeclineChanges, E_NOTIMPL)
        .Nulls("SaveToRegistry", &IModuleConfig::SaveToRegistry, E_NOTIMPL)
        .Nulls("LoadFromRegistry", &IModuleConfig::LoadFromRegistry, E_NOTIMPL)
        .Nulls("Advise", &IModuleConfig::Advise, E_NOTIMPL)
        .Nulls("Unadvise", &IModuleConfig::Unadvise, E_NOTIMPL);
    return table;
}

constexpr auto kFilter = &CallerRig::FilterObject;

TEST(FilterCallers, EveryMethodOfTheFilterAnswersWhateverItIsGiven) {
    BaseFilterTable().Walk(FromRig<IBaseFilter>(IID_IBaseFilter, kFilter));
    MediaFilterTable().Walk(FromRig<IMediaFilter>(IID_IMediaFilter, kFilter));
    PersistTable().Walk(FromRig<IPersist>(IID_IPersist, kFilter));
    SetupTable().Walk(FromRig<IAMovieSetup>(IID_IAMovieSetup, kFilter));
    PagesTable().Walk(FromRig<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages, kFilter));
}

TEST(FilterCallers, EveryMethodOfConfigurationAndParametersAnswersWhateverItIsGiven) {
    PersistStreamTable().Walk(FromRig<IPersistStream>(IID_IPersistStream, kFilter));
    ConfigTable().Walk(FromRig<IModuleConfig>(IID_IModuleConfig, kFilter));
}

TEST(FilterCallers, TheFilterHasTheInterfacesOfItsTablesAndNoOther) {
    ASSERT_GT(KnownInterfaces().size(), 200u) << "the headers were read";
    const std::set<std::string> tables{
        BaseFilterTable().Name(),    MediaFilterTable().Name(), PersistTable().Name(), SetupTable().Name(),
        PersistStreamTable().Name(), PagesTable().Name(),       ConfigTable().Name(),  "IUnknown"};
    for (const CallState state : kCallStates) {
        const CallerRig rig(state);
        EXPECT_EQ(tables, InterfacesOf(*rig.FilterObject().Get()));
    }
}

TEST(FilterCallers, ATableWithoutARowOfAMethodIsNoticed) {
    InterfaceTable<IPersist> empty("IPersist");
    EXPECT_EQ(std::set<size_t>{3}, empty.SlotsThatDiffer());
    empty.Nulls("GetClassID", &IPersist::GetClassID, E_POINTER);
    EXPECT_EQ(std::set<size_t>(), empty.SlotsThatDiffer());
}

} // namespace
