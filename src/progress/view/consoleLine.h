// Composes the lines of the console view.
#ifndef XO_PROGRESS_VIEW_CONSOLELINE_H
#define XO_PROGRESS_VIEW_CONSOLELINE_H

#include <string>
#include <string_view>

#include "xoSystem/xoProgress.h"

namespace xo::progress {

// The largest number of columns that any console needs for a printable text. For each cluster (one visible character)
// that is its width or its number of UTF-16 units, whichever is greater: consoles without support for wide characters
// show each unit in a cell of its own.
std::size_t consoleColumns(std::string_view text);

// The line with the bar, at most `columns` wide if that is possible; `tick` moves the bar of a work without a known
// total. The line for output that is not a console, and the line at the end of a work. None has a line end. Control
// characters in the texts of a state are replaced, so that they cannot control the terminal.
std::string barLine(const xoProgressState& state, std::size_t columns, unsigned tick);
std::string plainLine(const xoProgressState& state);
std::string endLine(const xoProgressState& state);

}  // namespace xo::progress

#endif
