// Makes the text of a table: finds the columns' widths, breaks or cuts the cells and draws the lines.
#ifndef XO_VARIANT_TABLELAYOUT_H
#define XO_VARIANT_TABLELAYOUT_H

#include <string>

#include "variant/tableContent.h"

namespace xo::variant {

std::string layOut(const TableContent& content);

}  // namespace xo::variant

#endif
