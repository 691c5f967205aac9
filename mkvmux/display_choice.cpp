#include "mkvmux/display_choice.h"

#include "mkvmux/console.h"

namespace mkvmux {

namespace {

bool IsRun(const Options& options) {
    return options.repair.empty() && options.report.empty();
}

} // namespace

ProgressDisplay MakeDisplay(const Options& options) {
    using Style = ProgressDisplay::Style;
    Style style = Console::IsTerminal() ? Style::Bar : Style::Lines;
    if (options.progress == ProgressMode::Never || (options.progress == ProgressMode::Auto && options.quiet)) {
        style = Style::None;
    }
    if (style == Style::Bar && IsRun(options) && options.verbose) {
        style = Style::None; // the other line is redrawn
    }
    return ProgressDisplay(style, Console::TerminalColumns(), Console::Print);
}

StatusDisplay MakeStatusDisplay(const Options& options) {
    using Style = StatusDisplay::Style;
    Style style = Console::IsTerminal() ? Style::Redrawn : Style::Lines;
    if (!options.verbose || options.progress == ProgressMode::Never) {
        style = Style::None;
    }
    return StatusDisplay(style, Console::Print);
}

} // namespace mkvmux
