// Questions about start-up from the rooms below it. src/frame defines the functions.
#ifndef XO_CONCURRENCY_EARLYCREATION_H
#define XO_CONCURRENCY_EARLYCREATION_H

namespace xo::concurrency {

// Logs the text as CRITICAL when the library is not fully initialised and a log exists.
void warnIfCreatedEarly(const char* text);

// The same as IsXoSystemThreadSafe().
bool isFullyInitialized();

}  // namespace xo::concurrency

#endif
