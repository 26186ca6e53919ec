// Sends reports to the logs.
#ifndef XO_FAULT_REPORT_H
#define XO_FAULT_REPORT_H

#include <string>
#include <string_view>

namespace xo::fault {

// Sends the text to the event log of the system and to the library's log, as CRITICAL. A fault in sending it is
// reported by its first line; a fault in sending that line is ignored. Does not throw.
void emitReport(const std::string& text);
void emitReport(std::string_view prefix, std::string_view text);

// Whether the calling thread is sending a report. A fault is reported without a stack trace then.
bool isReporting();

}  // namespace xo::fault

#endif
