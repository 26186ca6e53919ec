#include <algorithm>

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

class Eraser {
public:
    Eraser(const std::regex& expression, std::string prefix)
        : mExpression(expression),
          mMaxPath((expression.flags() & kWithoutRecursion) != 0 ? static_cast<std::size_t>(-1) : kMaxRecursivePath),
          mPath(std::move(prefix)) {}

    template <class Container>
    std::uint64_t walk(Container& container) {
        mLevel = Level(container, mPath.size());
        for (;;) {
            if (!mLevel.atEnd()) {
                mPath.resize(mLevel.prefix);
                visit();
            } else if (!mAround.empty()) {
                mLevel = mAround.back();
                mAround.pop_back();
            } else {
                return mErased;
            }
        }
    }

private:
    // The next entry or element of a container, whose prefix is how much of the path stands before it.
    struct Level {
        Level() = default;
        Level(Map& ofMap, std::size_t length) : map(&ofMap), entry(ofMap.begin()), prefix(length) {}
        Level(List& ofList, std::size_t length) : list(&ofList), element(ofList.begin()), prefix(length) {}

        bool atEnd() const { return map != nullptr ? entry == map->end() : element == list->end(); }

        Map* map = nullptr;
        Map::iterator entry;
        List* list = nullptr;
        List::iterator element;
        std::size_t prefix = 0;
    };

    void visit() {
        if (mLevel.map == nullptr) {
            enter(*mLevel.element++);
            return;
        }
        mPath += mLevel.entry->first;
        if (matches()) {
            mLevel.entry = mLevel.map->erase(mLevel.entry);
            ++mErased;
            return;
        }
        mPath += '/';
        enter((mLevel.entry++)->second);
    }

    void enter(xoVariant& value) {
        if (value.getType() == xoVariant::MAP) {
            mAround.push_back(mLevel);
            mLevel = Level(value.editMap(), mPath.size());
        } else if (value.getType() == xoVariant::LIST) {
            mAround.push_back(mLevel);
            mLevel = Level(value.editList(), mPath.size());
        }
    }

    bool matches() const {
        if (mPath.size() > mMaxPath) throw std::regex_error(std::regex_constants::error_stack);
        return std::regex_match(mPath, mExpression);
    }

    const std::regex& mExpression;
    std::size_t mMaxPath;
    std::string mPath;
    Level mLevel;
    std::vector<Level> mAround;
    std::uint64_t mErased = 0;
};

}  // namespace

std::uint64_t Map::erasePathRegEx(const std::string& pattern, bool caseInsensitive) {
    return xoVariantUtils::ErasePathRegExImplRecurse(*this, compile(pattern, caseInsensitive), {});
}

std::uint64_t xoVariantUtils::ErasePathRegExImplRecurse(Map& map, const std::regex& expression,
                                                        const std::string& prefix) {
    return Eraser(expression, prefix).walk(map);
}

std::uint64_t xoVariantUtils::ErasePathRegExImplRecurse(List& list, const std::regex& expression,
                                                        const std::string& prefix) {
    return Eraser(expression, prefix).walk(list);
}

}  // namespace xo
