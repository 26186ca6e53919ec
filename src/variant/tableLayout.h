// Makes the text of a table: finds the columns' widths, breaks or cuts the cells and draws the lines.
#ifndef XO_VARIANT_TABLELAYOUT_H
#define XO_VARIANT_TABLELAYOUT_H

#include <string>

#include "variant/tableContent.h"

namespace xo::variant {

// Lines end with "\n". Empty without columns, and without both rows and titles.
std::string layOut(const TableContent& content);

}  // namespace xo::variant

#endif
