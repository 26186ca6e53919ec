// The process-wide log, and the temporary object that writes one line into it.
//
//     xoLogObject(xoLogWarning, "net") << "retry " << attempt << " of " << limit;
//
// A line goes to up to three sinks: a handler of the host, the console (standard output) and a log file that can rotate
// into numbered backups, in this order. All get UTF-8. The line is written when its xoLogObject is destroyed. It reads
//
//     WARNING(net) : Tue Mar 03 14:05:09 2020 retry 2 of 5
//
// with the local time, and without the parentheses when there is no qualifier. Whether a line is wanted is decided when
// its object is constructed; a line that is not wanted costs little more than that test.
//
// Nothing here reports failure by a result. The functions of xoLog throw std::bad_alloc when memory runs out;
// xoLogObject throws nothing: it loses the text that there was no memory for. The log may be used by several threads
// after initializeXoSystem(InitTypeFull) or makeThreadSafe, before that by one thread only.
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

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

// The severity of a line. DEBUG is disabled at first. Any other number is accepted, always enabled, and printed as
// UNKNOWN.
enum xoLogType : int { xoLogDebug = 0, xoLogInfo = 1, xoLogWarning = 2, xoLogCritical = 3 };

// Flags of installFileHandlerExUtf8. They may be combined; other bits are ignored.
enum xoLogFileFlag : int {
    xoLogFileTruncate = 1,  // delete the existing file, or empty it when it cannot be deleted
    xoLogFileRotate = 2,    // only together with xoLogFileTruncate: move the existing file into the backups instead
    xoLogFileEcho = 4,      // write lines to the console as well
    xoLogFileKeepOpen = 8   // keep the file open between lines, which takes a fraction of the time
};

class XOSYSTEM_API xoLog {
public:
    // Receives the message without the prefix, UTF-8, and the pointer given at installation.
    using CustomHandler = void (*)(const std::string& message, xoLogType type, const std::string& qualifier,
                                   void* user);

    // Creates the log if there is none, otherwise does nothing. Initialisation calls this; a host that logs earlier may
    // call it first. With threadSafe true, the log is made as makeThreadSafe makes it.
    static void createInstance(bool threadSafe);

    // Destroys the log, if there is one. Lines then go to standard output. No other thread may be logging.
    static void destroyInstance();

    // The log. Undefined behaviour when there is none: test editPtr first.
    static const xoLog& get() { return *msInstance; }
    static xoLog& edit() { return *msInstance; }

    // The log, or null when there is none.
    static xoLog* editPtr() { return msInstance; }

    ~xoLog();
    xoLog(const xoLog&) = delete;
    xoLog& operator=(const xoLog&) = delete;

    // Whether lines of a type are wanted; at first all but DEBUG. Any thread may call these at any time. A type beyond
    // the four is always wanted, and disabling it does nothing.
    void setLogTypeEnabled(xoLogType type, bool enabled) {
        if (hasFlag(type)) mTypeEnabled[type].store(enabled, std::memory_order_relaxed);
    }
    bool isLogTypeEnabled(xoLogType type) const {
        return !hasFlag(type) || mTypeEnabled[type].load(std::memory_order_relaxed);
    }

    // Whether lines go to standard output, that is to std::cout; at first they do. A console window gets wide text,
    // anything else UTF-8 bytes. A buffer that the host gives std::cout may log in turn; what it throws is ignored.
    void setEchoToConsole(bool echo);

    // Enables or disables DEBUG lines by their qualifiers, a list separated by any of blank , ; / \ |. Qualifiers are
    // compared byte by byte. Disabled ones are added to a blacklist, enabled ones are removed from it. The next test of
    // a qualifier writes the whole blacklist, in byte order, as one DEBUG line. Null does nothing. Call it before
    // several threads log: the blacklist is read without a lock.
    void setDebugSubTypeEnabled(const char* qualifiers, bool enabled);

    // Whether the qualifier is not on the blacklist. True for null.
    bool isDebugSubTypeEnabled(const char* qualifier) { return qualifier == nullptr || isQualifierWanted(qualifier); }

    // Makes the log usable by several threads: each line is written under a lock, and the log file, also one that is
    // installed already, under a mutex that processes share. Call it while one thread uses the log. A second call does
    // nothing.
    void makeThreadSafe();

    // Installs a file that is appended to, without a limit of size.
    void installFileHandlerUtf8(const std::string& path) { installFileHandlerExUtf8(path, 0, -1, 0); }

