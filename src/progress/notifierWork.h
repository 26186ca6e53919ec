// The state of a notifier, for the other sources of the library.
#ifndef XO_PROGRESS_NOTIFIERWORK_H
#define XO_PROGRESS_NOTIFIERWORK_H

#include "progress/work.h"

namespace xo::progress {

// The work of a notifier. It lies on the heap, and nothing frees it when a processor fault has ended the function whose
// local variable the notifier was.
Work& workOf(const xoProgressNotifier& notifier);

}  // namespace xo::progress

#endif
