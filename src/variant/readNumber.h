// Recognises numbers in texts of an unknown type.
#ifndef XO_VARIANT_READNUMBER_H
#define XO_VARIANT_READNUMBER_H

#include <string_view>

#include "xoSystem/xoVariant.h"

namespace xo::variant {

// Makes the variant INTEGER or REAL if the whole text can be read as one, by the rules of xoVariant::BuildFromString.
// Otherwise returns false and leaves the variant unchanged.
bool readNumber(std::string_view text, xoVariant& number);

}  // namespace xo::variant

#endif
