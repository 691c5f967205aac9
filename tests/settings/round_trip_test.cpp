// Every type of value at its extremes, saved and loaded again through the facades: the same cases for the registry and
// for XML files, within one process and across two.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "settings/load.h"
#include "settings/save.h"
#include "tests/settings/scratch_folder.h"
#include "tests/settings/scratch_key.h"
#include "tests/support/program_run.h"

namespace {

constexpr size_t kMebibyte = 1024 * 1024;

// A place that a facade can be opened on, whichever back end that takes.
class Place {
  public:
    explicit Place(bool isXml) : m_isXml(isXml) {}
    template <typename Facade>
    bool Open(Facade& facade) const {
        return m_isXml ? facade.open_file(L"section\\sub section", m_folder.File(L"settings.xml"))
                       : facade.open_key(m_key.Section(L"section\\sub section"), HKEY_CURRENT_USER);
    }
    [[nodiscard]] bool IsXml() const { return m_isXml; }
    // What a program needs to open the same place.
    [[nodiscard]] std::wstring Address() const { return m_isXml ? m_folder.File(L"settings.xml") : m_key.Path(); }

  private:
    bool m_isXml;
    ScratchFolder m_folder;
    ScratchKey m_key;
};

class RoundTrip : public ComTest, public ::testing::WithParamInterface<bool> {
  protected:
    void SetUp() override { ASSERT_TRUE(m_place.Open(m_save)); }
    // What is saved is on disk, and a loader is open on it.
    load_t& Reopened() {
        m_save.close();
        m_load.close();
        EXPECT_TRUE(m_place.Open(m_load));
        return m_load;
    }
    std::vector<unsigned char> LoadBlock(const std::wstring& key) {
        std::uint32_t size = m_load.value_size(key);
        std::vector<unsigned char> block(size);
        EXPECT_TRUE(m_load.load_binary(key, block.data(), size));
        EXPECT_EQ(block.size(), size);
        return block;
    }

    Place m_place{GetParam()};
    save_t m_save;
    load_t m_load;
};

TEST_P(RoundTrip, Int32AtItsExtremes) {
    const std::int32_t values[] = {std::numeric_limits<std::int32_t>::min(), -1, 0, 1,
                                   std::numeric_limits<std::int32_t>::max()};
    for (size_t i = 0; i < std::size(values); ++i) {
        ASSERT_TRUE(m_save.save_int32(L"value" + std::to_wstring(i), values[i]));
    }
    Reopened();
    for (size_t i = 0; i < std::size(values); ++i) {
        EXPECT_EQ(values[i], m_load.load_int32(L"value" + std::to_wstring(i), 42));
    }
}

TEST_P(RoundTrip, TheUnsignedOverloadKeepsAll32Bits) {
    ASSERT_TRUE(m_save.save(L"all", std::uint32_t{0xFFFFFFFF}));
    ASSERT_TRUE(m_save.save(L"sign", std::uint32_t{0x80000000}));
    ASSERT_TRUE(m_save.save(L"signed", std::int32_t{-5}));
    Reopened();
    EXPECT_EQ(0xFFFFFFFFU, m_load.load(L"all", std::uint32_t{0}));
    EXPECT_EQ(-1, m_load.load(L"all", std::int32_t{0}));
    EXPECT_EQ(0x80000000U, m_load.load(L"sign", std::uint32_t{0}));
    EXPECT_EQ(-5, m_load.load(L"signed", std::int32_t{0}));
    EXPECT_EQ(0xFFFFFFFEU, m_load.load(L"missing", std::uint32_t{0xFFFFFFFE}));
}

TEST_P(RoundTrip, Int64AtItsExtremes) {
    const std::int64_t values[] = {std::numeric_limits<std::int64_t>::min(), -1, 0, 0x100000000,
                                   std::numeric_limits<std::int64_t>::max()};
    for (size_t i = 0; i < std::size(values); ++i) {
        ASSERT_TRUE(m_save.save_int64(L"value" + std::to_wstring(i), values[i]));
    }
    Reopened();
    for (size_t i = 0; i < std::size(values); ++i) {
        EXPECT_EQ(values[i], m_load.load_int64(L"value" + std::to_wstring(i), 42));
    }
}

TEST_P(RoundTrip, DoublesAtTheirExtremesKeepEveryBit) {
    using Limits = std::numeric_limits<double>;
    const double values[] = {0.0,
                             -0.0,
                             0.1,
                             1.0 / 3.0,
                             -1e-310,
                             Limits::max(),
                             Limits::min(),
                             Limits::lowest(),
                             Limits::denorm_min(),
                             Limits::epsilon(),
                             1e22,
                             123456789.125,
                             Limits::infinity(),
                             -Limits::infinity()};
    for (size_t i = 0; i < std::size(values); ++i) {
        ASSERT_TRUE(m_save.save_double(L"value" + std::to_wstring(i), values[i])) << values[i];
    }
    ASSERT_TRUE(m_save.save_double(L"nan", Limits::quiet_NaN()));
    Reopened();
    for (size_t i = 0; i < std::size(values); ++i) {
        const double loaded = m_load.load_double(L"value" + std::to_wstring(i), 42);
        EXPECT_EQ(std::bit_cast<std::uint64_t>(values[i]), std::bit_cast<std::uint64_t>(loaded)) << values[i];
    }
    EXPECT_TRUE(std::isnan(m_load.load_double(L"nan", 42)));
    EXPECT_EQ(8U, m_load.value_size(L"nan"));
}

TEST_P(RoundTrip, StringsWithEverythingThatADocumentCanHold) {
    const std::vector<std::wstring> values = {
        L"plain",
        L"><",
        L"a><b></value><c/>",
        L"]]>",
        L"&amp; & \" '",
        L"<![CDATA[x]]>",
        L" ",
        L"   ",
        L"\n",
        L"\r",
        L"\t",
        L"\r\n",
        L" leading and trailing ",
        L"two  blanks",
        L"one\ntwo\r\nthree\rfour\tfive",
        L"\r\n\r\n",
        L">\r\n<",
        L"caf\u00e9 \u20ac \u65e5\u672c",
        L"\U0001F600\U0010FFFD",
        L"\u00a0\u2028\u0085\u007f",
        L"\ufffd",
    };
    for (size_t i = 0; i < values.size(); ++i) {
        ASSERT_TRUE(m_save.save_string(L"value" + std::to_wstring(i), values[i])) << i;
    }
    Reopened();
    for (size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(values[i], m_load.load_string(L"value" + std::to_wstring(i), L"default")) << i;
        EXPECT_EQ(values[i].size() * 2, m_load.value_size(L"value" + std::to_wstring(i))) << i;
    }
}

// The registry tells an empty string from a missing one by nothing but its size.
TEST_P(RoundTrip, AnEmptyStringIsThereAndInTheRegistryLoadsAsTheDefault) {
    ASSERT_TRUE(m_save.save_string(L"empty", L""));
    Reopened();
    EXPECT_EQ(L"", m_load.load_string(L"empty", L""));
    EXPECT_EQ(m_place.IsXml() ? L"" : L"default", m_load.load_string(L"empty", L"default"));
    EXPECT_EQ(0U, m_load.value_size(L"empty"));
}

TEST_P(RoundTrip, StringsOfOneMebicharacter) {
    std::wstring ascii;
    std::wstring mixed;
    for (size_t i = 0; i < kMebibyte; ++i) {
        ascii += static_cast<wchar_t>(L'a' + i % 26);
        mixed += L"<\u65e5\n >\r&x"[i % 8];
    }
    ASSERT_TRUE(m_save.save_string(L"ascii", ascii));
    ASSERT_TRUE(m_save.save_string(L"mixed", mixed));
    Reopened();
    EXPECT_TRUE(ascii == m_load.load_string(L"ascii", L"default"));
    EXPECT_TRUE(mixed == m_load.load_string(L"mixed", L"default"));
}

TEST_P(RoundTrip, BlocksOfEveryByteAndOfAnyLength) {
    std::vector<unsigned char> block;
    for (size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, size_t{256}, kMebibyte}) {
        block.resize(size);
        for (size_t i = 0; i < size; ++i) {
            block[i] = static_cast<unsigned char>(255 - i * 7 % 256);
        }
        const std::wstring key = L"block" + std::to_wstring(size);
        ASSERT_TRUE(m_save.save_binary(key, block.data(), static_cast<std::uint32_t>(size)));
    }
    Reopened();
    for (size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{3}, size_t{256}}) {
        const auto loaded = LoadBlock(L"block" + std::to_wstring(size));
        ASSERT_EQ(size, loaded.size());
        for (size_t i = 0; i < size; ++i) {
            ASSERT_EQ(static_cast<unsigned char>(255 - i * 7 % 256), loaded[i]);
        }
    }
    EXPECT_TRUE(block == LoadBlock(L"block" + std::to_wstring(kMebibyte)));
}

