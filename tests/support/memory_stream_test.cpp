#include "tests/support/memory_stream.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <optional>

#include "win/com_ptr.h"

namespace test_support {
namespace {

using Data = std::vector<BYTE>;

LARGE_INTEGER Move(INT64 offset) {
    LARGE_INTEGER move{};
    move.QuadPart = offset;
    return move;
}

HRESULT WriteBytes(MemoryStream& stream, const Data& data) {
    return stream.Write(data.data(), static_cast<ULONG>(data.size()), nullptr);
}

TEST(MemoryStreamTest, KeepsOnePositionForReadingAndWriting) {
    MemoryStream stream;
    ULONG written = 0;
    const Data data{1, 2, 3, 4};
    EXPECT_EQ(stream.Write(data.data(), 4, &written), S_OK);
    EXPECT_EQ(written, 4u);
    EXPECT_EQ(stream.Seek(Move(-3), STREAM_SEEK_CUR, nullptr), S_OK);
    BYTE got[8]{};
    ULONG read = 0;
    EXPECT_EQ(stream.Read(got, 2, &read), S_OK);
    EXPECT_EQ(read, 2u);
    EXPECT_EQ(got[0], 2);
    EXPECT_EQ(WriteBytes(stream, {9}), S_OK);
    EXPECT_EQ(stream.Bytes(), (Data{1, 2, 3, 9}));
    EXPECT_EQ(stream.Read(got, 8, &read), S_OK) << "at the end there is nothing, which is no failure";
    EXPECT_EQ(read, 0u);
}

TEST(MemoryStreamTest, AGapBehindTheEndIsFilledWithZeros) {
    MemoryStream stream;
    ULARGE_INTEGER position{};
    EXPECT_EQ(stream.Seek(Move(3), STREAM_SEEK_SET, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 3u);
    EXPECT_TRUE(stream.Bytes().empty()) << "the seek alone changes nothing";
    EXPECT_EQ(WriteBytes(stream, {7}), S_OK);
    EXPECT_EQ(stream.Bytes(), (Data{0, 0, 0, 7}));
    EXPECT_EQ(stream.Seek(Move(-1), STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 3u);
}

TEST(MemoryStreamTest, RefusesPositionsBeforeTheStartAndUnknownOrigins) {
    MemoryStream stream;
    EXPECT_EQ(stream.Seek(Move(-1), STREAM_SEEK_SET, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream.Seek(Move(INT64_MIN), STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream.Seek(Move(0), 3, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(stream.Position(), 0u);
}

TEST(MemoryStreamTest, RecordsEveryCall) {
    MemoryStream stream;
    WriteBytes(stream, {1, 2});
    stream.Seek(Move(5), STREAM_SEEK_SET, nullptr);
    WriteBytes(stream, {3});
    const std::vector<StreamCall> writes = stream.Calls(StreamOperation::Write);
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[1].position, 5u);
    EXPECT_EQ(writes[1].size, 1u);
    ASSERT_EQ(stream.Calls().size(), 3u);
    EXPECT_EQ(stream.Calls()[1].operation, StreamOperation::Seek);
    EXPECT_EQ(stream.Calls()[1].move, 5);
    EXPECT_EQ(stream.Calls()[1].position, 5u);
    stream.SetRecording(false);
    WriteBytes(stream, {4});
    EXPECT_EQ(stream.Calls().size(), 3u);
}

TEST(MemoryStreamTest, FailsTheNthCallOnly) {
    MemoryStream stream;
    stream.FailNth(StreamOperation::Write, 2, E_FAIL);
    EXPECT_EQ(WriteBytes(stream, {1}), S_OK);
    EXPECT_EQ(WriteBytes(stream, {2}), E_FAIL);
    EXPECT_EQ(WriteBytes(stream, {3}), S_OK);
    EXPECT_EQ(stream.Bytes(), (Data{1, 3}));
    EXPECT_EQ(stream.Calls(StreamOperation::Write)[1].result, E_FAIL);
}

TEST(MemoryStreamTest, FailsAllCallsFromTheNthOn) {
    MemoryStream stream;
    stream.FailFrom(StreamOperation::Seek, 2, STG_E_ACCESSDENIED);
    EXPECT_EQ(stream.Seek(Move(1), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(stream.Seek(Move(2), STREAM_SEEK_SET, nullptr), STG_E_ACCESSDENIED);
    EXPECT_EQ(stream.Seek(Move(3), STREAM_SEEK_SET, nullptr), STG_E_ACCESSDENIED);
    EXPECT_EQ(stream.Position(), 1u);
    EXPECT_EQ(WriteBytes(stream, {1}), S_OK) << "other calls go on";
    stream.ClearFailures();
    EXPECT_EQ(stream.Seek(Move(3), STREAM_SEEK_SET, nullptr), S_OK);
}

TEST(MemoryStreamTest, IsFullAtItsCapacity) {
    MemoryStream stream;
    stream.SetCapacity(2);
    EXPECT_EQ(WriteBytes(stream, {1, 2}), S_OK);
    EXPECT_EQ(WriteBytes(stream, {3}), STG_E_MEDIUMFULL);
    stream.Seek(Move(INT64_MAX), STREAM_SEEK_SET, nullptr);
    EXPECT_EQ(WriteBytes(stream, {3}), STG_E_MEDIUMFULL);
    EXPECT_EQ(stream.Bytes().size(), 2u);
}

TEST(MemoryStreamTest, CountsReferences) {
    MemoryStream stream;
    {
        const win::ComPtr<IStream> one(&stream);
        const win::ComPtr<IStream> two = one.Query<IStream>(IID_IStream);
        EXPECT_EQ(stream.References(), 2);
    }
    EXPECT_EQ(stream.References(), 0);
    void* nothing = &stream;
    EXPECT_EQ(stream.QueryInterface(IID_IPin, &nothing), E_NOINTERFACE);
    EXPECT_EQ(nothing, nullptr);
}

TEST(ReferenceCountTest, AHeldReferenceFailsTheTestAtDestruction) {
    static std::optional<ReferenceCount> count;
    count.emplace("something");
    count->Add();
    EXPECT_NONFATAL_FAILURE(count.reset(), "something is destroyed while 1 references are still held");
    count.emplace("something");
    count->Add();
    count->Release();
    count.reset();
}

} // namespace
} // namespace test_support
