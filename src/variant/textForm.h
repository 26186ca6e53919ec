// The text forms of variants, appended to an existing string.
#ifndef XO_VARIANT_TEXTFORM_H
#define XO_VARIANT_TEXTFORM_H

#include <string>
#include <string_view>

#include "variant/treeCursor.h"

namespace xo::variant {

// What xoVariant::toString returns.
void appendText(std::string& out, const xoVariant& value);

// Appends all elements from the cursor to the end of its container. The separator is for the elements of the outermost
// list; lists inside use " ".
void appendTree(std::string& out, TreeCursor tree, std::string_view listSeparator = " ");

}  // namespace xo::variant

#endif
