// SplitOutputs: the files of "--split", one after the other. Each asks the muxer for the next one when its own first
// byte is written, on the thread that writes, so that no keyframe passes in between; a file is created when it begins.
//
// Owner: the job, for longer than the graph runs. Threads: the muxer's; Parts after the graph was stopped.
// Errors: what a file cannot do is its stream's answer, and so the muxer's event.
#pragma once

#include <string>
#include <vector>

#include "client/module_config.h"
#include "mkvmux/file_stream.h"
#include "mkvmux/options.h"
#include "win/com_ptr.h"
#include "win/critical_section.h"

namespace mkvmux {

class SplitOutputs {
  public:
    // The options' output is the pattern of the names.
    SplitOutputs(const Options& options, const win::ComPtr<IBaseFilter>& muxer);
    SplitOutputs(const SplitOutputs&) = delete;
    SplitOutputs& operator=(const SplitOutputs&) = delete;

    // The file of that name is the first one; it outlives the graph's run.
    void Begin(CFileStream& first);

    struct Part {
        std::wstring path;
        UINT64 bytes = 0;
    };
    // Those behind the first one.
    [[nodiscard]] std::vector<Part> Parts();
    // The first of them that could not be created or written; empty when there is none.
    [[nodiscard]] std::wstring FailedPart();

  private:
    void AskForNext();
    void BeginPart(CFileStream& stream, const std::wstring& path);
    void LetGoOfFinished() QRX_REQUIRES(m_lock);
    void NoteFailure() QRX_REQUIRES(m_lock);

    struct OpenPart {
        size_t index; // in m_parts
        win::ComPtr<CFileStream> stream;
    };

    const SplitOptions m_split;
    const std::wstring m_pattern;
    const bool m_overwrite;
    const client::ModuleConfig m_config;
    win::CriticalSection m_lock;
    std::vector<Part> m_parts QRX_GUARDED_BY(m_lock);    // that were begun
    std::vector<OpenPart> m_open QRX_GUARDED_BY(m_lock); // of these, those that may not be finished
    std::wstring m_failed QRX_GUARDED_BY(m_lock);
    UINT32 m_asked = 1; // parts that the muxer has or was asked to begin
};

} // namespace mkvmux
