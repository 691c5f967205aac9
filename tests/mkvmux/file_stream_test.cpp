#include "mkvmux/file_stream.h"

#include <array>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/mkvmux/com_test.h"
#include "tests/mkvmux/temporary_file.h"
#include "win/com_ptr.h"

namespace mkvmux {
namespace {

using test_mkvmux::TemporaryFile;

constexpr INT64 kFiveGiB = INT64{5} * 1024 * 1024 * 1024;

LARGE_INTEGER Offset(INT64 bytes) {
    LARGE_INTEGER value{};
    value.QuadPart = bytes;
    return value;
}

class FileStream : public test_mkvmux::ComTest {
  protected:
    FileStream() : m_file(L".bin"), m_implementation(new CFileStream(nullptr)) {
        m_implementation->NonDelegatingQueryInterface(IID_IStream, m_stream.PutVoid());
    }
    void TearDown() override {
        m_stream.Reset();
        ComTest::TearDown();
    }

    HRESULT Create() { return m_implementation->Create(m_file.Path(), false); }
    HRESULT Write(std::string_view text) {
        return m_stream->Write(text.data(), static_cast<ULONG>(text.size()), nullptr);
    }
    HRESULT Seek(INT64 move, DWORD origin) { return m_stream->Seek(Offset(move), origin, nullptr); }
    UINT64 Position() {
        ULARGE_INTEGER position{};
        EXPECT_EQ(m_stream->Seek(Offset(0), STREAM_SEEK_CUR, &position), S_OK);
        return position.QuadPart;
    }

