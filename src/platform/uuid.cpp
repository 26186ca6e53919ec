// Random UUIDs as text: https://www.rfc-editor.org/rfc/rfc9562
#include "platform/uuid.h"

#include <atomic>
#include <cstdint>
#include <cstring>

#include "platform/windows.h"
// RtlGenRandom, which <ntsecapi.h> declares under this macro's name, follows <windows.h>.
#include <ntsecapi.h>

namespace xo::platform {
namespace {

// Not random, but unique: the process, the time and the number of the call. Microsoft describes no case in
// which the system's generator fails.
void makeUnique(unsigned char (&bytes)[16]) {
    static std::atomic<std::uint32_t> calls{0};
    struct Origin {
        LARGE_INTEGER moment{};
        std::uint32_t call = ++calls;
        DWORD process = ::GetCurrentProcessId();
    } origin;
    static_assert(sizeof origin == sizeof bytes);
    ::QueryPerformanceCounter(&origin.moment);
    std::memcpy(bytes, &origin, sizeof bytes);
}

}  // namespace

std::string createUuid() {
    unsigned char bytes[16];
    // The generator of the system needs no provider to be opened and no state to be kept.
    if (!::RtlGenRandom(bytes, sizeof bytes)) makeUnique(bytes);
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // the RFC's variant

    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    text.reserve(36);
    for (int i = 0; i < 16; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0x0F];
    }
    return text;
}

}  // namespace xo::platform