TEST_P(RoundTrip, ASecondValueOfAnotherTypeReplacesTheFirst) {
    ASSERT_TRUE(m_save.save_string(L"value", L" text "));
    ASSERT_TRUE(m_save.save_double(L"value", 0.5));
    ASSERT_TRUE(m_save.save_binary(L"value", "\1\2", 2));
    ASSERT_TRUE(m_save.save_int32(L"value", 7));
    Reopened();
    EXPECT_EQ(7, m_load.load_int32(L"value", 0));
    EXPECT_EQ(4U, m_load.value_size(L"value"));
    EXPECT_EQ(-1, m_load.load_int64(L"missing", -1));
    ASSERT_TRUE(m_place.Open(m_save));
    ASSERT_TRUE(m_save.save_string(L"value", L" text "));
    Reopened();
    EXPECT_EQ(L" text ", m_load.load_string(L"value", L"default"));
    EXPECT_EQ(0, m_load.load_int32(L"value", 0));
}

// The status of the program that loads what AFreshProcessLoadsTheSame saved, and compares.
DWORD RunSettingsReader(const std::wstring& address) {
    return RunProgramBeside(L"settings_reader.exe", L"\"" + address + L"\"");
}

TEST_P(RoundTrip, AFreshProcessLoadsTheSame) {
    ASSERT_TRUE(m_save.save_int32(L"int32", -5));
    ASSERT_TRUE(m_save.save_int64(L"int64", std::numeric_limits<std::int64_t>::min()));
    ASSERT_TRUE(m_save.save_double(L"double", 0.1));
    ASSERT_TRUE(m_save.save_string(L"string", L" a><b\r\n"));
    ASSERT_TRUE(m_save.save_binary(L"binary", "\x01\xFE", 2));
    m_save.close();
    EXPECT_EQ(0U, RunSettingsReader(m_place.Address()));
    ASSERT_TRUE(m_place.Open(m_save));
    ASSERT_TRUE(m_save.save_int32(L"int32", -6));
    m_save.close();
    EXPECT_EQ(2U, RunSettingsReader(m_place.Address())); // so a wrong value is noticed
}

INSTANTIATE_TEST_SUITE_P(BackEnds, RoundTrip, ::testing::Values(false, true),
                         [](const auto& place) { return place.param ? "Xml" : "Registry"; });

} // namespace
