// Start-up and shut-down of the library.
//
//     xo::initializeXoSystem(xo::InitTypeFull);
//     ...
//     xo::terminateXoSystem();
//
// Calls nest: each initialisation is matched by one termination, and only the outermost termination takes the library
// down. A host calls both from one thread, initialises before it starts threads and terminates after it has stopped
// them.
#ifndef XOSYSTEM_XOINIT_H
#define XOSYSTEM_XOINIT_H

#include <string>

#include "xoSystem/xoExport.h"

namespace xo {

// How far the library is brought up.
enum InitType : int {
    InitTypeBasic = 1,  // for one thread: the log, text and system utilities
    InitTypeFull = 2    // that, and all that is safe for threads or has threads
};

// Brings the library up to the level of the type, or counts one more user of it. Any other type does nothing. With
// queryMainDisk true, the first full initialisation asks for the main disk, which takes a while, so that later
// questions are answered at once; a call that only counts ignores it.
//
// Running out of memory throws std::bad_alloc and leaves in place what was made. When no thread can be started for the
// pool, std::system_error is thrown: the library is then safe for threads, but has neither pool nor signal handlers.
XOSYSTEM_API void initializeXoSystem(InitType type, bool queryMainDisk = false);
inline void initializeXoSystem(int type, bool queryMainDisk = false) {
    initializeXoSystem(static_cast<InitType>(type), queryMainDisk);
}

// Ends one use; the outermost one takes everything down and destroys the log. There is no floor: a termination too many
// is remembered, and the next initialisation then sets nothing up. A full initialisation after a basic one is undone
// with the outermost termination alone.
XOSYSTEM_API void terminateXoSystem();

// True from the first full initialisation to the outermost termination. Any thread may ask.
XOSYSTEM_API bool IsXoSystemThreadSafe();

namespace impl {

// A named count of nested initialisations. Not safe for threads.
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
    int mInitialisedOnce = 0;  // 1 since the first increment, for good
    std::string mName;
};

}  // namespace impl
}  // namespace xo

#endif
