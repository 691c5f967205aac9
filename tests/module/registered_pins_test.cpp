// What the module tells the filter mapper, number by number.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include "tests/module/fake_filter_mapper.h"
#include "tests/module/loaded_module.h"

namespace {

constexpr GUID kVideo{0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr GUID kAudio{0x73647561, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
constexpr GUID kStream{0xE436EB83, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
constexpr GUID kAny{};

void ExpectPin(const RegisteredPin& pin, const WCHAR* name, BOOL output, BOOL many,
               const std::vector<std::pair<GUID, GUID>>& types) {
    EXPECT_EQ(WideString(name), pin.name);
    EXPECT_EQ(FALSE, pin.rendered);
    EXPECT_EQ(output, pin.output);
    EXPECT_EQ(FALSE, pin.zero);
    EXPECT_EQ(many, pin.many);
    EXPECT_EQ(kAny, pin.connectsToFilter);
    EXPECT_FALSE(pin.connectsToPin);
    EXPECT_EQ(types, pin.types);
}

TEST(RegisteredPins, TheMapperIsToldTwoPinsWithTheirFlagsAndTypesOnceAClass) {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    {
        const FakeFilterMapper mapper;
        const LoadedModule module;
        ASSERT_EQ(S_OK, module.RegisterServer());
        EXPECT_EQ(S_OK, module.UnregisterServer());
        ASSERT_EQ(3u, mapper.Filters().size());
        for (const RegisteredFilter& filter : mapper.Filters()) {
            EXPECT_EQ(CLSID_MatroskaMuxer, filter.clsid);
            EXPECT_EQ(WideString(OLESTR("Quorlex Matroska Muxer")), filter.name);
            EXPECT_FALSE(filter.hasMoniker);
            EXPECT_FALSE(filter.hasCategory);
            EXPECT_FALSE(filter.hasInstance);
            EXPECT_EQ(1u, filter.version);
            EXPECT_EQ(0x200000u, filter.merit);
            ASSERT_EQ(2u, filter.pins.size());
            ExpectPin(filter.pins[0], OLESTR("Input"), FALSE, TRUE, {{kVideo, kAny}, {kAudio, kAny}});
            ExpectPin(filter.pins[1], OLESTR("Output"), TRUE, FALSE, {{kStream, kAny}});
        }
    }
    CoUninitialize();
}

} // namespace
