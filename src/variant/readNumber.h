// Whether a text that nobody typed is a number.
#ifndef XO_VARIANT_NUMBERGUESS_H
#define XO_VARIANT_NUMBERGUESS_H

#include <string_view>

#include "xoSystem/xoVariant.h"

namespace xo::variant {

// The part of xoVariant::BuildFromString that allocates nothing: makes the variant INTEGER or REAL where that reads the
// whole text, and otherwise leaves it alone and returns false.
bool readNumber(std::string_view text, xoVariant& number);

}  // namespace xo::variant

#endif
