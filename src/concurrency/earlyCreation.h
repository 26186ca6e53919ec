// What this room needs to know about the state of the start-up. src/frame, which knows it, defines the functions: a
// room includes only rooms below it, so this one cannot call that one directly.
#ifndef XO_CONCURRENCY_EARLYCREATION_H
#define XO_CONCURRENCY_EARLYCREATION_H

namespace xo::concurrency {

// Logs the text as CRITICAL when the library is not fully initialised and a log exists.
void warnIfCreatedEarly(const char* text);

// The same as IsXoSystemThreadSafe().
bool isFullyInitialized();

}  // namespace xo::concurrency

#endif
