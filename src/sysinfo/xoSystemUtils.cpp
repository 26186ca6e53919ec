// The processor count and the main disk, which are stored once read; UUIDs; the folder of the program.
#include "xoSystem/xoSystemUtils.h"

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <optional>

#include "platform/slimLock.h"
#include "platform/uuid.h"
#include "platform/wideText.h"
#include "platform/windows.h"
#include "sysinfo/mainDisk.h"
#include "xoSystem/xoDirUtils.h"
#include "xoSystem/xoLog.h"

namespace xo {
namespace {

// Relaxed accesses suffice: no other data depends on the count.
std::atomic<unsigned> processorCount{1};

struct MainDisk {
    platform::SlimLock lock;
    std::optional<std::string> device XO_GUARDED_BY(lock);  // no value until the first call
};

// A static of a function, so that it exists also for a call before the static objects of this file are made.
MainDisk& mainDisk() {
    static MainDisk disk;
    return disk;
}

unsigned readProcessorCount() {
    // An empty and a missing variable both give the length 0; only the error distinguishes them.
    ::SetLastError(ERROR_SUCCESS);
    const std::wstring text = platform::readWide(
        [](wchar_t* buffer, DWORD size) { return ::GetEnvironmentVariableW(L"NUMBER_OF_PROCESSORS", buffer, size); });
    if (text.empty() && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) {
        xoLogObject(xoLogCritical, nullptr, xoLog::editPtr(), nullptr) << "Failed to retrieve NUMBER_OF_PROCESSORS";
        return 1;
    }
    // wcstol stops at the first character that is not a digit, returns 0 without a number, and saturates.
    return static_cast<unsigned>((std::max)(std::wcstol(text.c_str(), nullptr, 10), 1L));
}

}  // namespace

void xoSystemUtils::InitializeSystemUtils() { processorCount.store(readProcessorCount(), std::memory_order_relaxed); }

void xoSystemUtils::TerminateSystemUtils() {
    processorCount.store(1, std::memory_order_relaxed);
    MainDisk& disk = mainDisk();
    const platform::SlimLocker locker(disk.lock);
    // The next initialisation determines the disk anew.
    disk.device.reset();
}

unsigned xoSystemUtils::GetProcessorCount() { return processorCount.load(std::memory_order_relaxed); }

std::string xoSystemUtils::getMainHDDDevice() {
    MainDisk& disk = mainDisk();
    const platform::SlimLocker locker(disk.lock);
    // The lock is held meanwhile, so that several threads do not ask the management service at once.
    if (!disk.device) disk.device = sysinfo::findMainDisk();
    return *disk.device;
}

std::string xoSystemUtils::CreateUuid(bool inBraces) {
    const std::string uuid = platform::createUuid();
    return inBraces ? "{" + uuid + "}" : uuid;
}

std::string xoSystemUtils::GetBinaryFolderUtf8() {
    std::string folder;
    xoDirUtils::GetFolderOfCurrentProcessUtf8(folder);
    return folder;
}

}  // namespace xo
