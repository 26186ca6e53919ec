#include "xoSystem/xoLog.h"

#include <algorithm>
#include <set>

#include "log/console.h"
#include "log/eventLog.h"
#include "log/linePrefix.h"
#include "log/logFile.h"
#include "xoSystem/xoMutex.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {

// The record is itself the lock of the sinks: a real one once the log is safe for threads.
struct XO_CAPABILITY("mutex") xoLog::Private {
    void takeCriticalSection() XO_ACQUIRE() XO_NO_THREAD_SAFETY_ANALYSIS {
        if (mutex) mutex->lock();
    }
    void releaseCriticalSection() XO_RELEASE() XO_NO_THREAD_SAFETY_ANALYSIS {
        if (mutex) mutex->unlock();
    }

    void callHandler(const std::string& message, xoLogType type, const std::string& qualifier) const XO_REQUIRES(this);
    void writeLine(const std::string& message, xoLogType type, const std::string& qualifier) XO_REQUIRES(this);

    std::unique_ptr<xoMutex> mutex;  // null until the log is made safe for threads
    std::atomic<bool> echoToConsole{true};
    std::set<std::string, std::less<>> blacklist;  // changed before threads log, hence read without the lock

    CustomHandler handler XO_GUARDED_BY(this) = nullptr;
    void* handlerUser XO_GUARDED_BY(this) = nullptr;
    log::LogFile file XO_GUARDED_BY(this);
    log::LocalTimeText localTime XO_GUARDED_BY(this);
    std::string line XO_GUARDED_BY(this);  // room that each line reuses
    std::string pendingNotice XO_GUARDED_BY(this);
    std::atomic<bool> hasPendingNotice{false};
};

namespace {

constexpr std::size_t kLineRoomKept = 64 * 1024;

template <class Section>
class XO_SCOPED_CAPABILITY ScopedSection {
public:
    explicit ScopedSection(Section& section) XO_ACQUIRE(section) : mSection(section) { mSection.takeCriticalSection(); }
    ~ScopedSection() XO_RELEASE() { mSection.releaseCriticalSection(); }
    ScopedSection(const ScopedSection&) = delete;
    ScopedSection& operator=(const ScopedSection&) = delete;

private:
    Section& mSection;
};

}  // namespace

xoLog* xoLog::msInstance = nullptr;

void xoLog::createInstance(bool threadSafe) {
    if (!msInstance) msInstance = new xoLog(threadSafe);
}

void xoLog::destroyInstance() {
    delete msInstance;
    msInstance = nullptr;
}

xoLog::xoLog(bool threadSafe) : mPrivate(std::make_unique<Private>()) {
    for (std::size_t type = 0; type < kTypeCount; ++type) mTypeEnabled[type] = type != xoLogDebug;
    if (threadSafe) makeThreadSafe();
}

xoLog::~xoLog() = default;

void xoLog::makeThreadSafe() {
    if (!mPrivate->mutex) mPrivate->mutex = std::make_unique<xoMutex>(impl::WithoutEarlyWarning());
    const ScopedSection section(*mPrivate);
    mPrivate->file.share();
}

void xoLog::setEchoToConsole(bool echo) { mPrivate->echoToConsole = echo; }

void xoLog::setDebugSubTypeEnabled(const char* qualifiers, bool enabled) {
    if (!qualifiers) return;
    std::string list = qualifiers;
    for (char& c : list)
        if (std::string_view(" ,;\\|").find(c) != std::string_view::npos) c = '/';
    for (std::string& qualifier : xoStringUtils::Split(list, '/', /*skipEmpty=*/true)) {
        xoStringUtils::trim(qualifier);
        if (enabled)
            mPrivate->blacklist.erase(qualifier);
        else
            mPrivate->blacklist.insert(qualifier);
    }

    std::string notice = "xoDebug qualifier(s) blacklist : ";
    const char* separator = "";
    for (const std::string& qualifier : mPrivate->blacklist) {
        notice.append(separator).append("'").append(qualifier).append("'");
        separator = " ";
    }
    const ScopedSection section(*mPrivate);
    mPrivate->pendingNotice = std::move(notice);
    mPrivate->hasPendingNotice = true;
}

bool xoLog::isQualifierWanted(std::string_view qualifier) {
    if (mPrivate->hasPendingNotice.load(std::memory_order_relaxed)) writePendingNotice();
    return mPrivate->blacklist.find(qualifier) == mPrivate->blacklist.end();
}

void xoLog::writePendingNotice() {
    std::string notice;
    {
        const ScopedSection section(*mPrivate);
        if (!mPrivate->hasPendingNotice.exchange(false)) return;
        notice.swap(mPrivate->pendingNotice);
    }
    Write(notice, xoLogDebug, {});
}

void xoLog::installFileHandlerExUtf8(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount) {
    bool installed = false;
    {
        const ScopedSection section(*mPrivate);
        mPrivate->file.remove();
        mPrivate->echoToConsole = (flags & xoLogFileEcho) != 0;
        installed =
            mPrivate->file.install(path, flags, maxSizeBytes, backupCount, /*shared=*/mPrivate->mutex != nullptr);
    }
    if (!installed) xoLogObject(xoLogCritical, nullptr, this) << "Fail to install log file handler to " << path;
}

void xoLog::removeFileHandler() {
    const ScopedSection section(*mPrivate);
    mPrivate->file.remove();
    mPrivate->echoToConsole = false;
}

std::string xoLog::getCurrentLogFileNameUtf8() const {
    const ScopedSection section(*mPrivate);
    return mPrivate->file.path();
}

void xoLog::installCustomHandler(CustomHandler handler, void* user) {
    const ScopedSection section(*mPrivate);
    mPrivate->handler = handler;
    mPrivate->handlerUser = user;
}

void xoLog::Write(const std::string& message, xoLogType type, const std::string& qualifier) {
    const ScopedSection section(*mPrivate);
    if (mPrivate->handler) mPrivate->callHandler(message, type, qualifier);
    if (mPrivate->echoToConsole.load(std::memory_order_relaxed) || mPrivate->file.isInstalled())
        mPrivate->writeLine(message, type, qualifier);
}

void xoLog::Private::callHandler(const std::string& message, xoLogType type, const std::string& qualifier) const {
    try {
        handler(message, type, qualifier, handlerUser);
    } catch (...) {  // the line still goes to the console and the file
    }
}

void xoLog::Private::writeLine(const std::string& message, xoLogType type, const std::string& qualifier) {
    line.clear();
    log::appendPrefix(line, type, qualifier, localTime.of(log::currentSecond()));
    line += message;
    if (echoToConsole.load(std::memory_order_relaxed)) log::writeLineToConsole(line);
    if (file.isInstalled()) file.writeLine(line);
    if (line.capacity() > kLineRoomKept) std::string().swap(line);
}

std::string xoLog::GetTime() { return std::string(log::LocalTimeText().of(log::currentSecond())); }

void xoLog::WriteToStd(const std::string& message, xoLogType type, const std::string& qualifier) {
    std::string line;
    log::appendPrefix(line, type, qualifier, log::LocalTimeText().of(log::currentSecond()));
    line += message;
    log::writeLineToConsole(line);
}

void xoLog::WriteToSystemLog(const std::string& message, xoLogType type, const std::string&,
                             const std::string& sourceName) {
    log::reportEvent(message, type, sourceName);
}

}  // namespace xo
