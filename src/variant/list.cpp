// The members of xoVariant's list that are not in the header.
#include "variant/textForm.h"
#include "xoSystem/xoVariant.h"

namespace xo {

// The copy is made before the vector grows: the value may be an element of this list.
xoVariant& xoVariant::xoVariantListImpl::push_back(const xoVariant& value) { return push_back(xoVariant(value)); }

// The value may be an element of this list: emplace_back builds the new element before it moves the others.
xoVariant& xoVariant::xoVariantListImpl::push_back(xoVariant&& value) {
    return mElements.emplace_back(std::move(value));
}

xoVariant::xoVariantListImpl& xoVariant::xoVariantListImpl::operator<<(const xoVariant& value) {
    push_back(value);
    return *this;
}

std::string xoVariant::xoVariantListImpl::toString(std::string_view separator) const {
    std::string text;
    variant::appendTree(text, variant::TreeCursor(*this), separator);
    return text;
}

}  // namespace xo
