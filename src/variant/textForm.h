// The texts of variants, appended to what is there.
#ifndef XO_VARIANT_TEXTFORM_H
#define XO_VARIANT_TEXTFORM_H

#include <string>
#include <string_view>

#include "variant/treeCursor.h"

namespace xo::variant {

void appendText(std::string& out, const xoVariant& value);

// The containers inside a list or map use " " between the elements of a list.
void appendTree(std::string& out, TreeCursor tree, std::string_view listSeparator = " ");

}  // namespace xo::variant

#endif
