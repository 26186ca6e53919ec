// Brings the library up and down in full.
#include "xoSystem/xoInit.h"

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::terminateXoSystem();
    return 0;
}
