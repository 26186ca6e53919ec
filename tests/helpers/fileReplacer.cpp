// fileReplacer <file> <event>: begins to replace the file, sets the event, and waits to be killed.
#include <filesystem>

#include "platform/handle.h"
#include "xoSystem/xoIoDeviceFile.h"

int wmain(int count, wchar_t** arguments) {
    if (count != 3) return 2;
    xo::xoIoDeviceFile file;
    if (!file.openUtf8(std::filesystem::path(arguments[1]).u8string(), xo::xoIoDeviceFile::OpenReplace)) return 3;
    file << "new";
    if (!file.flushToDisk()) return 4;
    const xo::platform::KernelHandle event(::OpenEventW(EVENT_MODIFY_STATE, FALSE, arguments[2]));
    if (!event || !::SetEvent(event.get())) return 5;
    ::Sleep(60000);
    return 6;
}
