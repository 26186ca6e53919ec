#include "sysinfo/mainDisk.h"

#include <memory>

#include "platform/handle.h"
#include "platform/threadDescription.h"

#include <winioctl.h>

namespace xo::sysinfo {
namespace {

constexpr DWORD kServiceLimitMs = 10'000;

// "C:", for instance. Empty when the folder of Windows has no drive letter.
std::wstring systemDrive() {
    wchar_t folder[MAX_PATH];
    const UINT length = ::GetSystemWindowsDirectoryW(folder, MAX_PATH);
    if (length < 2 || length > MAX_PATH || folder[1] != L':') return {};
    return {folder, 2};
}

struct Inquiry {
    std::wstring drive;
    std::string disk;  // the answer; read it only after the thread has ended
};
using SharedInquiry = std::shared_ptr<Inquiry>;

struct Argument {
    SharedInquiry inquiry;
    platform::LibraryHandle ownLibrary;  // a reference to this DLL, which keeps the code of the thread loaded
};

void answer(Inquiry& inquiry) {
    try {
        inquiry.disk = diskFromManagementService(inquiry.drive);
    } catch (...) {  // out of memory: the disk stays unknown
    }
}

DWORD WINAPI inquire(void* given) {
    std::unique_ptr<Argument> argument(static_cast<Argument*>(given));
    answer(*argument->inquiry);
    // The thread cannot release its own code by an ordinary call, which would return to code that is gone.
    // https://learn.microsoft.com/windows/win32/api/libloaderapi/nf-libloaderapi-freelibraryandexitthread
    const HMODULE ownLibrary = argument->ownLibrary.release();
    argument.reset();
    ::FreeLibraryAndExitThread(ownLibrary, 0);
}

platform::LibraryHandle holdOwnLibrary() {
    platform::LibraryHandle library;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&inquire), library.put());
    return library;
}

// Asks on a new thread: the caller's thread may have initialised COM with another concurrency model, which cannot be
// changed, and a thread that gets no answer in time can be abandoned.
// https://learn.microsoft.com/windows/win32/api/combaseapi/nf-combaseapi-coinitializeex
std::string askManagementService(const std::wstring& drive) {
    const auto inquiry = std::make_shared<Inquiry>(Inquiry{drive, {}});
    auto argument = std::make_unique<Argument>(Argument{inquiry, holdOwnLibrary()});
    if (!argument->ownLibrary) return {};
    const platform::KernelHandle thread(::CreateThread(/*lpThreadAttributes=*/nullptr, /*dwStackSize=*/0, inquire,
                                                       argument.get(), /*dwCreationFlags=*/0, nullptr));
    if (!thread) return {};
    [[maybe_unused]] const Argument* const belongsToTheThread = argument.release();
    platform::describeThread(thread.get(), L"xoSystem main disk");
    if (::WaitForSingleObject(thread.get(), kServiceLimitMs) != WAIT_OBJECT_0) return {};
    return inquiry->disk;
}

}  // namespace

std::string diskFromVolume(const std::wstring& drive) {
    // A query needs no access rights, so this works without an administrator's rights.
    // https://learn.microsoft.com/windows/win32/api/winioctl/ni-winioctl-ioctl_volume_get_volume_disk_extents
    const platform::FileHandle volume(::CreateFileW((LR"(\\.\)" + drive).c_str(), /*dwDesiredAccess=*/0,
                                                    FILE_SHARE_READ | FILE_SHARE_WRITE,
                                                    /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING,
                                                    /*dwFlagsAndAttributes=*/0, /*hTemplateFile=*/nullptr));
    if (!volume) return {};
    struct {
        VOLUME_DISK_EXTENTS extents;
        DISK_EXTENT more[31];  // a volume may lie on several disks; the first one counts
    } answer{};
    DWORD size = 0;
    if (!::DeviceIoControl(volume.get(), IOCTL_VOLUME_GET_VOLUME_DISK_EXTENTS, nullptr, 0, &answer, sizeof answer,
                           &size,
                           /*lpOverlapped=*/nullptr) ||
        answer.extents.NumberOfDiskExtents == 0)
        return {};
    return R"(\\.\PHYSICALDRIVE)" + std::to_string(answer.extents.Extents[0].DiskNumber);
}

// The volume answers at once, the management service only after seconds. On Wine a volume names no disk.
std::string findMainDisk() {
    const std::wstring drive = systemDrive();
    if (drive.empty()) return {};
    std::string disk = diskFromVolume(drive);
    if (disk.empty()) disk = askManagementService(drive);
    return disk;
}

}  // namespace xo::sysinfo