    // Replaces the log file and sets the echo to the console to the flag xoLogFileEcho. A file that is created here
    // starts with the UTF-8 byte-order mark; an existing one is appended to. The path is made absolute here, so that
    // the log does not move with the working folder. An empty path removes the file. When the file does not exist and
    // cannot be created (a folder is missing, the path names a folder or holds a NUL), no file is installed and a
    // CRITICAL line says so. Bytes of the path that are not UTF-8 become U+FFFD.
    //
    // When a line finds the file larger than maxSizeBytes (below 1: no limit), the file is renamed to "<path>_0.back",
    // a file of that name to "<path>_1.back" and so on, up to the first number that is free or to backupCount files;
    // the oldest one is then deleted. A new file is begun, without the mark. So a file may exceed the limit by one
    // line. A backupCount above 128 counts as 128; with 0 or less the file is emptied and nothing is kept. When one of
    // these files cannot be moved, because a program has opened it without FILE_SHARE_DELETE, none is touched, the file
    // grows, and the rotation is tried again when it has grown by maxSizeBytes.
    //
    // Processes may share a file if all of them name it by the same text and their logs are safe for threads. The file
    // is opened and closed for each line. A line that cannot be written is lost to the file without a message. The
    // processes exclude each other by an xoMutexSystem of that name. Windows may refuse it to another account, or to
    // the same account without elevation when its creator is elevated, and for a path above about 250 characters. Lines
    // are then still appended whole, but two processes may rotate the file at the same time, so that a file that was
    // just begun becomes a backup.
    //
    // With xoLogFileKeepOpen the file stays open. Each line is still passed to Windows by one call before Write
    // returns, so that it survives the end of the process. Other programs may read, rename and delete the file; the
    // first line of the next second then begins a new one. Without a limit of size, any number of processes that use
    // this flag may write to one file, since Windows appends each line as a whole. With a limit, the process is the
    // only writer, because it does not share writing; other processes lose their lines to that file. With the flag, an
    // existing file that cannot be opened is treated like one that cannot be created, and is left as it is.
    void installFileHandlerExUtf8(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount);

    // Removes the file, if there is one, and turns the echo to the console off, until setEchoToConsole or a flag turns
    // it on again.
    void removeFileHandler();

    // The path as it was given at installation; empty when there is no file.
    std::string getCurrentLogFileNameUtf8() const;

    // Calls the handler for each line, under the log's lock; null removes it. A handler that logs is called for that
    // line too. What it throws is ignored.
    void installCustomHandler(CustomHandler handler, void* user);

    // Writes one line to each sink, whether its type is enabled or not. The time in the line is that of the call. A
    // processor fault during the call, in a sink of the host for example, goes to the guard around it; the log's locks
    // are released and its file is closed.
    void Write(const std::string& message, xoLogType type, const std::string& qualifier);

    // The local time as in a line: "Tue Mar 03 14:05:09 2020", in English whatever the user's language is. A clock
    // outside the years 1970 to 3000 shows the nearest of them.
    static std::string GetTime();

    // Writes a line to standard output, without the log's lock, whether there is a log or not. In a console window,
    // lines are written one at a time.
    static void WriteToStd(const std::string& message, xoLogType type, const std::string& qualifier);

    // Reports the message, without the qualifier, as one event of the Windows event log: an error for CRITICAL, a
    // warning for WARNING, information otherwise; DEBUG is ignored. The text is converted to the ANSI code page and cut
    // to 16384 bytes at a character; a NUL becomes a blank. An empty source name stands for "xoLog". A source that
    // cannot be registered reports nothing. Takes no lock.
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

// One line while it is composed. An object belongs to one thread and is meant as a temporary.
class XOSYSTEM_API xoLogObject {
public:
    // Composes a line for the log, if its type and qualifier are wanted. With an event source name the line goes to the
    // Windows event log instead, and without source and log to standard output; both get every line. Null and "" mean
    // no qualifier.
    explicit xoLogObject(xoLogType type, const char* qualifier = nullptr, xoLog* log = xoLog::editPtr(),
                         const char* eventSourceName = nullptr) {
        if (eventSourceName != nullptr || log == nullptr || log->isWanted(type, qualifier))
            begin(type, qualifier, log, eventSourceName);
    }

    // Takes the line from other, which then writes nothing.
    xoLogObject(xoLogObject&& other) noexcept : mLine(other.mLine) { other.mLine = nullptr; }

    // Writes the line if any text was appended, even an empty one.
    ~xoLogObject() {
        if (mLine) end();
    }

    xoLogObject(const xoLogObject&) = delete;
    xoLogObject& operator=(const xoLogObject&) = delete;

    // Append to the text if the line is wanted. A null text appends "[NullPtr]". Numbers are written in the classic
    // locale, floating-point ones with six significant digits, a bool as true or false.
    xoLogObject& operator<<(const char* text) {
        // Inline, so that the compiler knows the length of a literal.
        if (mLine) append(text ? std::string_view(text) : std::string_view("[NullPtr]"));
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
    void append(const char* text);  // for programs that were built against 3.0.0
    void append(std::string_view text);
    void appendInteger(std::int64_t value);
    void appendUnsigned(std::uint64_t value);
    void appendReal(double value);

    Line* mLine = nullptr;  // null when the line is not wanted
};

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoLogType> xoEnumEntries(xoLogType);
XOSYSTEM_API xoEnumList<xoLogFileFlag> xoEnumEntries(xoLogFileFlag);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
