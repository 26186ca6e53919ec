// A child's environment in the form in which Windows takes it.
#ifndef XO_PROCESS_ENVIRONMENTBLOCK_H
#define XO_PROCESS_ENVIRONMENTBLOCK_H

#include <string>
#include <vector>

namespace xo::process {

// The UTF-8 entries, each NAME=value, sorted by name without regard to case, each with a NUL behind it and another one
// behind the last. Of entries with one name the last stays. Empty when some entry is not UTF-8, has a NUL inside or no
// "=" behind its first character, where the name of a drive's working folder ("=C:") has its own: the child would not
// get what was meant, so the caller must hear of it.
std::wstring makeEnvironmentBlock(const std::vector<std::string>& entries);

}  // namespace xo::process

#endif
