// Writes behind a block, as nobody should; with the check of the heap that ends the program.
#include <cstdlib>

int main() {
    auto* const block = static_cast<volatile char*>(std::malloc(8));
    block[8] = 1;
    std::free(const_cast<char*>(block));
    return 0;
}
