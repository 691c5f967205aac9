// The filter's persisted configuration. What can be loaded must be saved again, and load again as the same.
#include <cstddef>
#include <cstdint>

#include "fuzz/require.h"
#include "matroska_muxer/matroska_muxer.h"
#include "tests/support/memory_stream.h"
#include "win/com_ptr.h"

namespace {

struct Filter {
    Filter() {
        HRESULT hr = S_OK;
        CUnknown* const object = CMatroskaMuxer::CreateInstance(nullptr, &hr);
        object->NonDelegatingAddRef();
        (void)object->NonDelegatingQueryInterface(IID_IBaseFilter, reference.PutVoid());
        object->NonDelegatingRelease();
        muxer = static_cast<CMatroskaMuxer*>(object);
    }

    win::ComPtr<IBaseFilter> reference;
    CMatroskaMuxer* muxer = nullptr;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
    const Filter first;
    test_support::MemoryStream stream;
    stream.SetRecording(false);
    stream.SetBytes({data, data + size});
    if (FAILED(first.muxer->Load(&stream))) {
        return 0;
    }
    test_support::MemoryStream saved;
    saved.SetRecording(false);
    const Filter second;
    fuzz::Require(SUCCEEDED(first.muxer->Save(&saved, TRUE)));
    saved.SetBytes(saved.Bytes());
    fuzz::Require(SUCCEEDED(second.muxer->Load(&saved)));
    test_support::MemoryStream again;
    again.SetRecording(false);
    fuzz::Require(SUCCEEDED(second.muxer->Save(&again, TRUE)));
    fuzz::Require(again.Bytes() == saved.Bytes());
    return 0;
}
