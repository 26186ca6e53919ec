// Error messages of devices.
#ifndef XO_STREAM_DEVICEMESSAGE_H
#define XO_STREAM_DEVICEMESSAGE_H

namespace xo::stream {

// Writes a CRITICAL line to the log. Without a log it does nothing, where a log object would print to standard output,
// which belongs to the host.
void report(const char* message);

}  // namespace xo::stream

#endif
