// Callers that cannot be trusted: every method of the pins, of their enumerators and of the class factory with nothing,
// with rubbish, and out of turn.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "dshow/am_media_type.h"
#include "dshow/class_factory.h"
#include "dshow/factory_template.h"
#include "tests/matroska_muxer/caller_rig.h"
#include "tests/support/fake_media_sample.h"
#include "tests/support/known_interfaces.h"

using namespace test_support;

namespace {

constexpr HRESULT kFailed = -1; // a bare -1, as the mux core answers
constexpr INT64 kNever = std::numeric_limits<INT64>::min();
constexpr auto kInput = &CallerRig::InputObject;
constexpr auto kOutput = &CallerRig::OutputObject;

// ---- IPin ----------------------------------------------------------------------------------------------------------

HRESULT AskInfo(IPin& pin) {
    PIN_INFO info{};
    const HRESULT hr = pin.QueryPinInfo(&info);
    EXPECT_NE(nullptr, info.pFilter);
    if (info.pFilter != nullptr) {
        info.pFilter->Release();
    }
    return hr;
}

HRESULT AskType(IPin& pin) {
    AM_MEDIA_TYPE type;
    std::memset(&type, 0x5b, sizeof(type)); // the callee overwrites it, whatever it answers
    const HRESULT hr = pin.ConnectionMediaType(&type);
    EXPECT_EQ(type.cbFormat == 0, type.pbFormat == nullptr);
    FreeMediaType(type);
    return hr;
}

HRESULT AskDirection(IPin& pin) {
    PIN_DIRECTION direction{};
    return pin.QueryDirection(&direction);
}

// A type that says that it has a format block and has none.
MediaTypeValue TypeWithoutItsBlock() {
    MediaTypeValue type(MEDIATYPE_Video, mediasubtype::kVp8, FORMAT_VideoInfo);
    type->cbFormat = 0x7fffffff;
    return type;
}

HRESULT AcceptsTypeWithoutItsBlock(IPin& pin) {
    MediaTypeValue type = TypeWithoutItsBlock();
    const HRESULT hr = pin.QueryAccept(&type.Get());
    type->cbFormat = 0;
    return hr;
}

HRESULT AcceptsRubbish(IPin& pin) {
    AM_MEDIA_TYPE type;
    std::memset(&type, 0x5b, sizeof(type));
    type.pUnk = nullptr;
    type.cbFormat = 0;
    type.pbFormat = nullptr;
    return pin.QueryAccept(&type);
}

HRESULT ConnectToItself(IPin& pin) {
    return pin.Connect(&pin, nullptr);
}

HRESULT ReceiveItself(IPin& pin) {
    const MediaTypeValue type = VideoInfoType(mediasubtype::kVp8);
    return pin.ReceiveConnection(&pin, &type.Get());
}

HRESULT ReceiveWithoutAType(IPin& pin) {
    FakeUpstreamPin peer(VideoInfoType(mediasubtype::kVp8));
    return pin.ReceiveConnection(&peer, nullptr);
}

// What both directions answer alike. Connecting is refused for what the pin is, or for what it does now; `offers`: what
// the pin answers that connects with itself and first looks for a type that it proposes.
InterfaceTable<IPin> PinTable(HRESULT offers, HRESULT flushing, Answers ended, HRESULT acceptsRubbish) {
    const Answers refused(VFW_E_INVALID_DIRECTION, VFW_E_ALREADY_CONNECTED, VFW_E_ALREADY_CONNECTED);
    InterfaceTable<IPin> table("IPin");
    table.Nulls("Connect", &IPin::Connect, E_POINTER)
        .With("Connect with itself", &IPin::Connect, ConnectToItself,
              {offers, VFW_E_ALREADY_CONNECTED, VFW_E_ALREADY_CONNECTED})
        .Nulls("ReceiveConnection", &IPin::ReceiveConnection, E_POINTER)
        .With("ReceiveConnection without a type", &IPin::ReceiveConnection, ReceiveWithoutAType, E_POINTER)
        .With("ReceiveConnection of itself", &IPin::ReceiveConnection, ReceiveItself, refused)
        .Nulls("Disconnect", &IPin::Disconnect, {S_FALSE, S_OK, VFW_E_NOT_STOPPED})
        .Nulls("ConnectedTo", &IPin::ConnectedTo, E_POINTER)
        .With("ConnectedTo", &IPin::ConnectedTo, [](IPin& p) { return p.ConnectedTo(OutReference<IPin>()); },
              {VFW_E_NOT_CONNECTED, S_OK, S_OK})
        .Nulls("ConnectionMediaType", &IPin::ConnectionMediaType, E_POINTER)
        .With("ConnectionMediaType", &IPin::ConnectionMediaType, AskType, {VFW_E_NOT_CONNECTED, S_OK, S_OK})
        .Nulls("QueryPinInfo", &IPin::QueryPinInfo, E_POINTER)
        .With("QueryPinInfo", &IPin::QueryPinInfo, AskInfo, S_OK)
        .Nulls("QueryDirection", &IPin::QueryDirection, E_POINTER)
        .With("QueryDirection", &IPin::QueryDirection, AskDirection, S_OK)
        .Nulls("QueryId", &IPin::QueryId, E_POINTER)
        .With(
            "QueryId", &IPin::QueryId, [](IPin& p) { return p.QueryId(OutText()); }, S_OK)
        .Nulls("QueryAccept", &IPin::QueryAccept, E_POINTER)
        .With("QueryAccept of a type without its block", &IPin::QueryAccept, AcceptsTypeWithoutItsBlock, S_OK)
        .With("QueryAccept of rubbish", &IPin::QueryAccept, AcceptsRubbish, acceptsRubbish)
        .Nulls("EnumMediaTypes", &IPin::EnumMediaTypes, E_POINTER)
        .With(
            "EnumMediaTypes", &IPin::EnumMediaTypes,
            [](IPin& p) { return p.EnumMediaTypes(OutReference<IEnumMediaTypes>()); }, S_OK)
        .Nulls("QueryInternalConnections", &IPin::QueryInternalConnections, E_NOTIMPL)
        .Nulls("EndOfStream", &IPin::EndOfStream, ended)
        .With(
            "EndOfStream twice", &IPin::EndOfStream,
            [](IPin& p) {
                (void)p.EndOfStream();
                return p.EndOfStream();
            },
            ended)
        .Nulls("BeginFlush", &IPin::BeginFlush, flushing)
        .With(
            "BeginFlush twice", &IPin::BeginFlush,
            [](IPin& p) {
                (void)p.BeginFlush();
                return p.BeginFlush();
            },
            flushing)
        .Nulls("EndFlush", &IPin::EndFlush, flushing) // without a beginning
        .Nulls("NewSegment", &IPin::NewSegment, S_OK)
        .With(
            "NewSegment without a rate", &IPin::NewSegment,
            [](IPin& p) { return p.NewSegment(kNever, kNever, std::numeric_limits<double>::quiet_NaN()); }, S_OK);
    return table;
}

InterfaceTable<IPin> InputTable() {
    return PinTable(VFW_E_NO_ACCEPTABLE_TYPES, S_OK, {kFailed, kFailed, S_OK}, S_FALSE);
}

// Calls that belong to inputs are unexpected here.
InterfaceTable<IPin> OutputTable() {
    return PinTable(VFW_E_INVALID_DIRECTION, E_UNEXPECTED, E_UNEXPECTED, S_OK);
}

// ---- IMemInputPin --------------------------------------------------------------------------------------------------

HRESULT Requirements(IMemInputPin& pin) {
    ALLOCATOR_PROPERTIES properties{};
    return pin.GetAllocatorRequirements(&properties);
}

HRESULT ReceiveSamples(IMemInputPin& pin, IMediaSample** samples, LONG count, LONG expected) {
    LONG processed = -7;
    const HRESULT hr = pin.ReceiveMultiple(samples, count, &processed);
    EXPECT_EQ(expected, processed);
    return hr;
}

HRESULT ReceiveNoSample(IMemInputPin& pin) {
    IMediaSample* none[] = {nullptr};
    return ReceiveSamples(pin, none, 1, 0);
}

HRESULT ReceiveFewerThanNone(IMemInputPin& pin) {
    FakeMediaSample sample(std::vector<BYTE>(10));
    IMediaSample* samples[] = {&sample};
    return ReceiveSamples(pin, samples, std::numeric_limits<LONG>::min(), 0);
}

HRESULT ReceiveLess(IMemInputPin& pin) {
    FakeMediaSample sample(std::vector<BYTE>(10));
    sample.WithTimes(0, 10).WithClaimedLength(std::numeric_limits<LONG>::min());
    return pin.Receive(&sample);
}

HRESULT ReceiveWithoutBytes(IMemInputPin& pin) {
    FakeMediaSample sample(std::vector<BYTE>(10));
    sample.WithTimes(kNever, std::numeric_limits<INT64>::max()).WithPointerFailure(E_FAIL);
    return pin.Receive(&sample);
}

InterfaceTable<IMemInputPin> MemInputTable() {
    // A sample is taken while streaming alone.
    const Answers taken(S_FALSE, S_FALSE, S_OK);
    InterfaceTable<IMemInputPin> table("IMemInputPin");
    table.Nulls("GetAllocator", &IMemInputPin::GetAllocator, E_POINTER)
        .Nulls("NotifyAllocator", &IMemInputPin::NotifyAllocator, E_POINTER)
        .Nulls("GetAllocatorRequirements", &IMemInputPin::GetAllocatorRequirements, E_POINTER)
        .With("GetAllocatorRequirements", &IMemInputPin::GetAllocatorRequirements, Requirements, E_NOTIMPL)
        .Nulls("Receive", &IMemInputPin::Receive, E_POINTER)
        .With("Receive of less than nothing", &IMemInputPin::Receive, ReceiveLess, taken)
        .With("Receive of a sample without bytes", &IMemInputPin::Receive, ReceiveWithoutBytes, taken)
        .Nulls("ReceiveMultiple", &IMemInputPin::ReceiveMultiple, E_POINTER)
        .With(
            "ReceiveMultiple without samples", &IMemInputPin::ReceiveMultiple,
            [](IMemInputPin& p) { return ReceiveSamples(p, nullptr, 1, 0); }, E_POINTER)
        .With("ReceiveMultiple of no sample", &IMemInputPin::ReceiveMultiple, ReceiveNoSample, E_POINTER)
        .With("ReceiveMultiple of fewer than none", &IMemInputPin::ReceiveMultiple, ReceiveFewerThanNone, S_OK)
        .Nulls("ReceiveCanBlock", &IMemInputPin::ReceiveCanBlock, S_FALSE); // as the sink says
    return table;
}

InterfaceTable<IQualityControl> QualityTable(HRESULT notified) {
    InterfaceTable<IQualityControl> table("IQualityControl");
    table.Nulls("Notify", &IQualityControl::Notify, notified)
        .With(
            "Notify of rubbish", &IQualityControl::Notify,
            [](IQualityControl& q) {
                Quality rubbish;
                std::memset(&rubbish, 0x5b, sizeof(rubbish));
                return q.Notify(nullptr, rubbish);
            },
            notified)
        .Nulls("SetSink", &IQualityControl::SetSink, S_OK); // none is an answer
    return table;
}

TEST(PinCallers, EveryMethodOfAnInputAnswersWhateverItIsGiven) {
    InputTable().Walk(FromRig<IPin>(IID_IPin, kInput));
    MemInputTable().Walk(FromRig<IMemInputPin>(IID_IMemInputPin, kInput));
    QualityTable(S_OK).Walk(FromRig<IQualityControl>(IID_IQualityControl, kInput));
}

TEST(PinCallers, EveryMethodOfTheOutputAnswersWhateverItIsGiven) {
    OutputTable().Walk(FromRig<IPin>(IID_IPin, kOutput));
    QualityTable(E_NOTIMPL).Walk(FromRig<IQualityControl>(IID_IQualityControl, kOutput));
}

TEST(PinCallers, ThePinsHaveTheInterfacesOfTheirTablesAndNoOther) {
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED)));
    const std::set<std::string> both{"IPin", "IQualityControl", "IUnknown"};
    for (const CallState state : kCallStates) {
        const CallerRig rig(state);
        std::set<std::string> input = both;
        input.insert(MemInputTable().Name());
        EXPECT_EQ(input, InterfacesOf(*rig.InputObject().Get()));
        std::set<std::string> output = both;
#ifndef QRX_NATIVE // the system's object, which answers for these two; this lane has none
        output.insert({"IMediaPosition", "IMediaSeeking"});
#endif
        EXPECT_EQ(output, InterfacesOf(*rig.OutputObject().Get()));
    }
    CoUninitialize();
}

