// Which back end the facades choose, keep and destroy.
#include <gtest/gtest.h>

#include <cstring>

#include "settings/failure.h"
#include "settings/load.h"
#include "settings/save.h"
#include "tests/settings/scratch_folder.h"
#include "tests/settings/scratch_key.h"
#include "tests/support/handle_count.h"

namespace {

class Facade : public ComTest {
  protected:
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }

    ScratchFolder m_folder;
    ScratchKey m_key;
    save_t m_save;
    load_t m_load;
};

TEST_F(Facade, WithNoBackEndLoadsGiveTheirDefaultAndSavesFalse) {
    EXPECT_EQ(2, m_load.kind());
    EXPECT_EQ(2, m_save.kind());
    EXPECT_EQ(-1, m_load.load(L"v", std::int32_t{-1}));
    EXPECT_EQ(3U, m_load.load(L"v", std::uint32_t{3}));
    EXPECT_EQ(-1, m_load.load_int32(L"v", -1));
    EXPECT_EQ(-1, m_load.load_int64(L"v", -1));
    EXPECT_EQ(0.5, m_load.load_double(L"v", 0.5));
    EXPECT_EQ(L"x", m_load.load_string(L"v", L"x"));
    std::uint32_t size = 1;
    char byte = 0;
    EXPECT_FALSE(m_load.load_binary(L"v", &byte, size));
    EXPECT_EQ(0U, size);
    EXPECT_EQ(kAbsentValue, m_load.value_size(L"v"));
    EXPECT_EQ(0U, m_load.child_count());
    EXPECT_EQ(L"", m_load.child_name(0));
    m_load.close();
    EXPECT_FALSE(m_save.save(L"v", std::int32_t{1}));
    EXPECT_FALSE(m_save.save(L"v", std::uint32_t{1}));
    EXPECT_FALSE(m_save.save_int32(L"v", 1));
    EXPECT_FALSE(m_save.save_int64(L"v", 1));
    EXPECT_FALSE(m_save.save_double(L"v", 1));
    EXPECT_FALSE(m_save.save_string(L"v", L"x"));
    EXPECT_FALSE(m_save.save_binary(L"v", &byte, 1));
    EXPECT_FALSE(m_save.delete_section(L"v"));
    m_save.close();
}

TEST_F(Facade, OnlyTheKindsZeroAndOneCanBeSelected) {
    for (const std::int32_t kind : {-1, 2, 3, 0x7FFFFFFF}) {
        EXPECT_FALSE(m_load.select(kind));
        EXPECT_FALSE(m_save.select(kind));
        EXPECT_EQ(2, m_load.kind());
        EXPECT_EQ(2, m_save.kind());
    }
    EXPECT_TRUE(m_load.select(0));
    EXPECT_EQ(0, m_load.kind());
    EXPECT_TRUE(m_save.select(1));
    EXPECT_EQ(1, m_save.kind());
}

TEST_F(Facade, SelectingAnyOtherKindLeavesNoBackEnd) {
    ASSERT_TRUE(m_save.open_key(m_key.Path(), HKEY_CURRENT_USER));
    EXPECT_FALSE(m_save.select(7));
    EXPECT_EQ(2, m_save.kind());
    EXPECT_FALSE(m_save.save_int32(L"v", 1));
}

TEST_F(Facade, ASelectedRegistryBackEndHasTheCurrentUserAsItsRoot) {
    ASSERT_TRUE(m_save.select(0));
    EXPECT_FALSE(m_save.save_int32(L"v", 1)); // it is not open
    ASSERT_TRUE(m_key.HasSubkey(L""));
    const ScratchKey other;
    EXPECT_TRUE(m_save.delete_section(other.Path()));
    EXPECT_FALSE(other.Read(L"").has_value());
    EXPECT_TRUE(m_save.open_key(other.Path(), nullptr));
}

TEST_F(Facade, OpeningAKeyIsBelowTheRootPassed) {
    ASSERT_TRUE(m_save.open_key(L"below", m_key.Get()));
    EXPECT_EQ(0, m_save.kind());
    EXPECT_TRUE(m_key.HasSubkey(L"below"));
    EXPECT_TRUE(m_load.open_key(L"below", m_key.Get()));
}

TEST_F(Facade, OpeningAFileSelectsXmlWhateverWasOpen) {
    ASSERT_TRUE(m_save.open_key(m_key.Path(), HKEY_CURRENT_USER));
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_EQ(1, m_save.kind());
    ASSERT_TRUE(m_save.save_int32(L"v", 1));
    EXPECT_FALSE(m_key.Read(L"v").has_value());
}

