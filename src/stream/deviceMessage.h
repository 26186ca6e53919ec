// What a device has to say to the log.
#ifndef XO_STREAM_DEVICEMESSAGE_H
#define XO_STREAM_DEVICEMESSAGE_H

namespace xo::stream {

// Writes a CRITICAL line. Without a log it is dropped: standard output belongs to the host.
void report(const char* message);

}  // namespace xo::stream

#endif