// ---- Enumerators ---------------------------------------------------------------------------------------------------

void FreeItem(IUnknown* item) {
    item->Release();
}

void FreeItem(AM_MEDIA_TYPE* item) {
    DeleteMediaType(item);
}

template <typename Interface, typename Item>
HRESULT NextOf(Interface& enumerator, ULONG count, ULONG expected) {
    Item* items[4] = {};
    ULONG fetched = 99;
    const HRESULT hr = enumerator.Next(count, items, &fetched);
    EXPECT_EQ(expected, fetched);
    for (Item* const item : items) {
        if (item != nullptr) {
            FreeItem(item);
        }
    }
    return hr;
}

// Two at once, and nobody who is told how many came.
template <typename Interface, typename Item>
HRESULT NextUncounted(Interface& enumerator) {
    Item* items[2] = {};
    return enumerator.Next(2, items, nullptr);
}

template <typename Interface, typename Item>
HRESULT NextIntoNothing(Interface& enumerator) {
    ULONG fetched = 99;
    const HRESULT hr = enumerator.Next(1, nullptr, &fetched);
    EXPECT_EQ(0u, fetched);
    return hr;
}

template <typename Interface>
HRESULT SkipThem(Interface& enumerator, ULONG count) {
    return enumerator.Skip(count);
}

