// What this room needs to know of the library's life, told by the room that runs it.
#ifndef XO_CONCURRENCY_EARLYCREATION_H
#define XO_CONCURRENCY_EARLYCREATION_H

namespace xo::concurrency {

// Logs the text as CRITICAL when the library is not fully initialised and a log exists. Defined beside start-up.
void warnIfCreatedEarly(const char* text);

// IsXoSystemThreadSafe() for rooms below start-up. Defined beside it.
bool isFullyInitialized();

}  // namespace xo::concurrency

#endif
