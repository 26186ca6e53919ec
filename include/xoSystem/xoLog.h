// The process-wide log and the temporary that writes a line into it.
//
//     xoLogObject(xoLogWarning, "net") << "retry " << attempt << " of " << limit;
//
// A line goes to up to three places: a handler of the host, the console (standard output) and a log file that can
// rotate into numbered backups. Handler and file get UTF-8; so does the console. A line is written when its xoLogObject
// goes; it reads
//
//     WARNING(net) : Tue Mar 03 14:05:09 2020 retry 2 of 5
//
// with the local time and without the parentheses when there is no qualifier. Whether a line is wanted is decided when
// its object is made, and one that is not wanted costs little more than that test.
//
// Nothing here throws or reports failure by a result. The log is safe for threads once initializeXoSystem(InitTypeFull)
// or makeThreadSafe has run; before, one thread uses it.
#ifndef XOSYSTEM_XOLOG_H
#define XOSYSTEM_XOLOG_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "xoSystem/xoExport.h"

namespace xo {

// How severe a line is. DEBUG lines are off until they are enabled. Any other number is accepted, always enabled, and
// printed as UNKNOWN.
enum xoLogType : int { xoLogDebug = 0, xoLogInfo = 1, xoLogWarning = 2, xoLogCritical = 3 };

// What installFileHandlerExUtf8 does besides naming the file; the values may be combined.
enum xoLogFileFlag : int {
    xoLogFileTruncate = 1,  // delete the existing file
    xoLogFileRotate = 2,    // only together with xoLogFileTruncate: first move the existing file into the backups
    xoLogFileEcho = 4       // go on writing lines to the console as well
};

class XOSYSTEM_API xoLog {
public:
    // Gets the bare message without the prefix, UTF-8, and the pointer given at installation.
    using CustomHandler = void (*)(const std::string& message, xoLogType type, const std::string& qualifier,
                                   void* user);

    // Makes the log when there is none. Initialisation does this; a host that logs earlier may do it first.
    static void createInstance(bool threadSafe);

    // Destroys the log; afterwards there is none and lines for it go to standard output. No other thread may be
    // logging.
    static void destroyInstance();

    // The log. There must be one: ask editPtr when that is not sure.
    static const xoLog& get() { return *msInstance; }
    static xoLog& edit() { return *msInstance; }

    // The log, or null when there is none.
    static xoLog* editPtr() { return msInstance; }

    ~xoLog();
    xoLog(const xoLog&) = delete;
    xoLog& operator=(const xoLog&) = delete;

    // Whether lines of a type are wanted; at first all but DEBUG. Safe at any time. A type beyond the four is always
    // wanted.
    void setLogTypeEnabled(xoLogType type, bool enabled) {
        if (hasFlag(type)) mTypeEnabled[type].store(enabled, std::memory_order_relaxed);
    }
    bool isLogTypeEnabled(xoLogType type) const {
        return !hasFlag(type) || mTypeEnabled[type].load(std::memory_order_relaxed);
    }

    // Whether lines go to standard output; at first they do. A real console gets wide text, anything else UTF-8 bytes.
    void setEchoToConsole(bool echo);

    // Switches DEBUG lines by their qualifiers: a list separated by any of blank , ; / \ |. Qualifiers are compared
    // byte by byte. With enabled false they join a blacklist, with true they leave it. The next test of a qualifier
    // writes the whole blacklist, in byte order, as one DEBUG line. Null does nothing. Call it before threads log.
    void setDebugSubTypeEnabled(const char* qualifiers, bool enabled);

    // Whether DEBUG lines of this qualifier are wanted, as far as the blacklist goes. Null always is.
    bool isDebugSubTypeEnabled(const char* qualifier) { return qualifier == nullptr || isQualifierWanted(qualifier); }

    // From now on each line is written under a lock, and a log file under a mutex that all processes share.
    void makeThreadSafe();

    // Appends to the file from now on, without limit of size.
    void installFileHandlerUtf8(const std::string& path) { installFileHandlerExUtf8(path, 0, -1, 0); }

    // Writes lines to the file instead of the one before, and to the console only if flags has xoLogFileEcho. A file
    // that is made here starts with the UTF-8 byte-order mark; an existing one is appended to. The path is made
    // absolute here, so that a later change of the working folder does not move the log.
    //
    // When a line finds the file larger than maxSizeBytes (below 1: no limit), the file becomes "<path>_0.back", the
    // one of that name "<path>_1.back" and so on up to backupCount of them (0 to 128; 0 keeps none), and a new file is
    // begun, without the mark. So a file may exceed the limit by one line. A file that cannot be moved aside, because
    // somebody holds it, grows on.
    // Processes share a file by naming it with the same text; each must be thread-safe.
    //
    // When the file cannot be made, no file is installed and a CRITICAL line says so. An empty path only removes the
    // file. The file is opened and closed for each line; a line that cannot be written is lost to the file alone.
    void installFileHandlerExUtf8(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount);

