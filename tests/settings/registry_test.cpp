// The registry back ends through their interfaces, and the bytes that reach the registry.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "settings/reg_load.h"
#include "settings/reg_save.h"
#include "tests/settings/scratch_key.h"
#include "tests/support/golden_file.h"

namespace {

constexpr std::int32_t kFallback = -77;

class RegistryTest : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(m_save.open_key(m_scratch.Path(), HKEY_CURRENT_USER));
        ASSERT_TRUE(m_load.open_key(m_scratch.Path(), HKEY_CURRENT_USER));
    }

    ScratchKey m_scratch;
    reg_save_t m_save{HKEY_CURRENT_USER};
    reg_load_t m_load{HKEY_CURRENT_USER};
};

TEST_F(RegistryTest, AStringIsStoredWithoutTerminatorAndReadBackTheSame) {
    ASSERT_TRUE(m_save.save_string(L"name", L"caf\u00e9"));
    EXPECT_EQ((RawValue{REG_SZ, BytesOf(L"caf\u00e9")}), m_scratch.Read(L"name"));
    EXPECT_EQ(8U, m_load.value_size(L"name"));
    EXPECT_EQ(L"caf\u00e9", m_load.load_string(L"name", L"default"));
}

TEST_F(RegistryTest, AnInt64IsEightBytesOfBinaryAndLoadsAsInt32ByDefaultOnly) {
    ASSERT_TRUE(m_save.save_int64(L"big", 0x0102030405060708));
    EXPECT_EQ((RawValue{REG_BINARY, {8, 7, 6, 5, 4, 3, 2, 1}}), m_scratch.Read(L"big"));
    EXPECT_EQ(kFallback, m_load.load_int32(L"big", kFallback));
    EXPECT_EQ(0x0102030405060708, m_load.load_int64(L"big", 0));
}

TEST_F(RegistryTest, DeletingASectionWithNestedSubkeysRemovesTheWholeTree) {
    reg_save_t nested(HKEY_CURRENT_USER);
    for (const wchar_t* const name : {L"a\\b\\c", L"a\\b\\d", L"a\\e", L"stays"}) {
        ASSERT_TRUE(nested.open_key(m_scratch.Section(name), HKEY_CURRENT_USER));
        ASSERT_TRUE(nested.save_int32(L"v", 1));
    }
    EXPECT_TRUE(m_save.delete_section(L"\\" + m_scratch.Section(L"a")));
    EXPECT_FALSE(m_scratch.HasSubkey(L"a"));
    EXPECT_TRUE(m_scratch.HasSubkey(L"stays"));
    EXPECT_FALSE(m_save.delete_section(m_scratch.Section(L"a")));
}

TEST_F(RegistryTest, TheRootItselfIsNeverDeleted) {
    reg_save_t below(m_scratch.Get());
    ASSERT_TRUE(below.open_key(L"kept", m_scratch.Get()));
    for (const wchar_t* const path : {L"", L"\\", L"\\\\", L"\\\\\\"}) {
        EXPECT_FALSE(below.delete_section(path));
    }
    EXPECT_TRUE(m_scratch.HasSubkey(L"kept"));
}

TEST_F(RegistryTest, ASectionPathMayBeginWithOneSeparator) {
    EXPECT_TRUE(m_save.open_key(L"\\" + m_scratch.Section(L"new\\deep"), HKEY_CURRENT_USER));
    EXPECT_TRUE(m_scratch.HasSubkey(L"new\\deep"));
    EXPECT_TRUE(m_load.open_key(L"\\" + m_scratch.Section(L"new"), HKEY_CURRENT_USER));
    EXPECT_EQ(1U, m_load.child_count());
}

TEST_F(RegistryTest, ALoaderCreatesNothing) {
    EXPECT_FALSE(m_load.open_key(m_scratch.Section(L"missing"), HKEY_CURRENT_USER));
    EXPECT_FALSE(m_scratch.HasSubkey(L"missing"));
    EXPECT_EQ(0U, m_load.child_count()); // the failed open closed what was open
}

TEST_F(RegistryTest, TheRootPassedIsOpenedBelowAndNotTheOneGivenAtConstruction) {
    ASSERT_TRUE(m_save.open_key(L"sub", m_scratch.Get()));
    EXPECT_TRUE(m_scratch.HasSubkey(L"sub"));
    reg_load_t load(m_scratch.Get());
    EXPECT_TRUE(load.open_key(L"sub", nullptr));
}

