#include "sysinfo/mainDisk.h"

#include <memory>

#include "platform/handle.h"

#include <winioctl.h>

namespace xo::sysinfo {
namespace {

constexpr DWORD kServiceLimitMs = 10'000;

// The letter and the colon.
std::wstring systemDrive() {
    wchar_t folder[MAX_PATH];
    const UINT length = ::GetSystemWindowsDirectoryW(folder, MAX_PATH);
    if (length < 2 || length > MAX_PATH || folder[1] != L':') return {};
    return {folder, 2};
}

struct Inquiry {
    std::wstring drive;
    std::string disk;  // to be read once the thread has ended
    HMODULE library;   // kept loaded for the thread
};
using SharedInquiry = std::shared_ptr<Inquiry>;

DWORD WINAPI inquire(void* argument) {
    HMODULE library = nullptr;
    {
        const std::unique_ptr<SharedInquiry> inquiry(static_cast<SharedInquiry*>(argument));
        library = (*inquiry)->library;
        (*inquiry)->disk = diskFromManagementService((*inquiry)->drive);
    }
    ::FreeLibraryAndExitThread(library, 0);
}

// On a thread of its own: the caller's thread may hold COM in the wrong mode, and a thread that the service keeps
// waiting can be left behind.
std::string askManagementService(const std::wstring& drive) {
    auto inquiry = std::make_shared<Inquiry>(Inquiry{drive, {}, nullptr});
    if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&inquire),
                              &inquiry->library))
        return {};
    auto argument = std::make_unique<SharedInquiry>(inquiry);
    const platform::KernelHandle thread(::CreateThread(/*lpThreadAttributes=*/nullptr, /*dwStackSize=*/0, inquire,
                                                       argument.get(), /*dwCreationFlags=*/0, nullptr));
    if (!thread) {
        ::FreeLibrary(inquiry->library);
        return {};
    }
    [[maybe_unused]] const void* const nowOfTheThread = argument.release();
    if (::WaitForSingleObject(thread.get(), kServiceLimitMs) != WAIT_OBJECT_0) return {};
    return inquiry->disk;
}

}  // namespace

std::string diskFromVolume(const std::wstring& drive) {
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

std::string findMainDisk() {
    const std::wstring drive = systemDrive();
    if (drive.empty()) return {};
    std::string disk = askManagementService(drive);
    if (disk.empty()) disk = diskFromVolume(drive);
    return disk;
}

}  // namespace xo::sysinfo
