#include "crash.h"

#include <exception>

#include "xoSystem/xoException.h"
#include "xoSystem/xoLog.h"

namespace catalogue {
namespace {

struct Account {
    int balance;
};

// Not inlined, so that the report shows the way here.
__declspec(noinline) void deposit(volatile Account* account, int amount) { account->balance += amount; }

void bookToNobody() { deposit(nullptr, 42); }

}  // namespace

bool surviveCrash() {
    try {
        xo::exception::impl::ExecGuardedCode(&bookToNobody);
        return false;
    } catch (const std::exception& failure) {
        xo::xoLogObject(xo::xoLogInfo) << "the host goes on after: " << failure.what();
        return true;
    }
}

}  // namespace catalogue
