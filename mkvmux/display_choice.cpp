#include "mkvmux/display_choice.h"

#include "mkvmux/console.h"

namespace mkvmux {

ProgressDisplay MakeDisplay(const Options& options) {
    using Style = ProgressDisplay::Style;
    Style style = Console::IsTerminal() ? Style::Bar : Style::Lines;
    if (options.progress == ProgressMode::Never || (options.progress == ProgressMode::Auto && options.quiet)) {
        style = Style::None;
    }
    return ProgressDisplay(style, Console::TerminalColumns(), Console::Print);
}

} // namespace mkvmux
