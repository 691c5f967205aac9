#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "dshow/persist_stream.h"
#include "dshow/stream_io.h"
#include "tests/support/memory_stream.h"

namespace {

using test_support::MemoryStream;
using test_support::StreamOperation;

constexpr HRESULT kEndOfFile = static_cast<HRESULT>(0x80070026);

// Persists one number after the header.
class Persisted final : public CPersistStream {
  public:
    Persisted() : CPersistStream(nullptr, nullptr) {}

    UINT32 number = 0;
    DWORD version = 0;
    bool throwOnUse = false;

    void MarkDirty() { SetDirty(TRUE); }
    DWORD FileVersion() const { return mPS_dwFileVersion; }

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID, void**) noexcept override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    // IPersist
    STDMETHODIMP GetClassID(CLSID*) noexcept override { return E_NOTIMPL; }

    HRESULT WriteToStream(IStream* stream) override {
        return throwOnUse ? throw "write" : WriteExactly(stream, &number, sizeof(number));
    }
    HRESULT ReadFromStream(IStream* stream) override {
        return throwOnUse ? throw "read" : ReadExactly(stream, &number, sizeof(number));
    }
    DWORD GetSoftwareVersion() override { return version; }
};

// As a class without a body of its own.
class Empty final : public CPersistStream {
  public:
    Empty() : CPersistStream(nullptr, nullptr) {}
    STDMETHODIMP QueryInterface(REFIID, void**) noexcept override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP GetClassID(CLSID*) noexcept override { return E_NOTIMPL; }
};

std::vector<BYTE> WideBytes(const std::string& text) {
    std::vector<BYTE> bytes;
    for (const char character : text) {
        bytes.push_back(static_cast<BYTE>(character));
        bytes.push_back(0);
    }
    return bytes;
}

class PersistStreamTest : public testing::Test {
  protected:
    HRESULT LoadHeader(const std::string& header) {
        Empty empty;
        stream.SetBytes(WideBytes(header));
        return empty.Load(&stream);
    }

    MemoryStream stream;
    Persisted object;
};

TEST_F(PersistStreamTest, HeaderIsElevenDigitsAndASpace) {
    Empty empty;
    ASSERT_EQ(empty.Save(&stream, TRUE), S_OK);
    EXPECT_EQ(stream.Bytes(), WideBytes("00000000000 "));
    EXPECT_EQ(stream.Calls(StreamOperation::Write).size(), 1U);
}

TEST_F(PersistStreamTest, SizeOfAnEmptyBodyIsTheHeaders) {
    Empty empty;
    ULARGE_INTEGER size{};
    size.QuadPart = 99;
    EXPECT_EQ(empty.GetSizeMax(&size), S_OK);
    EXPECT_EQ(size.QuadPart, 24U);
    EXPECT_EQ(empty.GetSizeMax(nullptr), E_POINTER);
}

TEST_F(PersistStreamTest, BodyFollowsTheHeaderAndComesBack) {
    object.number = 0x04030201;
    object.version = 42;
    ASSERT_EQ(object.Save(&stream, TRUE), S_OK);
    auto expected = WideBytes("00000000042 ");
    expected.insert(expected.end(), {1, 2, 3, 4});
    EXPECT_EQ(stream.Bytes(), expected);

    stream.SetBytes(expected);
    Persisted other;
    ASSERT_EQ(other.Load(&stream), S_OK);
    EXPECT_EQ(other.number, 0x04030201U);
    EXPECT_EQ(other.FileVersion(), 42U);
}

TEST_F(PersistStreamTest, VersionIsASignedNumber) {
    object.version = static_cast<DWORD>(std::numeric_limits<INT32>::min());
    ASSERT_EQ(object.Save(&stream, TRUE), S_OK);
    auto expected = WideBytes("-2147483648 ");
    expected.resize(expected.size() + 4);
    EXPECT_EQ(stream.Bytes(), expected);
    stream.SetBytes(expected);
    ASSERT_EQ(object.Load(&stream), S_OK);
    EXPECT_EQ(object.FileVersion(), 0x80000000U);
    EXPECT_EQ(LoadHeader("02147483647 "), S_OK);
}

