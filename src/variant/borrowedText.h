// Variants that show a text which is not theirs.
#ifndef XO_VARIANT_LENTTEXT_H
#define XO_VARIANT_LENTTEXT_H

#include <string>

#include "xoSystem/xoVariant.h"

namespace xo::variant {

struct LentText {
    // Makes the variant a STRING of a text that stays its owner's and outlives the variant, or whatever the variant is
    // moved to: show such variants only as constant ones. Copies have a text of their own.
    static void put(xoVariant& value, std::string& text) noexcept {
        xoVariant lent;
        lent.mType = xoVariant::STRING;
        lent.mIsLent = true;
        lent.mPayload.text = &text;
        value.swap(lent);
    }
};

}  // namespace xo::variant

#endif
