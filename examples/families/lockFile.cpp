// Windows of an editor on one project: one of them may write, and any number may read while none writes.
#include <iostream>
#include <string>

#include "xoSystem/xoInit.h"
#include "xoSystem/xoLockFile.h"

namespace {

class Window {
public:
    explicit Window(std::string name) : mName(std::move(name)) {}

    void openForWriting(const std::string& project) {
        bool wasThere = false;
        const bool mine = mLock.takeLockUtf8(project + ".lock", &wasThere, xo::xoLockFile::LockTypeExclusive);
        std::cout << mName << (mine ? " writes" : " finds it in use")
                  << (mine && wasThere ? ", after one that crashed" : "") << '\n';
    }

    void openForReading(const std::string& project) {
        const bool mine = mLock.takeLockUtf8(project + ".lock", nullptr, xo::xoLockFile::LockTypeShared);
        std::cout << mName << (mine ? " reads" : " finds it in use") << '\n';
    }

    bool close() { return mLock.releaseLock(); }

    // What a crash leaves behind: the file, but no lock.
    bool crash() { return mLock.releaseLock(/*removeFile=*/false); }

private:
    std::string mName;
    xo::xoLockFile mLock;
};

}  // namespace

int main() {
    xo::initializeXoSystem(xo::InitTypeFull);
    Window first("first"), second("second"), third("third");

    first.openForWriting("bridge.prj");
    second.openForWriting("bridge.prj");
    bool good = first.crash();
    second.openForWriting("bridge.prj");
    good = second.close() && good;

    first.openForReading("bridge.prj");
    third.openForReading("bridge.prj");
    second.openForWriting("bridge.prj");
    good = first.close() && third.close() && !second.close() && good;

    xo::terminateXoSystem();
    return good ? 0 : 1;
}
