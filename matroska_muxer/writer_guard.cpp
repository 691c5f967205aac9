#include "matroska_muxer/writer_guard.h"

#include <exception>
#include <new>
#include <string_view>

#include <qrx_mkvmuxer.h>

#include "log/logger.h"
#include "mkv/webm_refusal.h"
#include "mkv/writer_errors.h"

namespace {

HRESULT ResultOfText(std::string_view text) {
    const bool unsupported = text == mkv::kUnsupportedCodecError || text == mkv::kUnsupportedTypeError;
    return unsupported ? VFW_E_INVALIDMEDIATYPE : E_FAIL;
}

HRESULT ResultOf(const mkv::NotWebmError& error) {
    return error.input ? MuxNotWebmInput(*error.input) : MUX_E_NOT_WEBM_ATTACHMENT;
}

void Log(const WCHAR* step, std::string_view text) noexcept {
    try {
        const WideString wide(text.begin(), text.end());
        g_Logger << OLESTR("CMatroskaMuxer::") << step << OLESTR(" failed: ") << wide.c_str() << OLESTR("\r\n");
    } catch (const std::bad_alloc&) {
        return; // the log is no error channel
    }
}

} // namespace

HRESULT ResultOfWriterException(const WCHAR* step) noexcept {
    try {
        throw;
    } catch (const char* text) {
        Log(step, text);
        return ResultOfText(text);
    } catch (const std::bad_alloc&) {
        Log(step, "out of memory");
        return E_OUTOFMEMORY;
    } catch (const mkv::NotWebmError& error) {
        Log(step, error.what());
        return ResultOf(error);
    } catch (const std::exception& error) {
        Log(step, error.what());
        return E_FAIL;
    } catch (...) {
        Log(step, "unknown exception");
        return E_FAIL;
    }
}
