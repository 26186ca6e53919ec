#ifndef XO_UTIL_LANEMASKS_H
#define XO_UTIL_LANEMASKS_H

namespace xo::util {

// Fills the exported lane masks. Called by start-up.
void writeLaneMasks();

}  // namespace xo::util

#endif
