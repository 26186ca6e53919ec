// Where reports go.
#ifndef XO_FAULT_REPORT_H
#define XO_FAULT_REPORT_H

#include <string>
#include <string_view>

namespace xo::fault {

// Sends the text to the event log of the system and to the library's log, as CRITICAL. What faults there is reported in
// turn, by its first line alone, and a fault in that is the end of it. Nothing comes out of it.
void emitReport(const std::string& text);
void emitReport(std::string_view prefix, std::string_view text);

// Whether the calling thread is sending a report: what fails in that is told in a line.
bool isReporting();

}  // namespace xo::fault

#endif
