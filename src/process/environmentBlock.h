// A child's environment in the form that CreateProcessW takes.
#ifndef XO_PROCESS_ENVIRONMENTBLOCK_H
#define XO_PROCESS_ENVIRONMENTBLOCK_H

#include <string>
#include <vector>

namespace xo::process {

// The UTF-8 entries, each NAME=value, sorted by name without regard to case, each with a terminating NUL, and one more
// NUL at the end. Of entries with the same name the last one stays.
//
// Empty when an entry is not UTF-8, has a NUL inside or has no "=" behind its first character: the child would not get
// the environment that the caller asked for. A valid block is never empty, not even one without entries. At the first
// character, "=" begins the name of a drive's working folder
// ("=C:").
std::wstring makeEnvironmentBlock(const std::vector<std::string>& entries);

}  // namespace xo::process

#endif
