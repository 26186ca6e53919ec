// Uses the C++ runtime and not the library.
#include <iostream>
#include <string>

int main(int count, char** arguments) {
    const std::string text(arguments[0]);
    std::cout.flush();
    return count == 1 && !text.empty() ? 0 : 1;
}
