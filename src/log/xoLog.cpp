// The log: decides which lines are wanted, and passes them to the handler, the console and the file.
#include "xoSystem/xoLog.h"

#include <algorithm>
#include <optional>
#include <set>

#include "concurrency/earlyCreation.h"
#include "concurrency/lateMutex.h"
#include "log/console.h"
#include "log/eventLog.h"
#include "log/linePrefix.h"
#include "log/logFile.h"
#include "platform/stackReserve.h"
#include "platform/structuredCall.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {

// The sinks and settings. The atomic members are read for each line before the lock is taken.
struct xoLog::Private {
    class Writing;

    concurrency::LateMutex mutex;  // guards the sinks; does nothing until makeThreadSafe()
    std::atomic<bool> echoToConsole{true};
    std::atomic<bool> hasFile{false};  // whether file is installed; set under the lock
    // Qualifiers of DEBUG lines that are not wanted. Read without the lock: a host changes it before several threads
    // log.
    std::set<std::string, std::less<>> blacklist;

    CustomHandler handler XO_GUARDED_BY(mutex) = nullptr;
    void* handlerUser XO_GUARDED_BY(mutex) = nullptr;
    log::LogFile file XO_GUARDED_BY(mutex);
    log::LocalTimeText localTime XO_GUARDED_BY(mutex);
    std::string line XO_GUARDED_BY(mutex);           // the buffer in which most lines are composed
    std::string pendingNotice XO_GUARDED_BY(mutex);  // about the blacklist; written before the next DEBUG line
    std::atomic<bool> hasPendingNotice{false};
};

// One call of Write. release() releases the locks and buffers, also after a processor fault: a guard further out
// handles the fault without running destructors, and the locks must not stay locked.
class xoLog::Private::Writing {
public:
    Writing(Private& log, const std::string& message, xoLogType type, const std::string& qualifier)
        : mLog(log), mMessage(message), mType(type), mQualifier(qualifier) {
        if (wantsText()) mSecond = log::currentSecond();
    }

    void run() { platform::callReleasing(&Writing::write, &Writing::release, this); }

private:
    static void write(void* writing);
    static void release(void* writing);

    // Whether there is a sink other than the handler. Only these need the prefix, and so the time.
    bool wantsText() const {
        return mLog.echoToConsole.load(std::memory_order_relaxed) || mLog.hasFile.load(std::memory_order_relaxed);
    }
    struct Text {
        std::string line;  // takes the log's buffer: a sink that writes a line itself finds an empty one there
        log::LogFile::Access fileAccess;
    };

    // The steps of write() and release().
    void callHandler() XO_REQUIRES(mLog.mutex);
    void writeText() XO_REQUIRES(mLog.mutex);
    void releaseText() XO_REQUIRES(mLog.mutex);

    Private& mLog;
    const std::string& mMessage;
    const xoLogType mType;
    const std::string& mQualifier;
    std::int64_t mSecond = kNoSecond;  // taken at the call, before waiting for the lock and for the handler
    bool mIsLocked = false;
    std::optional<Text> mText;  // only for sinks other than the handler

    static constexpr std::int64_t kNoSecond = INT64_MIN;
};

namespace {

constexpr std::size_t kMaxBufferKept = 65536;  // a larger buffer is released after its line

}  // namespace

// Made and destroyed by the initialisation of the library, from one thread.
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
        // Another thread may have taken the notice since it was seen without the lock.
        if (!mPrivate->hasPendingNotice.exchange(false)) return;
        notice.swap(mPrivate->pendingNotice);
    }
    try {
        Write(notice, xoLogDebug, {});
    } catch (...) {  // such as std::bad_alloc: the notice is lost, and the line that it precedes is still written
    }
}

void xoLog::installFileHandlerExUtf8(const std::string& path, int flags, std::int64_t maxSizeBytes, int backupCount) {
    platform::reserveStack();
    bool installed = false;
    {
        const concurrency::LateMutexLocker locker(mPrivate->mutex);
        mPrivate->file.remove();
        mPrivate->hasFile = false;  // also when the installation below throws
        mPrivate->echoToConsole = (flags & xoLogFileEcho) != 0;
        // Before full initialisation the file is not shared; makeThreadSafe() does that later.
        const bool isShared = mPrivate->mutex.isMade() || concurrency::isFullyInitialized();
        installed = mPrivate->file.install(path, flags, maxSizeBytes, backupCount, isShared);
        mPrivate->hasFile = mPrivate->file.isInstalled();
    }
    // After the lock is released, since the line is written by this log itself.
    if (!installed) xoLogObject(xoLogCritical, nullptr, this) << "Fail to install log file handler to " << path;
}

void xoLog::removeFileHandler() {
    const concurrency::LateMutexLocker locker(mPrivate->mutex);
    mPrivate->file.remove();
    mPrivate->hasFile = false;
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
    // A thread that overflows its stack does so here, before anything is locked.
    platform::reserveStack();
    Private::Writing(*mPrivate, message, type, qualifier).run();
}

void xoLog::Private::Writing::write(void* writing) XO_NO_THREAD_SAFETY_ANALYSIS {
    Writing& self = *static_cast<Writing*>(writing);
    self.mIsLocked = self.mLog.mutex.isMade();  // remembered, since the handler may call makeThreadSafe
    // The mutex is recursive, so a handler may write lines itself. Handlers are called one at a time.
    if (self.mIsLocked) self.mLog.mutex.lock();
    if (self.mLog.handler) self.callHandler();
    if (self.wantsText()) self.writeText();
}

void xoLog::Private::Writing::release(void* writing) XO_NO_THREAD_SAFETY_ANALYSIS {
    Writing& self = *static_cast<Writing*>(writing);
    self.releaseText();
    if (self.mIsLocked) self.mLog.mutex.unlock();
}

void xoLog::Private::Writing::callHandler() {
    try {
        mLog.handler(mMessage, mType, mQualifier, mLog.handlerUser);
    } catch (...) {  // a handler's exception is dropped; the line still goes to the console and the file
    }
}

void xoLog::Private::Writing::writeText() {
    if (mSecond == kNoSecond) mSecond = log::currentSecond();
    mText.emplace();
    std::string& text = mText->line;
    text.swap(mLog.line);
    text.clear();
    log::appendPrefix(text, mType, mQualifier, mLog.localTime.of(mSecond));
    text += mMessage;
    if (mLog.echoToConsole.load(std::memory_order_relaxed)) log::writeLineToConsole(text);
    if (mLog.file.isInstalled()) mLog.file.writeLine(text, mSecond, mText->fileAccess);
}

void xoLog::Private::Writing::releaseText() {
    if (!mText) return;
    std::string& text = mText->line;
    // Returns the buffer to the log, unless a nested line has left a larger one there.
    if (text.capacity() > mLog.line.capacity() && text.capacity() <= kMaxBufferKept) mLog.line.swap(text);
    mText.reset();
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
