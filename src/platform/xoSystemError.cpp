// Error codes of Windows and their messages.
#include "xoSystem/xoSystemError.h"

#include "platform/handle.h"
#include "platform/wideText.h"

namespace xo {
namespace {

std::string systemMessage(int code) {
    // LANG_NEUTRAL with SUBLANG_DEFAULT, the default language of the user.
    // https://learn.microsoft.com/en-us/windows/win32/api/winbase/nf-winbase-formatmessage
    constexpr DWORD kUsersLanguage = 0x400;
    platform::LocalMemory<char> message;
    const DWORD length = ::FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM,
                                          /*lpSource=*/nullptr, static_cast<DWORD>(code), kUsersLanguage,
                                          reinterpret_cast<char*>(message.put()), /*nSize=*/0, /*Arguments=*/nullptr);
    return length != 0 ? platform::fromNative({message.get(), length}) : "Unknown Error";
}

// Each line end becomes a blank, also the one that ends every message.
std::string onOneLine(const std::string& text) {
    std::string line;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        line += text[i] == '\n' ? ' ' : text[i];
    }
    return line;
}

}  // namespace

std::string SystemError::toString() const {
    return onOneLine(systemMessage(mCode)) + " (" + std::to_string(mCode) + ")";
}

}  // namespace xo
