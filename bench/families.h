// The families that are measured, one source each.
#ifndef XO_BENCH_FAMILIES_H
#define XO_BENCH_FAMILIES_H

#include "harness.h"

namespace bench {

void measureLog(Suite& suite);

}  // namespace bench

#endif
