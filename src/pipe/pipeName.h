// Makes and checks the names of pipes.
#ifndef XO_PIPE_PIPENAME_H
#define XO_PIPE_PIPENAME_H

#include <string>
#include <string_view>

namespace xo::pipe {

// The full name, "\\.\pipe\...", of a bare one or of one with that prefix. Empty when the name is invalid.
std::wstring fullName(std::string_view name);

// A full name with a random UUID, which other processes cannot guess.
std::wstring randomName();

}  // namespace xo::pipe

#endif
