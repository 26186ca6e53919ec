// Takes the lock file named by its argument and holds it until it is killed; with the name of a soak's board and a
// first cell, takes and releases it until then, shared and alone in turn: lockFileHolder path [board cell]
#include <filesystem>

#include "soak/soakBoard.h"
// CommandLineToArgvW
#include <shellapi.h>

#include "xoSystem/xoLockFile.h"

namespace {

using xo::xoLockFile;

// Every third hold is exclusive, every second one leaves the file behind.
void takeAndRelease(const xo::tests::SoakBoard& board, const std::string& path, xo::tests::SoakCell& mine) {
    thread_local int turn = 0;
    const bool isExclusive = turn % 3 == 0;
    xoLockFile lock;
    if (!lock.takeLockUtf8(path, nullptr, isExclusive ? xoLockFile::LockTypeExclusive : xoLockFile::LockTypeShared))
        return;
    board.enter(mine, isExclusive);
    ::SwitchToThread();
    board.leave(mine);
    ++mine.done;
    lock.releaseLock(/*removeFile=*/++turn % 2 == 0);
}

}  // namespace

int main() {
    int count = 0;
    wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    const std::string path = count < 2 ? std::string() : std::filesystem::path(arguments[1]).u8string();
    if (count == 4) {
        const xo::tests::SoakBoard board(arguments[2]);
        board.workForEver(std::stoul(arguments[3]),
                          [&](xo::tests::SoakCell& mine) { takeAndRelease(board, path, mine); });
    }
    xoLockFile lock;
    if (count != 2 || !lock.takeLockUtf8(path)) return 1;
    ::Sleep(60000);
    return 0;
}
