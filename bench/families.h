// The families that are measured, one source each.
#ifndef XO_BENCH_FAMILIES_H
#define XO_BENCH_FAMILIES_H

#include "harness.h"

namespace bench {

void measureAmounts(Suite& suite);  // the families numbers and enums
void measureCsv(Suite& suite);
void measureFiles(Suite& suite);
void measureIni(Suite& suite);
void measureLog(Suite& suite);
void measureMemory(Suite& suite);
void measureNumbers(Suite& suite);  // part of the text family
void measurePipe(Suite& suite);     // and children that print
void measureProcess(Suite& suite);
void measureProgress(Suite& suite);
void measureStream(Suite& suite);
void measureTables(Suite& suite);
void measureText(Suite& suite);
void measureThreads(Suite& suite);
void measureUtil(Suite& suite);
void measureVariant(Suite& suite);

// What a child of measurePipe does: prints that many bytes.
int writeOutput(std::uint64_t size);

}  // namespace bench

#endif
