// What a crash looks like to a host that runs its work under the guard.
#ifndef CATALOGUE_CRASH_H
#define CATALOGUE_CRASH_H

namespace catalogue {

// Writes through a null pointer under the guard, and carries on. True when the crash became an exception.
bool surviveCrash();

}  // namespace catalogue

#endif
