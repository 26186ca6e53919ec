// The exported masks that are variables and not constants.
#ifndef XO_UTIL_LANEMASKS_H
#define XO_UTIL_LANEMASKS_H

namespace xo::util {

// Sets the exported lane masks of xoVectorConstants.h. Called by basic initialisation.
void writeLaneMasks();

}  // namespace xo::util

#endif
