// Console: standard output and standard error as UTF-8 text; a console window gets UTF-16 from us, whatever its
// code page is.
//
// Threads: one. Errors: output that cannot be written is dropped.
#pragma once

#include <string>
#include <string_view>

#include "win/platform.h"

namespace mkvmux {

class Console {
  public:
    explicit Console(bool quiet) : m_quiet(quiet) {}

    // Tracks, progress, results: silent when quiet.
    void Inform(std::string_view text) const;
    // What was asked for by an option (help, version, identification): never silent.
    static void Print(std::string_view text);
    // One line each on standard error: what would break it or command the terminal is shown as a question mark.
    void Warn(std::string_view text);
    static void Fail(std::string_view text);

    [[nodiscard]] bool HasWarned() const { return m_hasWarned; }
    [[nodiscard]] bool IsQuiet() const { return m_quiet; }
    // Whether standard output is a console window, where a line can be redrawn.
    [[nodiscard]] static bool IsTerminal();
    [[nodiscard]] static int TerminalColumns();

  private:
    bool m_quiet;
    bool m_hasWarned = false;
};

} // namespace mkvmux
