// What a writer's exception becomes on its way out of the filter: an HRESULT, and a line in the log.
#include <gtest/gtest.h>

#include <new>
#include <optional>
#include <stdexcept>

#include <qrx_mkvmuxer.h>

#include "log/logger.h"
#include "matroska_muxer/writer_guard.h"
#include "mkv/webm_refusal.h"
#include "mkv/writer_errors.h"
#include "tests/log/log_directory.h"

namespace {

template <typename Thrown>
HRESULT ResultOf(const Thrown& thrown) {
    return GuardWriter(OLESTR("Step"), [&]() -> HRESULT { throw thrown; });
}

TEST(WriterGuard, WhatIsAnsweredWithoutAnExceptionGoesThrough) {
    EXPECT_EQ(GuardWriter(OLESTR("Step"), [] { return S_FALSE; }), S_FALSE);
}

TEST(WriterGuard, TypesAndCodecsThatCannotBeWrittenAreInvalidMediaTypes) {
    EXPECT_EQ(ResultOf(mkv::kUnsupportedCodecError), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(ResultOf(mkv::kUnsupportedTypeError), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(ResultOf(mkv::kTrackOutOfRangeError), E_FAIL);
    EXPECT_EQ(ResultOf(mkv::kSeekFailedError), E_FAIL);
}

TEST(WriterGuard, WhatWebmHasNotIsToldByItsInput) {
    EXPECT_EQ(ResultOf(mkv::NotWebmError("input 2 (A_AAC)", 2)), MuxNotWebmInput(2));
    EXPECT_EQ(ResultOf(mkv::NotWebmError("an attachment", std::nullopt)), MUX_E_NOT_WEBM_ATTACHMENT);
}

TEST(WriterGuard, OtherExceptionsAreOutOfMemoryOrFailures) {
    EXPECT_EQ(ResultOf(std::bad_alloc()), E_OUTOFMEMORY);
    EXPECT_EQ(ResultOf(std::runtime_error("surprise")), E_FAIL);
    EXPECT_EQ(ResultOf(7), E_FAIL);
}

TEST(WriterGuard, TheLogTellsStepAndReason) {
    const LogDirectory directory;
    g_Logger.SetEnabled(true);
    ASSERT_NE(g_Logger.OpenNamedLog(directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true), 0);
    (void)ResultOf(mkv::kSeekFailedError);
    (void)ResultOf(std::bad_alloc());
    (void)ResultOf(std::runtime_error("surprise"));
    (void)ResultOf(7);
    (void)ResultOf(mkv::NotWebmError("input 2 (A_AAC)", 2));
    g_Logger.CloseLog();
    g_Logger.SetEnabled(false);
    const std::string log = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    EXPECT_NE(log.find("CMatroskaMuxer::Step failed: CMkvIO::setFilePointer failed\r\n"
                       "CMatroskaMuxer::Step failed: out of memory\r\n"
                       "CMatroskaMuxer::Step failed: surprise\r\n"
                       "CMatroskaMuxer::Step failed: unknown exception\r\n"
                       "CMatroskaMuxer::Step failed: input 2 (A_AAC) cannot go into a WebM file\r\n"),
              std::string::npos)
        << log;
}

} // namespace