// Of one that has three or fewer, of which `items` are there.
template <typename Interface, typename Item>
InterfaceTable<Interface> EnumeratorTable(const char* name, ULONG items, Answers next, Answers all) {
    InterfaceTable<Interface> table(name);
    table.Nulls("Next", &Interface::Next, E_POINTER)
        .With("Next into nothing", &Interface::Next, NextIntoNothing<Interface, Item>, E_POINTER)
        .With("Next uncounted", &Interface::Next, NextUncounted<Interface, Item>, E_INVALIDARG)
        .With(
            "Next of none", &Interface::Next, [](Interface& e) { return NextOf<Interface, Item>(e, 0, 0); }, S_OK)
        .With(
            "Next", &Interface::Next,
            [items](Interface& e) { return NextOf<Interface, Item>(e, 1, items == 0 ? 0 : 1); }, next)
        .Nulls("Skip", &Interface::Skip, S_OK)
        .With(
            "Skip of all that can be", &Interface::Skip, [](Interface& e) { return SkipThem(e, 0xffffffff); }, S_FALSE)
        .With(
            "Skip of all that can be counted", &Interface::Skip, [](Interface& e) { return SkipThem(e, 0x7fffffff); },
            S_FALSE)
        .With(
            "Skip of those that are there", &Interface::Skip, [items](Interface& e) { return SkipThem(e, items); }, all)
        .Nulls("Reset", &Interface::Reset, S_OK)
        .Nulls("Clone", &Interface::Clone, E_POINTER)
        .With(
            "Clone", &Interface::Clone, [](Interface& e) { return e.Clone(OutReference<Interface>()); }, S_OK);
    return table;
}

