// SystemError: an error code of Windows, and its text.
//
//     if (!::DeleteFileW(path)) xoLogObject(xoLogCritical) << xo::SystemError(::GetLastError()).toString();
#ifndef XOSYSTEM_XOSYSTEMERROR_H
#define XOSYSTEM_XOSYSTEMERROR_H

#include <string>
#include <type_traits>

#include "xoSystem/xoExport.h"

namespace xo {

// A plain value; 0 is success. Codes above 0x7FFFFFFF, such as a failed HRESULT, are negative.
class XOSYSTEM_API SystemError {
public:
    SystemError() = default;                                            // success
    SystemError(int code) : mCode(code) {}                              // as it is
    SystemError(unsigned long code) : mCode(static_cast<int>(code)) {}  // as GetLastError returns it
    // Any other integer: LSTATUS and HRESULT are long, some interfaces keep codes in 64 bits. The low 32 bits count.
    template <class Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    SystemError(Integer code) : mCode(static_cast<int>(code)) {}

    // The low 32 bits of the code that was given.
    int getErrorCode() const { return mCode; }

    // The system's message in the user's language, UTF-8 on one line, then the code: "File not found.  (2)". The second
    // space stands for the line end of the message. A code that the system has no text for, or one whose text wants
    // arguments, is "Unknown Error (12345)".
    std::string toString() const;

private:
    int mCode = 0;
};

}  // namespace xo

#endif