    TemporaryFile m_file;
    win::ComPtr<IStream> m_stream;
    CFileStream* m_implementation; // not owned: m_stream holds it
};

TEST_F(FileStream, WritesWhereItWasSoughtTo) {
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(Write("0123456789"), S_OK);
    EXPECT_EQ(Seek(2, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Write("ab"), S_OK);
    EXPECT_EQ(Seek(1, STREAM_SEEK_CUR), S_OK);
    EXPECT_EQ(Write("c"), S_OK);
    EXPECT_EQ(Seek(-1, STREAM_SEEK_END), S_OK);
    EXPECT_EQ(Write("def"), S_OK);
    EXPECT_EQ(Position(), 12u);
    EXPECT_EQ(m_implementation->WrittenEnd(), 12u);
    m_stream.Reset();
    EXPECT_EQ(m_file.Content(), "01ab4c678def");
}

TEST_F(FileStream, ReadsBackAndStopsAtTheEnd) {
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(Write("hello"), S_OK);
    EXPECT_EQ(Seek(1, STREAM_SEEK_SET), S_OK);
    std::array<char, 8> buffer{};
    ULONG got = 99;
    EXPECT_EQ(m_stream->Read(buffer.data(), 3, &got), S_OK);
    EXPECT_EQ(std::string(buffer.data(), got), "ell");
    EXPECT_EQ(m_stream->Read(buffer.data(), 8, &got), S_FALSE);
    EXPECT_EQ(std::string(buffer.data(), got), "o");
    EXPECT_EQ(m_stream->Read(buffer.data(), 8, &got), S_FALSE);
    EXPECT_EQ(got, 0u);
}

TEST_F(FileStream, GoesBeyond4GiB) {
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(Write("head"), S_OK);
    EXPECT_EQ(Seek(kFiveGiB, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Write("far"), S_OK);
    EXPECT_EQ(Position(), static_cast<UINT64>(kFiveGiB) + 3);
    EXPECT_EQ(m_implementation->WrittenEnd(), static_cast<UINT64>(kFiveGiB) + 3);
    // Back to the head, as the muxer does at the end, and out again.
    EXPECT_EQ(Seek(1, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Write("E"), S_OK);
    EXPECT_EQ(Seek(-3, STREAM_SEEK_END), S_OK);
    std::array<char, 3> buffer{};
    EXPECT_EQ(m_stream->Read(buffer.data(), 3, nullptr), S_OK);
    EXPECT_EQ(std::string(buffer.data(), 3), "far");
    EXPECT_EQ(Seek(0, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(m_stream->Read(buffer.data(), 3, nullptr), S_OK);
    EXPECT_EQ(std::string(buffer.data(), 3), "hEa");
    STATSTG statistics{};
    EXPECT_EQ(m_stream->Stat(&statistics, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(statistics.cbSize.QuadPart, static_cast<UINT64>(kFiveGiB) + 3);
}

TEST_F(FileStream, RefusesAnExistingFileUnlessItMayOverwrite) {
    m_file.SetContent("precious");
    EXPECT_EQ(Create(), HRESULT_FROM_WIN32(ERROR_FILE_EXISTS));
    EXPECT_EQ(m_file.Content(), "precious");
    EXPECT_EQ(m_implementation->Create(m_file.Path(), true), S_OK);
    EXPECT_EQ(Write("new"), S_OK);
    m_stream.Reset();
    EXPECT_EQ(m_file.Content(), "new");
}

TEST_F(FileStream, SaysWhyAFileCannotBeCreated) {
    EXPECT_EQ(m_implementation->Create(m_file.Path() + L"\\no\\such.mkv", false),
              HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
}

TEST_F(FileStream, ASeekBeforeTheStartFailsAndMovesNothing) {
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(Write("abc"), S_OK);
    EXPECT_EQ(Seek(-4, STREAM_SEEK_CUR), HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(Seek(-1, STREAM_SEEK_SET), HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(Seek(INT64_MIN, STREAM_SEEK_END), HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(Seek(INT64_MAX, STREAM_SEEK_CUR), HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(Seek(0, 3), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Position(), 3u);
}

TEST_F(FileStream, TheFirstFailureIsKeptAndReportedOnce) {
    std::vector<HRESULT> reported;
    m_implementation->SetFailureHandler([&reported](HRESULT hr) { reported.push_back(hr); });
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(m_implementation->FirstFailure(), S_OK);
    EXPECT_EQ(Seek(-1, STREAM_SEEK_SET), HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(Seek(0, 3), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(m_implementation->FirstFailure(), HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK));
    EXPECT_EQ(reported, std::vector<HRESULT>{HRESULT_FROM_WIN32(ERROR_NEGATIVE_SEEK)});
}

TEST_F(FileStream, AWriteWithoutAFileFailsWithTheSystemsReason) {
    ULONG written = 99;
    EXPECT_EQ(m_stream->Write("x", 1, &written), HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE));
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(m_implementation->FirstFailure(), HRESULT_FROM_WIN32(ERROR_INVALID_HANDLE));
}

TEST_F(FileStream, SetSizeCutsAndExtendsWithoutMovingThePosition) {
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(Write("abcdef"), S_OK);
    ULARGE_INTEGER size{};
    size.QuadPart = 3;
    EXPECT_EQ(m_stream->SetSize(size), S_OK);
    EXPECT_EQ(Position(), 6u);
    EXPECT_EQ(Seek(3, STREAM_SEEK_SET), S_OK);
    EXPECT_EQ(Write("X"), S_OK);
    size.QuadPart = 6;
    EXPECT_EQ(m_stream->SetSize(size), S_OK);
    m_stream.Reset();
    EXPECT_EQ(m_file.Content(), std::string("abcX\0\0", 6));
}

TEST_F(FileStream, StatTellsNameSizeAndKind) {
    ASSERT_EQ(Create(), S_OK);
    EXPECT_EQ(Write("abcd"), S_OK);
    STATSTG statistics{};
    ASSERT_EQ(m_stream->Stat(&statistics, STATFLAG_DEFAULT), S_OK);
    EXPECT_EQ(statistics.type, static_cast<DWORD>(STGTY_STREAM));
    EXPECT_EQ(statistics.cbSize.QuadPart, 4u);
    EXPECT_EQ(std::wstring(statistics.pwcsName), m_file.Path());
    CoTaskMemFree(statistics.pwcsName);
    ASSERT_EQ(m_stream->Stat(&statistics, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(statistics.pwcsName, nullptr);
}

TEST_F(FileStream, NullPointersAreRefused) {
    ASSERT_EQ(Create(), S_OK);
    ULONG count = 99;
    EXPECT_EQ(m_stream->Write(nullptr, 1, &count), STG_E_INVALIDPOINTER);
    EXPECT_EQ(count, 0u);
    count = 99;
    EXPECT_EQ(m_stream->Read(nullptr, 1, &count), STG_E_INVALIDPOINTER);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(m_stream->Stat(nullptr, STATFLAG_NONAME), STG_E_INVALIDPOINTER);
    EXPECT_EQ(m_stream->Clone(nullptr), STG_E_INVALIDPOINTER);
    EXPECT_EQ(m_implementation->FirstFailure(), S_OK);
}

TEST_F(FileStream, WhatAFileCannotDoIsNotImplemented) {
    ASSERT_EQ(Create(), S_OK);
    IStream* clone = m_stream.Get();
    EXPECT_EQ(m_stream->Clone(&clone), E_NOTIMPL);
    EXPECT_EQ(clone, nullptr);
    EXPECT_EQ(m_stream->CopyTo(m_stream.Get(), {}, nullptr, nullptr), E_NOTIMPL);
    EXPECT_EQ(m_stream->LockRegion({}, {}, LOCK_WRITE), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(m_stream->UnlockRegion({}, {}, LOCK_WRITE), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(m_stream->Revert(), S_OK);
    EXPECT_EQ(m_stream->Commit(STGC_DEFAULT), S_OK);
}

// Both ends of one, without a name.
struct Pipe {
    Pipe() { EXPECT_NE(FALSE, CreatePipe(reader.Put(), writer.Put(), nullptr, 0)); }
    win::FileHandle reader;
    win::FileHandle writer;
};

TEST_F(FileStream, APipeTakesBytesOneBehindTheOtherAndRefusesToSeek) {
    Pipe pipe;
    std::vector<HRESULT> reported;
    m_implementation->SetFailureHandler([&reported](HRESULT hr) { reported.push_back(hr); });
    m_implementation->TakePipe(std::move(pipe.writer));
    EXPECT_EQ(Seek(0, STREAM_SEEK_SET), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Write("live"), S_OK);
    EXPECT_EQ(Seek(0, STREAM_SEEK_CUR), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Seek(0, STREAM_SEEK_END), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(Write("bytes"), S_OK);
    EXPECT_EQ(m_implementation->WrittenEnd(), 9u);
    EXPECT_EQ(m_implementation->FirstFailure(), S_OK) << "that is no failure";
    EXPECT_TRUE(reported.empty());
    std::array<char, 16> buffer{};
    DWORD got = 0;
    EXPECT_NE(FALSE, ReadFile(pipe.reader.Get(), buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr));
    EXPECT_EQ(std::string(buffer.data(), got), "livebytes");
}

TEST_F(FileStream, APipeWhoseReaderHasLeftFailsEachWriteAndTellsOnce) {
    Pipe pipe;
    std::vector<HRESULT> reported;
    m_implementation->SetFailureHandler([&reported](HRESULT hr) { reported.push_back(hr); });
    m_implementation->TakePipe(std::move(pipe.writer));
    pipe.reader.Reset();
    const HRESULT failed = Write("nobody");
    EXPECT_TRUE(FAILED(failed));
    EXPECT_EQ(Write("hears"), failed);
    EXPECT_EQ(m_implementation->FirstFailure(), failed);
    EXPECT_EQ(reported, std::vector<HRESULT>{failed});
}

TEST_F(FileStream, WritesOfSeveralThreadsNeverMix) {
    constexpr int kThreads = 4;
    constexpr int kWritesEach = 200;
    constexpr ULONG kBlockBytes = 64;
    ASSERT_EQ(Create(), S_OK);
    {
        std::vector<std::jthread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([this, t] {
                const std::string block(kBlockBytes, static_cast<char>('a' + t));
                for (int i = 0; i < kWritesEach; ++i) {
                    EXPECT_EQ(Write(block), S_OK);
                }
            });
        }
    }
    m_stream.Reset();
    const std::string content = m_file.Content();
    ASSERT_EQ(content.size(), size_t{kThreads} * kWritesEach * kBlockBytes);
    std::array<int, kThreads> blocks{};
    for (size_t at = 0; at < content.size(); at += kBlockBytes) {
        EXPECT_EQ(content.substr(at, kBlockBytes), std::string(kBlockBytes, content[at]));
        ++blocks.at(static_cast<size_t>(content[at] - 'a'));
    }
    for (const int count : blocks) {
        EXPECT_EQ(count, kWritesEach);
    }
}

} // namespace
} // namespace mkvmux