TEST_F(PersistStreamTest, HeaderThatIsNoNumberIsRefused) {
    for (const char* const header : {"0000000000x ", "00000000000x", "           0", "0000-000000 ", "-          ",
                                     "02147483648 ", "99999999999 ", "-2147483649 "}) {
        EXPECT_EQ(LoadHeader(std::string(header).substr(0, 12) + "  "), VFW_E_INVALID_FILE_FORMAT) << header;
    }
}

TEST_F(PersistStreamTest, StreamThatEndsEarlyIsAnError) {
    object.number = 7;
    ASSERT_EQ(object.Save(&stream, TRUE), S_OK);
    const std::vector<BYTE> whole = stream.Bytes();
    for (size_t length = 0; length < whole.size(); ++length) {
        stream.SetBytes({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
        EXPECT_EQ(object.Load(&stream), kEndOfFile) << length;
    }
}

TEST_F(PersistStreamTest, FailureOfTheStreamIsPassedOn) {
    stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    EXPECT_EQ(object.Save(&stream, TRUE), STG_E_MEDIUMFULL);
    stream.FailNth(StreamOperation::Write, 2, STG_E_ACCESSDENIED);
    EXPECT_EQ(object.Save(&stream, TRUE), STG_E_ACCESSDENIED);
    stream.FailNth(StreamOperation::Read, 1, STG_E_READFAULT);
    EXPECT_EQ(object.Load(&stream), STG_E_READFAULT);
    EXPECT_EQ(object.Load(nullptr), E_POINTER);
    EXPECT_EQ(object.Save(nullptr, TRUE), E_POINTER);
}

TEST_F(PersistStreamTest, DirtyFlagGoesWithASuccessfulSaveThatClearsIt) {
    EXPECT_EQ(object.IsDirty(), S_FALSE);
    object.MarkDirty();
    EXPECT_EQ(object.IsDirty(), S_OK);
    EXPECT_EQ(object.Save(&stream, FALSE), S_OK);
    EXPECT_EQ(object.IsDirty(), S_OK);
    stream.FailNth(StreamOperation::Write, 2, E_FAIL);
    EXPECT_EQ(object.Save(&stream, TRUE), E_FAIL);
    EXPECT_EQ(object.IsDirty(), S_OK);
    EXPECT_EQ(object.Save(&stream, TRUE), S_OK);
    EXPECT_EQ(object.IsDirty(), S_FALSE);
    EXPECT_EQ(object.Save(&stream, FALSE), S_OK); // a copy for somebody else leaves the flag as it is
    EXPECT_EQ(object.IsDirty(), S_FALSE);
}

TEST_F(PersistStreamTest, ASuccessfulLoadClearsTheDirtyFlagAndAFailedOneLeavesIt) {
    ASSERT_EQ(object.Save(&stream, TRUE), S_OK);
    object.MarkDirty();
    stream.SetBytes(stream.Bytes());
    stream.FailNth(StreamOperation::Read, 2, STG_E_READFAULT);
    EXPECT_EQ(object.Load(&stream), STG_E_READFAULT);
    EXPECT_EQ(object.IsDirty(), S_OK);
    stream.SetBytes(stream.Bytes());
    EXPECT_EQ(object.Load(&stream), S_OK);
    EXPECT_EQ(object.IsDirty(), S_FALSE);
}

TEST_F(PersistStreamTest, ExceptionInTheBodyBecomesAnHresult) {
    ASSERT_EQ(object.Save(&stream, TRUE), S_OK);
    stream.SetBytes(stream.Bytes());
    object.throwOnUse = true;
    EXPECT_EQ(object.Load(&stream), E_UNEXPECTED);
    EXPECT_EQ(object.Save(&stream, TRUE), E_UNEXPECTED);
}

} // namespace
