// The public functions for texts in a terminal. Their rules are in text/displayWidth.cpp.
#include "text/displayWidth.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {

std::size_t xoStringUtils::GetDisplayWidth(const std::string& text) { return text::displayWidth(text); }

std::string& xoStringUtils::MakePrintable(std::string& text) {
    text::makePrintable(text);
    return text;
}

std::string& xoStringUtils::CutToDisplayWidth(std::string& text, std::size_t columns, const std::string& mark,
                                              bool inMiddle) {
    text::cutToWidth(text, columns, mark, inMiddle);
    return text;
}

}  // namespace xo
