// Variants that refer to a text which they do not own.
#ifndef XO_VARIANT_BORROWEDTEXT_H
#define XO_VARIANT_BORROWEDTEXT_H

#include <string>

#include "xoSystem/xoVariant.h"

namespace xo::variant {

struct BorrowedText {
    // Makes the variant a STRING that refers to the text. The text must outlive the variant and every variant that it
    // is moved to, so callers get such variants only as constants. A copy of the variant owns a copy of the text.
    static void put(xoVariant& value, std::string& text) noexcept {
        xoVariant borrowing;
        borrowing.mType = xoVariant::STRING;
        borrowing.mIsBorrowed = true;
        borrowing.mPayload.text = &text;
        value.swap(borrowing);
    }
};

}  // namespace xo::variant

#endif
