#include <algorithm>

#include "variant/pathWalk.h"
#include "xoSystem/xoVariant.h"

namespace xo {
namespace {

using Map = xoVariant::xoVariantMapImpl;
using List = xoVariant::xoVariantListImpl;

// libstdc++ matches by recursion, some hundred bytes of stack for each character of a path, unless an expression is
// compiled for its other matcher. That one cannot do back-references, of which an expression without sub-matches has
// none. It also compiles by recursion: some hundred bytes for each character, several times that for a group.
// Microsoft's library watches its stack itself.
#if defined(__GLIBCXX__)
constexpr auto kWithoutRecursion = std::regex_constants::__polynomial;
constexpr std::size_t kMaxRecursivePath = 512;
constexpr std::size_t kMaxPattern = 4096;
#else
constexpr auto kWithoutRecursion = std::regex_constants::syntax_option_type();
constexpr std::size_t kMaxRecursivePath = static_cast<std::size_t>(-1);
constexpr std::size_t kMaxPattern = static_cast<std::size_t>(-1);
#endif

std::regex compile(const std::string& pattern, bool caseInsensitive) {
    const auto groups = static_cast<std::size_t>(std::count(pattern.begin(), pattern.end(), '('));
    if (pattern.size() + 4 * groups > kMaxPattern) throw std::regex_error(std::regex_constants::error_space);
    auto options = std::regex_constants::ECMAScript | std::regex_constants::nosubs | kWithoutRecursion;
    if (caseInsensitive) options |= std::regex_constants::icase;
    return std::regex(pattern, options);
}

// The next entry of a map, or the next element of a list.
struct Position {
    Position() = default;
    Position(Map& ofMap) : map(&ofMap), entry(ofMap.begin()) {}
    Position(List& ofList) : list(&ofList), element(ofList.begin()) {}

    bool atEnd() const { return map != nullptr ? entry == map->end() : element == list->end(); }

    Map* map = nullptr;
    Map::iterator entry;
    List* list = nullptr;
    List::iterator element;
};

class Eraser : variant::PathWalk<Position> {
public:
    Eraser(const std::regex& expression, const std::string& prefix)
        : PathWalk(prefix),
          mExpression(expression),
          mMaxPath((expression.flags() & kWithoutRecursion) != 0 ? static_cast<std::size_t>(-1) : kMaxRecursivePath) {}

    std::uint64_t eraseFrom(Position outermost) {
        walk(outermost, [this] { visit(); });
        return mErased;
    }

private:
    void visit() {
        if (mPosition.map == nullptr) {
            enterValue(*mPosition.element++);
            return;
        }
        mPath += mPosition.entry->first;
        if (matches()) {
            mPosition.entry = mPosition.map->erase(mPosition.entry);
            ++mErased;
            return;
        }
        mPath += '/';
        enterValue((mPosition.entry++)->second);
    }

    void enterValue(xoVariant& value) {
        if (value.getType() == xoVariant::MAP) {
            enter(value.editMap());
        } else if (value.getType() == xoVariant::LIST) {
            enter(value.editList());
        }
    }

    bool matches() const {
        if (mPath.size() > mMaxPath) throw std::regex_error(std::regex_constants::error_stack);
        return std::regex_match(mPath, mExpression);
    }

    const std::regex& mExpression;
    std::size_t mMaxPath;
    std::uint64_t mErased = 0;
};

}  // namespace

std::uint64_t Map::erasePathRegEx(const std::string& pattern, bool caseInsensitive) {
    return xoVariantUtils::ErasePathRegExImplRecurse(*this, compile(pattern, caseInsensitive), {});
}

std::uint64_t xoVariantUtils::ErasePathRegExImplRecurse(Map& map, const std::regex& expression,
                                                        const std::string& prefix) {
    return Eraser(expression, prefix).eraseFrom(map);
}

std::uint64_t xoVariantUtils::ErasePathRegExImplRecurse(List& list, const std::regex& expression,
                                                        const std::string& prefix) {
    return Eraser(expression, prefix).eraseFrom(list);
}

}  // namespace xo
