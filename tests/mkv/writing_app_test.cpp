// The name that the file gives to the program that wrote it, with and without a version resource.
#include <cstring>

#include "tests/mkv/writer_fixture.h"
#include "win/module_version.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

class WritingAppTest : public WriterTest {};

#ifdef QRX_NATIVE

constexpr WORD kVersionResourceType = 16;
constexpr size_t kFixedInfoOffset = 40; // behind the block's lengths and its key

std::vector<BYTE> VersionResource(DWORD mostSignificant, DWORD leastSignificant) {
    VS_FIXEDFILEINFO info{};
    info.dwSignature = 0xfeef04bd;
    info.dwFileVersionMS = mostSignificant;
    info.dwFileVersionLS = leastSignificant;
    std::vector<BYTE> resource(kFixedInfoOffset + sizeof(info));
    std::memcpy(resource.data() + kFixedInfoOffset, &info, sizeof(info));
    return resource;
}

TEST_F(WritingAppTest, NamesTheFourNumbersOfTheFileVersion) {
    const auto bytes = VersionResource(0x00010002, 0x00030004);
    const native::ScopedResource resource(kVersionResourceType, 1, bytes.data(), bytes.size());
    RegisterAudio();
    Open();
    EXPECT_EQ(File().writingApp, "Quorlex Matroska Muxer Version 1.2.3.4");
}

TEST_F(WritingAppTest, TheLongestVersionStillFitsIntoItsPlace) {
    const auto bytes = VersionResource(0xffffffff, 0xffffffff);
    const native::ScopedResource resource(kVersionResourceType, 1, bytes.data(), bytes.size());
    RegisterAudio();
    Open();
    EXPECT_EQ(File().writingApp, "Quorlex Matroska Muxer Version 65535.65535.65535.65535");
}

#endif

TEST_F(WritingAppTest, EndsWithTheBlankWithoutAVersionResource) {
    ASSERT_EQ(win::ModuleVersionText(), ""); // this program has none
    RegisterAudio();
    Open();
    EXPECT_EQ(File().writingApp, "Quorlex Matroska Muxer ");
}

} // namespace
