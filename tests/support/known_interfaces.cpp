#include "tests/support/known_interfaces.h"

#include <gtest/gtest.h>

#include <cstdio>

#include <qrx_mkvmuxer.h>

namespace test_support {

namespace {

constexpr struct {
    const char* name;
    const char* iid;
} kDeclared[] = {
#include "declared_interfaces.h" // made from the headers when the build is configured
};

IID FromText(const char* text) {
    unsigned data1 = 0;
    unsigned short data2 = 0;
    unsigned short data3 = 0;
    unsigned char tail[8] = {};
    EXPECT_EQ(11, std::sscanf(text, "%8x-%4hx-%4hx-%2hhx%2hhx-%2hhx%2hhx%2hhx%2hhx%2hhx%2hhx", &data1, &data2, &data3,
                              &tail[0], &tail[1], &tail[2], &tail[3], &tail[4], &tail[5], &tail[6], &tail[7]))
        << text;
    return {data1, data2, data3, {tail[0], tail[1], tail[2], tail[3], tail[4], tail[5], tail[6], tail[7]}};
}

} // namespace

const std::vector<KnownInterface>& KnownInterfaces() {
    static const std::vector<KnownInterface> all = [] {
        // Our own, and one that not every toolchain's header declares in the usual way.
        std::vector<KnownInterface> known{{"IModuleConfig", IID_IModuleConfig}, {"IMediaPosition", IID_IMediaPosition}};
        for (const auto& declared : kDeclared) {
            known.push_back({declared.name, FromText(declared.iid)});
        }
        return known;
    }();
    return all;
}

std::set<std::string> InterfacesOf(IUnknown& object) {
    std::set<std::string> names;
    for (const KnownInterface& known : KnownInterfaces()) {
        IUnknown* answer = &object; // rubbish, for one that does not set it
        const HRESULT hr = object.QueryInterface(known.iid, reinterpret_cast<void**>(&answer));
        if (FAILED(hr)) {
            EXPECT_EQ(nullptr, answer) << known.name;
            continue;
        }
        EXPECT_NE(nullptr, answer) << known.name;
        if (answer != nullptr) {
            answer->Release();
            names.insert(known.name);
        }
    }
    return names;
}

} // namespace test_support
