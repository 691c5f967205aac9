// What many values cost, counted in questions to the document: each value as much as any other, however many there are.
#include <gtest/gtest.h>

#include "settings/back_end.h"
#include "settings/xml_load.h"
#include "settings/xml_save.h"
#include "tests/settings/dom_calls.h"
#include "tests/settings/scratch_folder.h"

namespace {

constexpr int kValues = 3000;
// A few for the elements above the values.
constexpr size_t kOthers = 20;

class XmlCost : public ComTest {
  protected:
    [[nodiscard]] std::wstring File() const { return m_folder.File(L"f.xml"); }
    static std::wstring Key(int number) { return L"value" + std::to_wstring(number); }
    void SaveAll(int first) const {
        xml_save_t save(kSettingsPathPrefix);
        ASSERT_TRUE(save.open_file(L"a", File()));
        for (int i = 0; i < kValues; ++i) {
            ASSERT_TRUE(save.save_int32(Key(i), first + i));
        }
        save.close();
    }

    ScratchFolder m_folder;
};

TEST_F(XmlCost, SavingAValueSearchesNoneOfTheOthers) {
    const DomCalls calls;
    SaveAll(0);
    EXPECT_EQ(0U, DomCalls::Searches());
    EXPECT_LE(DomCalls::Steps(), kOthers);
}

TEST_F(XmlCost, SavingOverAValueLooksAtEachOfTheOthersOnceInAll) {
    SaveAll(0);
    const DomCalls calls;
    SaveAll(1);
    EXPECT_EQ(0U, DomCalls::Searches());
    EXPECT_GE(DomCalls::Steps(), kValues / 2U); // the calls are counted indeed
    EXPECT_LE(DomCalls::Steps(), kValues + kOthers);
}

TEST_F(XmlCost, LoadingAValueLooksAtEachOfTheOthersOnceInAll) {
    SaveAll(5);
    const DomCalls calls;
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    for (int i = 0; i < kValues; ++i) {
        ASSERT_EQ(5 + i, load.load_int32(Key(i), -1));
        ASSERT_EQ(4U, load.value_size(Key(i)));
        ASSERT_EQ(-1, load.load_int32(L"missing" + Key(i), -1));
    }
    EXPECT_EQ(0U, DomCalls::Searches());
    EXPECT_GE(DomCalls::Steps(), kValues / 2U);
    EXPECT_LE(DomCalls::Steps(), kValues + kOthers);
}

TEST_F(XmlCost, NamingTheChildrenLooksAtEachOfThemOnceInAll) {
    SaveAll(0);
    xml_load_t load(kSettingsPathPrefix);
    ASSERT_TRUE(load.open_file(L"a", File()));
    const DomCalls calls;
    ASSERT_EQ(static_cast<std::uint32_t>(kValues), load.child_count());
    for (int i = 0; i < kValues; ++i) {
        ASSERT_EQ(Key(i), load.child_name(static_cast<std::uint32_t>(i)));
    }
    EXPECT_EQ(0U, DomCalls::Searches());
    EXPECT_LE(DomCalls::Steps(), 2 * kValues + kOthers); // to find the section, and to name its children
}

} // namespace