    // Ends the file, and the echo to the console too, until setEchoToConsole or a flag turns that on again.
    void removeFileHandler();

    // The path as it was installed; empty when there is no file.
    std::string getCurrentLogFileNameUtf8() const;

    // Calls the handler for each line, under the log's lock; null ends it. A handler that logs is called for that line
    // too. What it throws is dropped; a processor fault in it goes to the guard around and leaves the log usable.
    void installCustomHandler(CustomHandler handler, void* user);

    // Writes one line to each place, wanted or not.
    void Write(const std::string& message, xoLogType type, const std::string& qualifier);

    // The local time as in a line: "Tue Mar 03 14:05:09 2020", English whatever the user's language is.
    static std::string GetTime();

    // Writes a line to standard output, without a lock and whether there is a log or not.
    static void WriteToStd(const std::string& message, xoLogType type, const std::string& qualifier);

    // Reports the message, without qualifier, as one event of the Windows event log: error for CRITICAL, warning for
    // WARNING, information otherwise; DEBUG is dropped. Text beyond 16384 bytes of the ANSI code page is cut at a
    // character. An empty source name stands for "xoLog". Takes no lock.
    static void WriteToSystemLog(const std::string& message, xoLogType type, const std::string& qualifier,
                                 const std::string& sourceName);

private:
    friend class xoLogObject;
    struct Private;

    explicit xoLog(bool threadSafe);

    static constexpr std::size_t kTypeCount = 4;
    static bool hasFlag(xoLogType type) { return static_cast<unsigned>(type) < kTypeCount; }

    bool isWanted(xoLogType type, const char* qualifier) {
        return isLogTypeEnabled(type) && (type != xoLogDebug || isDebugSubTypeEnabled(qualifier));
    }
    bool isQualifierWanted(std::string_view qualifier);
    void writePendingNotice();

    static xoLog* msInstance;

    std::unique_ptr<Private> mPrivate;
    std::atomic<bool> mTypeEnabled[kTypeCount];
};

// One line in the making. An object belongs to one thread and is meant as a temporary.
class XOSYSTEM_API xoLogObject {
public:
    // Aims the line at the log, if that wants it. With an event source name it goes to the Windows event log instead,
    // and with neither to standard output, wanted or not. Null and "" both mean no qualifier.
    explicit xoLogObject(xoLogType type, const char* qualifier = nullptr, xoLog* log = xoLog::editPtr(),
                         const char* eventSourceName = nullptr) {
        if (eventSourceName != nullptr || log == nullptr || log->isWanted(type, qualifier))
            begin(type, qualifier, log, eventSourceName);
    }

    // Takes the line over; the source writes nothing.
    xoLogObject(xoLogObject&& other) noexcept : mLine(other.mLine) { other.mLine = nullptr; }

    // Writes the line, if any text came in.
    ~xoLogObject() {
        if (mLine) end();
    }

    xoLogObject(const xoLogObject&) = delete;
    xoLogObject& operator=(const xoLogObject&) = delete;

    // Each appends to the text, if the line is wanted. Null gives "[NullPtr]". Numbers are written in the classic
    // locale, reals with six significant digits, a bool as true or false.
    xoLogObject& operator<<(const char* text) {
        if (mLine) append(text);
        return *this;
    }
    xoLogObject& operator<<(std::string_view text) {
        if (mLine) append(text);
        return *this;
    }
    template <class Number, std::enable_if_t<std::is_arithmetic_v<Number>, int> = 0>
    xoLogObject& operator<<(Number value) {
        static_assert(
            !std::is_same_v<Number, wchar_t> && !std::is_same_v<Number, char16_t> && !std::is_same_v<Number, char32_t>,
            "the log takes UTF-8 text, no wide characters");
        if (mLine) appendNumber(value);
        return *this;
    }
    template <class T>
    xoLogObject& operator<<(const T* pointer) = delete;  // it would print as a bool

private:
    struct Line;

    template <class Number>
    void appendNumber(Number value) {
        if constexpr (std::is_same_v<Number, bool>)
            append(std::string_view(value ? "true" : "false"));
        else if constexpr (std::is_same_v<Number, char>)
            append(std::string_view(&value, 1));
        else if constexpr (std::is_floating_point_v<Number>)
            appendReal(static_cast<double>(value));
        else if constexpr (std::is_signed_v<Number>)
            appendInteger(value);
        else
            appendUnsigned(value);
    }

    void begin(xoLogType type, const char* qualifier, xoLog* log, const char* eventSourceName);
    void end() noexcept;
    void append(const char* text);
    void append(std::string_view text);
    void appendInteger(std::int64_t value);
    void appendUnsigned(std::uint64_t value);
    void appendReal(double value);

    Line* mLine = nullptr;  // null when the line is not wanted
};

}  // namespace xo

#endif