InterfaceTable<IEnumPins> PinsTable() {
    return EnumeratorTable<IEnumPins, IPin>("IEnumPins", 2, S_OK, S_OK);
}

// An input proposes no type, the output one.
InterfaceTable<IEnumMediaTypes> TypesTable(ULONG types) {
    return EnumeratorTable<IEnumMediaTypes, AM_MEDIA_TYPE>("IEnumMediaTypes", types, types == 0 ? S_FALSE : S_OK, S_OK);
}

template <typename Object>
InterfaceTable<IEnumMediaTypes>::Bring TypesOf(Object object) {
    return [object](CallState state, const std::function<void(IEnumMediaTypes&)>& call) {
        const CallerRig rig(state);
        win::ComPtr<IEnumMediaTypes> types;
        ASSERT_EQ(S_OK, (rig.*object)().template Query<IPin>(IID_IPin)->EnumMediaTypes(types.Put()));
        EXPECT_EQ(std::set<std::string>({"IEnumMediaTypes", "IUnknown"}), InterfacesOf(*types.Get()));
        call(*types.Get());
    };
}

TEST(PinCallers, EveryMethodOfTheEnumeratorsAnswersWhateverItIsGiven) {
    PinsTable().Walk([](CallState state, const std::function<void(IEnumPins&)>& call) {
        const CallerRig rig(state);
        win::ComPtr<IEnumPins> pins;
        ASSERT_EQ(S_OK, rig.Filter()->EnumPins(pins.Put()));
        EXPECT_EQ(std::set<std::string>({"IEnumPins", "IUnknown"}), InterfacesOf(*pins.Get()));
        call(*pins.Get());
    });
    TypesTable(0).Walk(TypesOf(kInput));
    TypesTable(1).Walk(TypesOf(kOutput));
}

