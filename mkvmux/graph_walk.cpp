#include "mkvmux/graph_walk.h"

#include "dshow/am_media_type.h"

namespace mkvmux {

std::vector<win::ComPtr<IPin>> PinsOf(IBaseFilter* filter, PIN_DIRECTION direction) {
    std::vector<win::ComPtr<IPin>> pins;
    win::ComPtr<IEnumPins> enumerator;
    if (FAILED(filter->EnumPins(enumerator.Put()))) {
        return pins;
    }
    win::ComPtr<IPin> pin;
    while (enumerator->Next(1, pin.Put(), nullptr) == S_OK) {
        PIN_DIRECTION itsDirection = PINDIR_INPUT;
        if (SUCCEEDED(pin->QueryDirection(&itsDirection)) && itsDirection == direction) {
            pins.push_back(pin);
        }
    }
    return pins;
}

std::vector<CMediaType> TypesOf(IPin* pin) {
    std::vector<CMediaType> types;
    win::ComPtr<IEnumMediaTypes> enumerator;
    if (FAILED(pin->EnumMediaTypes(enumerator.Put())) || !enumerator) {
        return types;
    }
    AM_MEDIA_TYPE* type = nullptr;
    while (enumerator->Next(1, &type, nullptr) == S_OK) {
        types.emplace_back(*type);
        DeleteMediaType(type);
    }
    return types;
}

bool IsConnected(IPin* pin) {
    win::ComPtr<IPin> peer;
    return SUCCEEDED(pin->ConnectedTo(peer.Put())) && peer;
}

std::wstring NameOf(IPin* pin) {
    PIN_INFO info{};
    if (FAILED(pin->QueryPinInfo(&info))) {
        return {};
    }
    win::ComPtr<IBaseFilter> filter;
    filter.Attach(info.pFilter);
    return info.achName;
}

win::ComPtr<IPin> FreePinOf(IBaseFilter* filter, PIN_DIRECTION direction) {
    for (const win::ComPtr<IPin>& pin : PinsOf(filter, direction)) {
        if (!IsConnected(pin.Get())) {
            return pin;
        }
    }
    return {};
}

} // namespace mkvmux