TEST_F(RegistryTest, WithoutARootAnOpenIsBelowTheOneGivenAtConstructionWhateverWasOpenBefore) {
    ASSERT_TRUE(m_save.open_key(L"sub", m_scratch.Get()));
    ASSERT_TRUE(m_save.open_key(m_scratch.Section(L"other"), nullptr));
    EXPECT_TRUE(m_scratch.HasSubkey(L"other"));
    ASSERT_TRUE(m_load.open_key(L"sub", m_scratch.Get()));
    EXPECT_TRUE(m_load.open_key(m_scratch.Section(L"other"), nullptr));
}

TEST_F(RegistryTest, DeletingIsBelowTheRootOfTheLastOpen) {
    ASSERT_TRUE(m_save.open_key(L"sub", m_scratch.Get()));
    EXPECT_TRUE(m_save.delete_section(L"sub"));
    EXPECT_FALSE(m_scratch.HasSubkey(L"sub"));
    ASSERT_TRUE(m_save.open_key(m_scratch.Section(L"sub"), nullptr));
    EXPECT_TRUE(m_save.delete_section(m_scratch.Section(L"sub")));
    EXPECT_FALSE(m_scratch.HasSubkey(L"sub"));
}

TEST_F(RegistryTest, AnEmptyPathOpensTheRootWithoutTakingItOver) {
    ASSERT_TRUE(m_save.save_int32(L"v", 5));
    ASSERT_TRUE(m_load.open_key(L"", m_scratch.Get()));
    EXPECT_EQ(5, m_load.load_int32(L"v", kFallback));
    m_load.close();
    EXPECT_TRUE(m_scratch.Read(L"v").has_value()); // the handle passed is still open
}

TEST_F(RegistryTest, ChildrenAreCountedAndNamed) {
    for (const wchar_t* const name : {L"one", L"two words", L"three"}) {
        reg_save_t child(HKEY_CURRENT_USER);
        ASSERT_TRUE(child.open_key(m_scratch.Section(name), HKEY_CURRENT_USER));
    }
    ASSERT_TRUE(m_save.save_int32(L"a value is no child", 1));
    EXPECT_EQ(3U, m_load.child_count());
    std::vector<std::wstring> names{m_load.child_name(0), m_load.child_name(1), m_load.child_name(2)};
    std::sort(names.begin(), names.end());
    EXPECT_EQ((std::vector<std::wstring>{L"one", L"three", L"two words"}), names);
    EXPECT_EQ(L"", m_load.child_name(3));
    EXPECT_EQ(L"", m_load.child_name(0xFFFFFFFF));
}

TEST_F(RegistryTest, BinaryTellsTheStoredSizeAndNeverWritesPastTheBuffer) {
    const BYTE bytes[] = {1, 2, 3, 4};
    ASSERT_TRUE(m_save.save_binary(L"block", bytes, sizeof(bytes)));
    BYTE buffer[6] = {9, 9, 9, 9, 9, 9};
    std::uint32_t size = 3;
    EXPECT_FALSE(m_load.load_binary(L"block", buffer, size));
    EXPECT_EQ(4U, size);
    EXPECT_EQ(9, buffer[0]);
    size = 6;
    EXPECT_TRUE(m_load.load_binary(L"block", buffer, size));
    EXPECT_EQ(4U, size);
    EXPECT_EQ(0, std::memcmp(buffer, "\1\2\3\4\t\t", 6));
    size = 0;
    EXPECT_FALSE(m_load.load_binary(L"block", nullptr, size));
    EXPECT_EQ(4U, size);
    size = 6;
    EXPECT_FALSE(m_load.load_binary(L"missing", buffer, size));
    EXPECT_EQ(0U, size);
}

TEST_F(RegistryTest, BinaryDoesNotLookAtTheStoredType) {
    m_scratch.Write(L"quad", REG_QWORD, {1, 0, 0, 0, 0, 0, 0, 0x80});
    EXPECT_EQ(std::numeric_limits<std::int64_t>::min() + 1, m_load.load_int64(L"quad", 0));
}