TEST_F(Facade, OpeningAKeyWhileAFileIsOpenFailsAndKeepsTheFile) {
    save_t keySaver;
    ASSERT_TRUE(keySaver.open_key(m_key.Path(), HKEY_CURRENT_USER));
    ASSERT_TRUE(keySaver.save_int32(L"v", 9));
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_FALSE(m_save.open_key(m_key.Path(), HKEY_CURRENT_USER));
    EXPECT_EQ(1, m_save.kind());
    EXPECT_TRUE(m_save.save_int32(L"v", 1));
    m_save.close();
    EXPECT_EQ((RawValue{REG_DWORD, {9, 0, 0, 0}}), m_key.Read(L"v"));
    ASSERT_TRUE(m_load.open_file(L"a", File()));
    EXPECT_FALSE(m_load.open_key(m_key.Path(), HKEY_CURRENT_USER));
    EXPECT_EQ(1, m_load.kind());
    EXPECT_EQ(1, m_load.load_int32(L"v", 0));
}

TEST_F(Facade, ASecondFileIsRefusedUntilTheFirstIsClosed) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    EXPECT_FALSE(m_save.open_file(L"a", m_folder.File(L"second.xml")));
    m_save.close();
    EXPECT_TRUE(m_save.open_file(L"a", m_folder.File(L"second.xml")));
    m_save.close();
    EXPECT_EQ(2U, m_folder.FileNames().size());
}

TEST_F(Facade, ClosingWritesTheFileAndForgetsTheKind) {
    ASSERT_TRUE(m_save.open_file(L"a", File()));
    ASSERT_TRUE(m_save.save_int32(L"v", 1));
    EXPECT_TRUE(m_folder.FileNames().empty());
    m_save.close();
    EXPECT_EQ(2, m_save.kind());
    EXPECT_NE(std::string::npos, FileText(File()).find(">1</v>"));
    m_save.close(); // nothing happens
    EXPECT_FALSE(m_save.save_int32(L"v", 2));
}

TEST_F(Facade, GoingOutOfScopeClosesIt) {
    {
        save_t save;
        ASSERT_TRUE(save.open_file(L"a", File()));
        ASSERT_TRUE(save.save_int32(L"v", 1));
    }
    EXPECT_NE(std::string::npos, FileText(File()).find(">1</v>"));
}

TEST_F(Facade, EveryHandleIsGivenBackWhetherOpensSucceedOrFail) {
    const auto openAndClose = [this] {
        save_t save;
        load_t load;
        EXPECT_TRUE(save.open_key(m_key.Section(L"a"), HKEY_CURRENT_USER));
        EXPECT_TRUE(save.open_key(m_key.Section(L"b"), HKEY_CURRENT_USER));
        EXPECT_TRUE(load.open_key(m_key.Section(L"a"), HKEY_CURRENT_USER));
        EXPECT_FALSE(load.open_key(m_key.Section(L"missing"), HKEY_CURRENT_USER));
        EXPECT_TRUE(save.delete_section(m_key.Section(L"b")));
        EXPECT_TRUE(save.open_file(L"a", File()));
        EXPECT_FALSE(save.open_file(L"a", m_folder.File(L"missing\\f.xml")));
        save.close();
        EXPECT_TRUE(load.open_file(L"a", File()));
        EXPECT_FALSE(load.open_file(L"a[", File()));
    };
    openAndClose(); // the system keeps some for itself the first time
    // Its own threads come and go at any time; what is lost here is lost in each round.
    constexpr int kRounds = 5;
    int rounds = 0;
    for (bool grew = true; grew && rounds < kRounds; ++rounds) {
        const size_t before = test_support::OpenHandleCount();
        for (int i = 0; i < 20; ++i) {
            openAndClose();
        }
        const size_t after = test_support::OpenHandleCount();
        grew = after > before;
        EXPECT_FALSE(grew && rounds + 1 == kRounds) << before << " and then " << after;
    }
}

TEST_F(Facade, AStringOfImpossibleLengthRaisesInvalidArgument) {
    EXPECT_NO_THROW(RequirePossibleLength(std::wstring_view(L"x", 1)));
    try {
        RequirePossibleLength(std::wstring_view(L"x", kMaxStringChars + 1)); // its characters are not looked at
        ADD_FAILURE() << "nothing was raised";
    } catch (const settings_failure& failure) {
        EXPECT_EQ(E_INVALIDARG, failure.hr);
    }
}

TEST_F(Facade, LackOfMemoryAndImpossibleLengthsLeaveAsTheirCodes) {
    const auto codeOf = [](auto&& body) {
        try {
            Guarded(body);
        } catch (const settings_failure& failure) {
            return failure.hr;
        }
        return S_OK;
    };
    EXPECT_EQ(E_OUTOFMEMORY, codeOf([] { throw std::bad_alloc(); }));
    EXPECT_EQ(E_INVALIDARG, codeOf([] { std::wstring().reserve(std::wstring().max_size() + 1); }));
    EXPECT_EQ(S_OK, codeOf([] {}));
}

} // namespace
