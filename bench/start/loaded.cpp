// Loads the library and does not initialise it.
#include "xoSystem/xoVersion.h"

int main() { return xoSystem::Version::GetMajor() == 0; }
