// A program that fetches pages, and whose log says how that went: to a file of limited size with one backup, to the
// console, and to a handler that counts what went wrong.
#include <iostream>
#include <string>

#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoLog.h"

namespace {

using xo::xoLog;
using xo::xoLogObject;

void countFailures(const std::string&, xo::xoLogType type, const std::string&, void* failures) {
    if (type == xo::xoLogCritical) ++*static_cast<int*>(failures);
}

bool fetch(const std::string& page, int attempt) {
    return page == "index.html" || (page == "news.html" && attempt > 1);
}

void fetchPatiently(const std::string& page) {
    constexpr int kAttempts = 2;
    for (int attempt = 1; attempt <= kAttempts; ++attempt) {
        xoLogObject(xo::xoLogDebug, "net") << "asking for " << page;
        if (fetch(page, attempt)) {
            xoLogObject(xo::xoLogInfo) << page << " is here";
            return;
        }
        xoLogObject(xo::xoLogWarning, "net") << page << ": attempt " << attempt << " of " << kAttempts << " failed";
    }
    xoLogObject(xo::xoLogCritical) << page << " is lost";
}

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    xoLog& log = xoLog::edit();
    int failures = 0;
    log.installCustomHandler(&countFailures, &failures);
    log.installFileHandlerExUtf8("fetch.log", xo::xoLogFileEcho, /*maxSizeBytes=*/200, /*backupCount=*/1);
    const bool hasFile = !log.getCurrentLogFileNameUtf8().empty();

    for (const char* const page : {"index.html", "news.html", "gone.html"}) fetchPatiently(page);

    // Only now the details are wanted, but not those of the cache.
    log.setLogTypeEnabled(xo::xoLogDebug, true);
    log.setDebugSubTypeEnabled("cache", false);
    xoLogObject(xo::xoLogDebug, "cache") << "never seen";
    fetchPatiently("index.html");

    std::cout << failures << " page lost; backup "
              << (xo::xoDirUtils::FileExistsUtf8("fetch.log_0.back") ? "kept" : "missing") << '\n';
    xo::terminateXoSystem();
    return hasFile && failures == 1 ? 0 : 1;
}