TEST_F(RegistryTest, ValuesOfAnotherTypeOrSizeYieldTheDefault) {
    m_scratch.Write(L"text", REG_SZ, BytesOf(L"1234567"));
    m_scratch.Write(L"expand", REG_EXPAND_SZ, BytesOf(L"%TEMP%"));
    m_scratch.Write(L"short number", REG_DWORD, {1, 2});
    m_scratch.Write(L"long number", REG_DWORD, {1, 2, 3, 4, 5, 6, 7, 8});
    m_scratch.Write(L"number", REG_DWORD, {1, 2, 3, 4});
    m_scratch.Write(L"four bytes", REG_BINARY, {1, 2, 3, 4});
    m_scratch.Write(L"four of text", REG_SZ, BytesOf(L"12"));
    m_scratch.Write(L"big end first", REG_DWORD_BIG_ENDIAN, {1, 2, 3, 4});
    m_scratch.Write(L"seven", REG_BINARY, {1, 2, 3, 4, 5, 6, 7});
    m_scratch.Write(L"nine", REG_BINARY, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    for (const wchar_t* const name : {L"text", L"short number", L"long number", L"seven", L"four bytes",
                                      L"four of text", L"big end first", L"missing"}) {
        EXPECT_EQ(kFallback, m_load.load_int32(name, kFallback)) << name;
    }
    for (const wchar_t* const name : {L"text", L"number", L"seven", L"nine", L"missing"}) {
        EXPECT_EQ(kFallback, m_load.load_int64(name, kFallback)) << name;
        EXPECT_EQ(0.5, m_load.load_double(name, 0.5)) << name;
    }
    for (const wchar_t* const name : {L"expand", L"number", L"seven", L"missing"}) {
        EXPECT_EQ(L"default", m_load.load_string(name, L"default")) << name;
    }
}

TEST_F(RegistryTest, StringsWithOneTerminatorSeveralOrHalfACharacterEndWhereTheirTextEnds) {
    m_scratch.Write(L"terminated", REG_SZ, {'a', 0, 'b', 0, 0, 0});
    m_scratch.Write(L"twice", REG_SZ, {'a', 0, 'b', 0, 0, 0, 'c', 0, 0, 0});
    m_scratch.Write(L"odd", REG_SZ, {'a', 0, 'b', 0, 'c'});
    m_scratch.Write(L"half", REG_SZ, {'a'});
    m_scratch.Write(L"only a terminator", REG_SZ, {0, 0});
    for (const wchar_t* const name : {L"terminated", L"twice", L"odd"}) {
        EXPECT_EQ(L"ab", m_load.load_string(name, L"default")) << name;
    }
    EXPECT_EQ(L"", m_load.load_string(L"half", L"default"));
    EXPECT_EQ(L"", m_load.load_string(L"only a terminator", L"default"));
}

TEST_F(RegistryTest, AnEmptyStringIsStoredWithNoBytesAndLoadsAsTheDefault) {
    ASSERT_TRUE(m_save.save_string(L"empty", L""));
    EXPECT_EQ((RawValue{REG_SZ, {}}), m_scratch.Read(L"empty"));
    EXPECT_EQ(0U, m_load.value_size(L"empty"));
    EXPECT_EQ(L"", m_load.load_string(L"empty", L""));
    EXPECT_EQ(L"default", m_load.load_string(L"empty", L"default"));
}

TEST_F(RegistryTest, AZeroInsideANameOrATextIsRefused) {
    const std::wstring name(L"a\0b", 3);
    EXPECT_FALSE(m_save.save_int32(name, 1));
    EXPECT_FALSE(m_save.save_string(L"text", name));
    EXPECT_FALSE(m_scratch.Read(L"a").has_value());
    EXPECT_FALSE(m_scratch.Read(L"text").has_value());
    EXPECT_EQ(kFallback, m_load.load_int32(name, kFallback));
    EXPECT_EQ(kAbsentValue, m_load.value_size(name));
    EXPECT_FALSE(m_save.open_key(m_scratch.Section(name), HKEY_CURRENT_USER));
    EXPECT_FALSE(m_save.delete_section(m_scratch.Section(name)));
    EXPECT_FALSE(m_scratch.HasSubkey(L"a"));
}

TEST_F(RegistryTest, NamesMayHoldBlanksSlashesAndAnythingElse) {
    for (const wchar_t* const name : {L"two words", L"a/b", L"a\\b", L"<\"'&>", L"\u20ac", L""}) {
        ASSERT_TRUE(m_save.save_string(name, std::wstring(L"x") + name));
        EXPECT_EQ(std::wstring(L"x") + name, m_load.load_string(name, L"default"));
    }
}

TEST_F(RegistryTest, NamesLongerThanTheRegistryTakesAreRefused) {
    EXPECT_FALSE(m_save.save_int32(std::wstring(20000, L'n'), 1));
    EXPECT_FALSE(m_save.open_key(m_scratch.Section(std::wstring(256, L'k')), HKEY_CURRENT_USER));
}

TEST_F(RegistryTest, AnOpenThatTheSystemRefusesLeavesNothingOpen) {
    ASSERT_TRUE(m_save.save_int32(L"v", 1));
    const HKEY noKey = HKEY_PERFORMANCE_DATA; // nobody may create keys there
    EXPECT_FALSE(m_save.open_key(L"x", noKey));
    EXPECT_FALSE(m_save.save_int32(L"v", 2));
    EXPECT_FALSE(m_load.open_key(L"x", noKey));
    EXPECT_EQ(kFallback, m_load.load_int32(L"v", kFallback));
    EXPECT_EQ((RawValue{REG_DWORD, {1, 0, 0, 0}}), m_scratch.Read(L"v"));
}

TEST_F(RegistryTest, ASaverAsksToWriteAndToQueryAndForNothingMore) {
    ASSERT_TRUE(m_save.open_key(m_scratch.Section(L"asked"), HKEY_CURRENT_USER));
    EXPECT_EQ(std::vector<ACCESS_MASK>{0x20007}, AccessToOpenKeys(m_scratch.Section(L"asked")));
    m_save.close();
    EXPECT_TRUE(AccessToOpenKeys(m_scratch.Section(L"asked")).empty());
}

TEST_F(RegistryTest, WithNoKeyOpenNothingIsLoadedAndNothingSaved) {
    m_save.close();
    m_load.close();
    EXPECT_FALSE(m_save.save_int32(L"v", 1));
    EXPECT_FALSE(m_save.save_int64(L"v", 1));
    EXPECT_FALSE(m_save.save_double(L"v", 1));
    EXPECT_FALSE(m_save.save_binary(L"v", "x", 1));
    EXPECT_FALSE(m_save.save_string(L"v", L"x"));
    std::uint32_t size = 4;
    char buffer[4];
    EXPECT_FALSE(m_load.load_binary(L"v", buffer, size));
    EXPECT_EQ(kFallback, m_load.load_int32(L"v", kFallback));
    EXPECT_EQ(L"default", m_load.load_string(L"v", L"default"));
    EXPECT_EQ(kAbsentValue, m_load.value_size(L"v"));
    EXPECT_EQ(0U, m_load.child_count());
    EXPECT_EQ(L"", m_load.child_name(0));
}

TEST_F(RegistryTest, ARegistryBackEndOpensNoFile) {
    reg_save_t save(HKEY_CURRENT_USER);
    reg_load_t load(HKEY_CURRENT_USER);
    EXPECT_FALSE(save.open_file(L"a", L"C:\\a.xml"));
    EXPECT_FALSE(load.open_file(L"a", L"C:\\a.xml"));
}

TEST_F(RegistryTest, ABlockWithoutDataIsRefusedUnlessItIsEmpty) {
    EXPECT_FALSE(m_save.save_binary(L"block", nullptr, 1));
    EXPECT_TRUE(m_save.save_binary(L"block", nullptr, 0));
    EXPECT_EQ((RawValue{REG_BINARY, {}}), m_scratch.Read(L"block"));
    std::uint32_t size = 0;
    EXPECT_TRUE(m_load.load_binary(L"block", nullptr, size));
}

TEST_F(RegistryTest, StoresEveryTypeAsTheGoldenDumpSays) {
    ASSERT_TRUE(m_save.save(L"signed", std::int32_t{-2}));
    ASSERT_TRUE(m_save.save(L"unsigned", std::uint32_t{0xFFFFFFFE}));
    ASSERT_TRUE(m_save.save_double(L"double", 1.5));
    ASSERT_TRUE(m_save.save_int64(L"int64", -2));
    ASSERT_TRUE(m_save.save_binary(L"binary", "\0\1\xFF", 3));
    ASSERT_TRUE(m_save.save_string(L"string", L"ab"));
    ASSERT_TRUE(m_save.open_key(m_scratch.Section(L"sub\\deeper"), HKEY_CURRENT_USER));
    ASSERT_TRUE(m_save.save_int32(L"two words", 1));
    EXPECT_TRUE(test_support::MatchesGolden("settings", "registry", m_scratch.Dump()));
}

} // namespace
