// The texts of the console view.
#ifndef XO_PROGRESS_VIEW_CONSOLELINE_H
#define XO_PROGRESS_VIEW_CONSOLELINE_H

#include <string>
#include <string_view>

#include "xoSystem/xoProgress.h"

namespace xo::progress {

// The columns that no console exceeds for a printable text: of each cluster the greater of its width and of its number
// of UTF-16 units, since consoles without support for wide characters show each unit in a cell of its own.
std::size_t consoleColumns(std::string_view text);

// The bar, the line that stands for it where there is no console, and the line at the end of a work.
std::string barLine(const xoProgressState& state, std::size_t columns, unsigned tick);
std::string plainLine(const xoProgressState& state);
std::string endLine(const xoProgressState& state);

}  // namespace xo::progress

#endif