// ---- The class factory ---------------------------------------------------------------------------------------------

constexpr CFactoryTemplate kTemplate{OLESTR("muxer"), &CLSID_MatroskaMuxer, CMatroskaMuxer::CreateInstance, nullptr,
                                     nullptr};

InterfaceTable<IClassFactory> FactoryTable() {
    InterfaceTable<IClassFactory> table("IClassFactory");
    table.Nulls("CreateInstance", &IClassFactory::CreateInstance, E_POINTER)
        .With(
            "CreateInstance of what it is not", &IClassFactory::CreateInstance,
            [](IClassFactory& f) { return f.CreateInstance(nullptr, IID_IStream, OutReference<IStream>()); },
            E_NOINTERFACE)
        .With(
            "CreateInstance inside another object, asked for more than IUnknown", &IClassFactory::CreateInstance,
            [](IClassFactory& f) { return f.CreateInstance(&f, IID_IBaseFilter, OutReference<IBaseFilter>()); },
            E_NOINTERFACE)
        .Nulls("LockServer", &IClassFactory::LockServer, S_OK)
        .With(
            "LockServer with a wild value", &IClassFactory::LockServer,
            [](IClassFactory& f) { return f.LockServer(-1) | f.LockServer(FALSE) | f.LockServer(FALSE); }, S_OK);
    return table;
}

TEST(PinCallers, EveryMethodOfTheClassFactoryAnswersWhateverItIsGiven) {
    FactoryTable().Walk([](CallState, const std::function<void(IClassFactory&)>& call) {
        const LONG before = CBaseObject::ObjectsActive();
        win::ComPtr<IClassFactory> factory(new CClassFactory(&kTemplate));
        EXPECT_EQ(std::set<std::string>({"IClassFactory", "IUnknown"}), InterfacesOf(*factory.Get()));
        call(*factory.Get());
        EXPECT_FALSE(CClassFactory::IsLocked());
        factory.Reset();
        EXPECT_EQ(before, CBaseObject::ObjectsActive());
    });
}

} // namespace
