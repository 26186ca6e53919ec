// The ratios that this library wants to stay below, of ours over the other's.
#ifndef XO_BENCH_AIMS_H
#define XO_BENCH_AIMS_H

#include "harness.h"

namespace bench {

constexpr Aim kAims[] = {
    {"csv", "read 100 MB, a byte, typed", "boost", 0.25},
    {"csv", "read 100 MB, a byte, typed", "limit: heap string", 1.5},
    {"csv", "read 100 MB, a byte, texts, watched", "not watched", 1.01},
    {"csv", "write 10 million cells", "fmt", 1.0},
    {"files", "collect", "std::filesystem", 0.35},
    {"files", "collect", "limit: FindFirstFileW", 1.1},
    {"files", "index 20000", "limit: FileSystemVisitor", 1.15},
    {"ini", "load and read 60 keys", "SimpleIni", 0.75},
    {"ini", "load and read 20000 keys", "SimpleIni", 0.25},
    {"ini", "load and read 20000 keys", "ifstream", 0.4},
    {"log", "suppressed line", "spdlog", 0.8},
    {"log", "line to a handler", "spdlog", 0.5},
    {"log", "line to a file, one process", "limit: CreateFile", 1.1},
    {"log", "line to an open file", "spdlog, flushed", 1.0},
    {"log", "line to an open file", "spdlog, rotating, flushed", 1.0},
    {"numbers", "bytes to text", "fmt", 1.0},
    {"numbers", "SI to text", "fmt", 1.0},
    {"numbers", "duration to text", "fmt", 2.0},
    {"pipe", "64 bytes there and back", "limit: overlapped calls", 1.1},
    {"pipe", "64 bytes there and back", "limit: synchronous calls", 1.2},
    {"pipe", "write 64 KB, a byte", "limit: overlapped calls", 1.1},
    {"pipe", "capture 256 MB, a byte", "limit: overlapped calls", 1.1},
    {"stream", "write little, memory", "cereal", 0.25},
    {"stream", "write big, memory", "cereal", 0.08},
    {"stream", "read little, memory", "cereal", 0.35},
    {"stream", "read big, memory", "cereal", 0.35},
    {"stream", "write 4 bytes,", "std::fstream", 0.3},
    {"stream", "read 4 bytes,", "std::fstream", 0.3},
    {"stream", "write 64 KiB blocks", "limit: WriteFile", 1.05},
    {"stream", "read 64 KiB blocks", "limit: ReadFile", 1.05},
    {"stream", "100 MiB byte by byte", "std::string", 2.0},
    {"tables", "100,000 rows", "xoCsvStream", 4.0},
    {"text", "split a CSV line", "boost", 0.7},
    {"text", "hex encode", "boost", 0.35},
    {"text", "hex decode", "boost", 0.3},
    {"text", "UTF-8 check, 64 KB of ASCII", "utf8::is_valid", 0.05},
    {"text", "UTF-8 check, 64 KB mixed", "utf8::is_valid", 0.5},
    {"text", "integer to text", "fresh imbued stream", 0.1},
    {"text", "text to real", "strtod", 1.0},
    {"threads", "lock and unlock", "limit: critical section", 1.05},
    {"threads", "native condition, round trip", "std::condition_variable", 0.15},
    {"threads", "job, submitted and awaited", "std queue", 0.25},
    {"threads", "job, in batches", "moodycamel", 1.5},
    {"variant", "findPath", "nlohmann, pointer parsed", 0.25},
    {"variant", "findPath", "nlohmann, pointer built before", 1.0},
    {"variant", "build and drop", "nlohmann", 1.0},
    {"variant", "copy and drop", "nlohmann", 1.0},
    {"variant", "compare equal", "nlohmann", 1.0},
};

}  // namespace bench

#endif
