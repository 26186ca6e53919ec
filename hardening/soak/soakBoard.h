// Where the processes of a soak write what they have done and what they hold. A killed one leaves its cells as they
// are.
#ifndef XO_SOAK_SOAKBOARD_H
#define XO_SOAK_SOAKBOARD_H

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include "platform/handle.h"

namespace xo::tests {

using Shared = std::atomic<std::int64_t>;

// One thread of one process. Each process has cells of its own, the next one in its place too.
struct SoakCell {
    Shared done;       // what was acknowledged
    Shared held;       // 0, or a number of this hold's own, which is odd for one that excludes all others
    Shared seen;       // the last hold that somebody met who ought to have excluded it
    Shared conflicts;  // how many different ones
};

class SoakBoard {
public:
    static constexpr std::size_t kThreads = 4;
    static constexpr std::size_t kCells = 1024;

    explicit SoakBoard(const std::wstring& name)
        : mMapping(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof *mAll, name.c_str())),
          mAll(static_cast<All*>(::MapViewOfFile(mMapping.get(), FILE_MAP_WRITE, 0, 0, 0))) {}
    ~SoakBoard() { ::UnmapViewOfFile(mAll); }
    SoakBoard(const SoakBoard&) = delete;
    SoakBoard& operator=(const SoakBoard&) = delete;

    Shared& total() const { return mAll->total; }  // of all threads, each adding while it excludes the others
    SoakCell& cell(std::size_t index) const { return mAll->cells[index]; }

    // Once the lock is taken, and before it is given up.
    void enter(SoakCell& mine, bool isExclusive) const {
        // What this thread met is reported at its next hold. One that has been killed has none: it may have lived on
        // for a moment after Wine had given away what it held, and have met the next holder.
        thread_local std::vector<Met> met;
        for (const Met& last : met)
            if (last.cell->seen.exchange(last.held) != last.held) ++last.cell->conflicts;
        met.clear();

        mine.held = 2 * (mine.done + 1) + (isExclusive ? 1 : 0);
        for (SoakCell& other : mAll->cells) {
            const std::int64_t held = other.held;
            if (&other == &mine || held == 0 || (!isExclusive && held % 2 == 0)) continue;
            if (other.seen != held) met.push_back({&other, held});
        }
    }
    static void leave(SoakCell& mine) { mine.held = 0; }

    // Whether somebody held the lock beside a hold of this cell's thread, which has been killed. Its last one does not
    // count: the thread took it to the grave, or lived on for a moment after Wine had given away what it held.
    static bool hasConflict(const SoakCell& cell) {
        const bool isLastHold = cell.seen / 2 >= cell.done;
        return cell.conflicts > (isLastHold ? 1 : 0);
    }

    // Calls work(cell) again and again on several threads, until the process is killed.
    template <class Work>
    [[noreturn]] void workForEver(std::size_t firstCell, Work work) const {
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < kThreads; ++i)
            threads.emplace_back([this, &work, index = firstCell + i] {
                for (;; ::SwitchToThread()) work(cell(index));
            });
        for (;;) ::Sleep(INFINITE);
    }

private:
    struct All {
        Shared total;
        SoakCell cells[kCells];
    };
    struct Met {
        SoakCell* cell;
        std::int64_t held;
    };

    platform::KernelHandle mMapping;
    All* mAll;
};

}  // namespace xo::tests

#endif
