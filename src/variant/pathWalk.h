// A walk over a tree that maintains the path of keys to the current position. The positions in the enclosing containers
// are on the heap, so that no tree is too deep for the stack.
#ifndef XO_VARIANT_PATHWALK_H
#define XO_VARIANT_PATHWALK_H

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace xo::variant {

// Position is a position in one container and has a function atEnd().
template <class Position>
class PathWalk {
protected:
    explicit PathWalk(std::string prefix = {}) : mPath(std::move(prefix)) {}

    // Calls visit() at each position from the given one to the end of its container, and in the containers that visits
    // enter. At each call mPath is what it was when the container was entered. The visit advances mPosition, and does
    // so before it enters another container.
    template <class Visit>
    void walk(Position from, Visit visit) {
        mPosition = from;
        mPrefix = mPath.size();
        for (;;) {
            if (!mPosition.atEnd()) {
                mPath.resize(mPrefix);
                visit();
            } else if (!mAround.empty()) {
                std::tie(mPosition, mPrefix) = mAround.back();
                mAround.pop_back();
            } else {
                return;
            }
        }
    }

    // What the visit has appended to mPath is the prefix of the keys inside.
    void enter(Position inside) {
        mAround.emplace_back(mPosition, mPrefix);
        mPosition = inside;
        mPrefix = mPath.size();
    }

    std::string mPath;
    Position mPosition;

private:
    std::size_t mPrefix = 0;                                // the size of mPath when the container was entered
    std::vector<std::pair<Position, std::size_t>> mAround;  // mPosition and mPrefix of the enclosing containers
};

}  // namespace xo::variant

#endif
