#include "xoSystem/xoSystemError.h"

#include "platform/handle.h"
#include "platform/wideText.h"
#include "xoSystem/xoStringUtils.h"

namespace xo {
namespace {

std::string systemMessage(int code) {
    char* message = nullptr;
    constexpr DWORD kUsersLanguage = 0x400;
    const DWORD length =
        ::FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, /*lpSource=*/nullptr,
                         static_cast<DWORD>(code), kUsersLanguage, reinterpret_cast<char*>(&message), /*nSize=*/0,
                         /*Arguments=*/nullptr);
    const platform::LocalMemory<char> owner(message);
    return length != 0 ? platform::fromNative({message, length}) : "Unknown Error";
}

}  // namespace

std::string SystemError::toString() const {
    std::string text = systemMessage(mCode);
    xoStringUtils::replace(text, "\r\n", " ");
    xoStringUtils::replace(text, "\n", " ");
    return text + " (" + std::to_string(mCode) + ")";
}

}  // namespace xo
