#include "tests/support/pin_lookup.h"

namespace test_support {

std::vector<win::ComPtr<IPin>> PinsOf(IBaseFilter* filter) {
    std::vector<win::ComPtr<IPin>> pins;
    win::ComPtr<IEnumPins> enumerator;
    if (FAILED(filter->EnumPins(enumerator.Put()))) {
        return pins;
    }
    win::ComPtr<IPin> pin;
    while (enumerator->Next(1, pin.Put(), nullptr) == S_OK) {
        pins.push_back(pin);
    }
    return pins;
}

win::ComPtr<IPin> PinNamed(IBaseFilter* filter, WideStringView name) {
    for (const win::ComPtr<IPin>& pin : PinsOf(filter)) {
        if (NameOf(pin.Get()) == name) {
            return pin;
        }
    }
    return {};
}

WideString NameOf(IPin* pin) {
    PIN_INFO info{};
    if (FAILED(pin->QueryPinInfo(&info))) {
        return {};
    }
    if (info.pFilter != nullptr) {
        info.pFilter->Release();
    }
    return info.achName;
}

} // namespace test_support
