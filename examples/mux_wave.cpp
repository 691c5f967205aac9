// The shortest complete program around the muxer: it puts a WAVE file into a Matroska file, with a track name, a
// language and an attachment.
//
//     mux_wave QRX_MKVMuxer.ax input.wav output.mkv cover.jpg
//
// All that it needs is the public header; strmiids, ole32, oleaut32 and uuid are linked. The output is written by the
// system's file writer, whose input pin offers IStream. (That of Wine does not: the program can say there only that the
// output cannot be connected. "./dev example input.wav output.mkv cover.jpg" brings one that does.)
#include <initguid.h> // the header's identifiers are defined here

#include <qrx_mkvmuxer.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include <dshow.h>
#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

namespace {

// What the chosen language and the other names stand for is in docs/parameters.md.
constexpr wchar_t kTrackName[] = L"Commentary";
constexpr wchar_t kLanguage[] = L"French";

void Check(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        char text[128];
        std::snprintf(text, sizeof(text), "%s: error 0x%08lX", what, static_cast<unsigned long>(hr));
        throw std::runtime_error(text);
    }
}

// Without any registration. A registered muxer is made by CoCreateInstance(CLSID_MatroskaMuxer, …).
ComPtr<IBaseFilter> LoadMuxer(const wchar_t* module) {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    const HMODULE library = LoadLibraryW(module); // stays loaded as long as the program runs
    Check(library != nullptr ? S_OK : HRESULT_FROM_WIN32(GetLastError()), "the module cannot be loaded");
    const auto getClassObject =
        reinterpret_cast<GetClassObject>(reinterpret_cast<void*>(GetProcAddress(library, "DllGetClassObject")));
    Check(getClassObject != nullptr ? S_OK : E_NOINTERFACE, "the file is no COM module");
    ComPtr<IClassFactory> factory;
    Check(getClassObject(CLSID_MatroskaMuxer, IID_IClassFactory, &factory), "the module has no muxer");
    ComPtr<IBaseFilter> muxer;
    Check(factory->CreateInstance(nullptr, IID_IBaseFilter, &muxer), "the muxer cannot be created");
    return muxer;
}

void NameTrack(IModuleConfig* config, INT32 input) {
    TrackSettings row = {};
    row.index = input;
    row.bEnabled = 1;
    row.language = SysAllocString(kLanguage);
    row.name = SysAllocString(kTrackName);
    row.trackType = MuxTrackType_Unknown;
    VARIANT value = {};
    value.byref = &row;
    const HRESULT hr = config->SetValue(&MKVMUX_TrackInfo, &value);
    SysFreeString(row.language); // the filter has made its copies
    SysFreeString(row.name);
    Check(hr, "the track cannot be named");
}

void Attach(IModuleConfig* config, const wchar_t* path) {
    std::ifstream file(path, std::ios::binary);
    Check(file.is_open() ? S_OK : E_ACCESSDENIED, "the attachment cannot be opened");
    std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
    char mimeType[] = "image/jpeg";
    MuxAttachment attachment = {};
    attachment.fileName = SysAllocString(L"cover.jpg"); // as players look for it
    attachment.mimeType = mimeType;
    attachment.dataSize = static_cast<UINT32>(bytes.size());
    attachment.data = reinterpret_cast<BYTE*>(bytes.data());
    attachment.uid = 1; // not 0, and different for each attachment
    VARIANT value = {};
    value.byref = &attachment;
    const HRESULT hr = config->SetValue(&MKVMUX_Attachment, &value);
    SysFreeString(attachment.fileName);
    Check(hr, "the file cannot be attached");
}

// The filter's first pin of this direction that is still free.
ComPtr<IPin> FreePin(IBaseFilter* filter, PIN_DIRECTION wanted) {
    ComPtr<IEnumPins> pins;
    Check(filter->EnumPins(&pins), "the filter's pins cannot be listed");
    ComPtr<IPin> pin;
    while (pins->Next(1, pin.ReleaseAndGetAddressOf(), nullptr) == S_OK) {
        PIN_DIRECTION direction;
        ComPtr<IPin> peer;
        if (SUCCEEDED(pin->QueryDirection(&direction)) && direction == wanted && FAILED(pin->ConnectedTo(&peer))) {
            return pin;
        }
    }
    throw std::runtime_error("a filter has no free pin");
}

// Stop is what finalises the file; the graph's end of streams alone does not.
void RunToTheEnd(IGraphBuilder* graph) {
    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
    Check(graph->QueryInterface(IID_IMediaControl, &control), "the graph cannot be controlled");
    Check(graph->QueryInterface(IID_IMediaEvent, &events), "the graph has no events");
    Check(control->Run(), "the streams cannot start");
    long event = 0;
    const HRESULT waited = events->WaitForCompletion(static_cast<long>(INFINITE), &event);
    Check(control->Stop(), "the file cannot be finished");
    Check(waited, "the run cannot be waited for");
    Check(event == EC_COMPLETE ? S_OK : E_ABORT, "the run did not come to its end");
}

void Mux(wchar_t** arguments) {
    ComPtr<IGraphBuilder> graph;
    Check(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph),
          "the filter graph cannot be created");
    const ComPtr<IBaseFilter> muxer = LoadMuxer(arguments[1]);
    Check(graph->AddFilter(muxer.Get(), L"Muxer"), "the muxer cannot be added");

    ComPtr<IModuleConfig> config;
    Check(muxer->QueryInterface(IID_IModuleConfig, &config), "the muxer cannot be configured");
    NameTrack(config.Get(), 0);
    Attach(config.Get(), arguments[4]);

    // In front of the muxer: the source, and whatever the graph finds to split it.
    ComPtr<IBaseFilter> source;
    Check(graph->AddSourceFilter(arguments[2], L"Source", &source), "the input cannot be opened");
    Check(graph->Connect(FreePin(source.Get(), PINDIR_OUTPUT).Get(), FreePin(muxer.Get(), PINDIR_INPUT).Get()),
          "the input cannot be connected");

    // Behind it: a file writer, whose input pin offers the stream that the muxer writes through.
    ComPtr<IBaseFilter> writer;
    ComPtr<IFileSinkFilter> file;
    Check(CoCreateInstance(CLSID_FileWriter, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &writer),
          "the file writer cannot be created");
    Check(writer->QueryInterface(IID_IFileSinkFilter, &file), "the file writer takes no name");
    Check(file->SetFileName(arguments[3], nullptr), "the output cannot be created");
    Check(graph->AddFilter(writer.Get(), L"File writer"), "the file writer cannot be added");
    Check(graph->ConnectDirect(FreePin(muxer.Get(), PINDIR_OUTPUT).Get(), FreePin(writer.Get(), PINDIR_INPUT).Get(),
                               nullptr),
          "the output cannot be connected");

    RunToTheEnd(graph.Get());
}

} // namespace

int wmain(int count, wchar_t** arguments) {
    if (count != 5) {
        std::fprintf(stderr, "usage: mux_wave QRX_MKVMuxer.ax INPUT.wav OUTPUT.mkv COVER.jpg\n");
        return 2;
    }
    if (FAILED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {
        return 2;
    }
    int status = 0;
    try {
        Mux(arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mux_wave: %s\n", error.what());
        status = 2;
    }
    CoUninitialize();
    return status;
}
