// A walk over a tree that knows the path of keys to where it is, and keeps the levels around it on the heap.
#ifndef XO_VARIANT_PATHWALK_H
#define XO_VARIANT_PATHWALK_H

#include <cstddef>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace xo::variant {

// Position: a place in one container that knows whether it is atEnd().
template <class Position>
class PathWalk {
protected:
    explicit PathWalk(std::string prefix = {}) : mPath(std::move(prefix)) {}

    // Calls visit() for each place from the given one to the end of its container, and of those that visits enter. A
    // visit finds mPath as it was when the container was entered, and moves mPosition on before it enters another.
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

    // What the visit has added to mPath stands before the keys in there.
    void enter(Position inside) {
        mAround.emplace_back(mPosition, mPrefix);
        mPosition = inside;
        mPrefix = mPath.size();
    }

    std::string mPath;
    Position mPosition;

private:
    std::size_t mPrefix = 0;
    std::vector<std::pair<Position, std::size_t>> mAround;
};

}  // namespace xo::variant

#endif
