#include "xoSystem/xoLog.h"

#include <algorithm>
#include <set>

#include "concurrency/lateMutex.h"
#include "log/console.h"
#include "log/eventLog.h"
#include "log/linePrefix.h"
#include "log/logFile.h"
#include "log/releasingCall.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {

struct xoLog::Private {
    void callHandler(const std::string& message, xoLogType type, const std::string& qualifier) XO_REQUIRES(mutex);
    void writeLine(const std::string& message, xoLogType type, const std::string& qualifier) XO_REQUIRES(mutex);

    concurrency::LateMutex mutex;  // guards the sinks
    std::atomic<bool> echoToConsole{true};
    std::set<std::string, std::less<>> blacklist;  // changed before threads log, hence read without the lock

    CustomHandler handler XO_GUARDED_BY(mutex) = nullptr;
    void* handlerUser XO_GUARDED_BY(mutex) = nullptr;
    log::LogFile file XO_GUARDED_BY(mutex);
    log::LocalTimeText localTime XO_GUARDED_BY(mutex);
    std::string line XO_GUARDED_BY(mutex);  // room that each line reuses
    std::string pendingNotice XO_GUARDED_BY(mutex);
    std::atomic<bool> hasPendingNotice{false};
};

namespace {

constexpr std::size_t kLineRoomKept = 65536;

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
    mPrivate->mutex.make();
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
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
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
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
        const concurrency::LateMutexLocker locker(mPrivate->mutex);
        if (!mPrivate->hasPendingNotice.exchange(false)) return;
        notice.swap(mPrivate->pendingNotice);
    }
    Write(notice, xoLogDebug, {});
}

void xoLog::installFileHandlerExUtf8(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount) {
    bool installed = false;
    {
        const concurrency::LateMutexLocker locker(mPrivate->mutex);
        mPrivate->file.remove();
        mPrivate->echoToConsole = (flags & xoLogFileEcho) != 0;
        installed = mPrivate->file.install(path, flags, maxSizeBytes, backupCount, /*shared=*/mPrivate->mutex.isMade());
    }
    if (!installed) xoLogObject(xoLogCritical, nullptr, this) << "Fail to install log file handler to " << path;
}

void xoLog::removeFileHandler() {
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
    mPrivate->file.remove();
    mPrivate->echoToConsole = false;
}

std::string xoLog::getCurrentLogFileNameUtf8() const {
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
    return mPrivate->file.path();
}

void xoLog::installCustomHandler(CustomHandler handler, void* user) {
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
    mPrivate->handler = handler;
    mPrivate->handlerUser = user;
}

void xoLog::Write(const std::string& message, xoLogType type, const std::string& qualifier) {
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
    if (mPrivate->handler) mPrivate->callHandler(message, type, qualifier);
    if (mPrivate->echoToConsole.load(std::memory_order_relaxed) || mPrivate->file.isInstalled())
        mPrivate->writeLine(message, type, qualifier);
}

void xoLog::Private::callHandler(const std::string& message, xoLogType type, const std::string& qualifier) {
    struct Call {
        Private& log;
        const std::string& message;
        xoLogType type;
        const std::string& qualifier;

        static void run(void* argument) XO_NO_THREAD_SAFETY_ANALYSIS {
            const Call& call = *static_cast<Call*>(argument);
            try {
                call.log.handler(call.message, call.type, call.qualifier, call.log.handlerUser);
            } catch (...) {  // the line still goes to the console and the file
            }
        }

        // The other threads must not wait for ever for a thread whose handler has faulted.
        static void release(void* argument) XO_NO_THREAD_SAFETY_ANALYSIS {
            static_cast<Call*>(argument)->log.mutex.unlock();
        }
    };
    Call call{*this, message, type, qualifier};
    log::callReleasing(&Call::run, &Call::release, &call);
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
