// Start-up and shut-down of the library.
//
//     xo::initializeXoSystem(xo::InitTypeFull);
//     ...
//     xo::terminateXoSystem();
//
// Calls nest: each initialisation is matched by one termination, and only the outermost termination shuts the library
// down. A host calls both from one thread, initialises before it starts other threads and terminates after they have
// ended. Neither function takes a lock.
#ifndef XOSYSTEM_XOINIT_H
#define XOSYSTEM_XOINIT_H

#include <string>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

// The two levels of initialisation.
enum InitType : int {
    InitTypeBasic = 1,  // for one thread: the log, text and system utilities, resources
    InitTypeFull = 2    // the same for several threads, the pool and the signal handlers
};

// Initialises the library up to that level, or only counts the call when it has been reached. Any other type does
// nothing. With queryMainDisk true, the first full initialisation asks for the main disk, which takes a while, so that
// later questions are answered at once; a call that only counts ignores it.
//
// Running out of memory throws std::bad_alloc and leaves in place what was made. When no thread can be started for the
// pool, std::system_error is thrown: the library is then safe for threads, but has neither pool nor signal handlers. A
// call that throws counts like any other: terminate before trying again. Until the outermost termination, further calls
// for the same level only count.
XOSYSTEM_API void initializeXoSystem(InitType type, bool queryMainDisk = false);
inline void initializeXoSystem(int type, bool queryMainDisk = false) {
    initializeXoSystem(static_cast<InitType>(type), queryMainDisk);
}

// Matches one initialisation. The outermost call shuts both levels down and destroys the log. An unmatched call counts:
// the next initialisation then only brings the count back to zero and sets up nothing of the basic level.
XOSYSTEM_API void terminateXoSystem();

// True from the first full initialisation to the outermost termination. Any thread may call it.
XOSYSTEM_API bool IsXoSystemThreadSafe();

namespace impl {

// A named count of nested initialisations. Used by one thread.
class XOSYSTEM_API LibInitCounter {
public:
    // Copies the name; null becomes "n/a".
    explicit LibInitCounter(const char* name);
    // Copies the count and the name.
    LibInitCounter(const LibInitCounter& other);
    LibInitCounter& operator=(const LibInitCounter&) = delete;
    ~LibInitCounter();

    bool incrementInitCounter();  // adds 1; true when the count is now 1
    bool decrementInitCounter();  // takes 1, below 0 too; true when the count is now 0
    void clearInitCounter();      // sets the count to 0
    bool isInitialized() const;   // whether the count is other than 0
    int getInitCounter() const;   // the count itself

private:
    int mCounter = 0;
    int mInitialisedOnce = 0;  // 1 after the first increment; never reset
    std::string mName;
};

}  // namespace impl
// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<InitType> xoEnumEntries(InitType);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
