// Microsoft's matcher counts its recursion and throws error_stack at a depth of 600. 0 switches that off: this file
// calls it on a larger stack, whose end WatchedIterator guards. The macro must be defined before <regex> is included.
#if defined(_MSC_VER)
#    define _REGEX_MAX_STACK_COUNT 0
#endif

#include <cstdint>
#include <exception>
#include <iterator>
#include <new>
#include <utility>
#include <vector>

#include "platform/ownStack.h"
#include "variant/pathWalk.h"
#include "xoSystem/xoVariant.h"

namespace xo {
namespace {

using Map = xoVariant::xoVariantMapImpl;
using List = xoVariant::xoVariantListImpl;

// Both libraries compile an expression by recursion, and match by recursion. libstdc++ recurses for each state of the
// expression, of which it allows 100,000, and for each character of the path too, unless the expression was compiled
// with the flag __polynomial. (The matcher behind that flag cannot do back-references, which an expression without
// sub-matches does not have.) All of this happens on a stack of a known size. libstdc++ was seen to take up to 512
// bytes for a character of a pattern and 160 for a state, without optimisation; so compiling the longest pattern takes
// a quarter of the stack.
// Microsoft's has one matcher, which takes several times as much for a character of a path.
#if defined(__GLIBCXX__)
constexpr auto kWithoutRecursion = std::regex_constants::__polynomial;
constexpr std::size_t kStack = std::size_t{64} * 1024 * 1024;  // address space; memory is taken as it is touched
#else
constexpr auto kWithoutRecursion = std::regex_constants::syntax_option_type();
constexpr std::size_t kStack = std::size_t{256} * 1024 * 1024;
#endif
constexpr std::size_t kMaxPattern = 32768;
constexpr std::size_t kStackForStates = std::size_t{24} * 1024 * 1024;  // between two characters of a path

// An iterator over a path that throws when the stack is nearly used up. A matcher that recurses for each character
// reads the character at each level.
class WatchedIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = char;
    using difference_type = std::ptrdiff_t;
    using pointer = const char*;
    using reference = const char&;

    WatchedIterator() = default;
    WatchedIterator(const char* at, std::uintptr_t lowestStack) : mAt(at), mLowestStack(lowestStack) {}

    reference operator*() const {
        const char here = 0;
        if (reinterpret_cast<std::uintptr_t>(&here) < mLowestStack)
            throw std::regex_error(std::regex_constants::error_stack);
        return *mAt;
    }
    WatchedIterator& operator++() { return ++mAt, *this; }
    WatchedIterator& operator--() { return --mAt, *this; }
    WatchedIterator operator++(int) { return std::exchange(*this, WatchedIterator(mAt + 1, mLowestStack)); }
    WatchedIterator operator--(int) { return std::exchange(*this, WatchedIterator(mAt - 1, mLowestStack)); }
    // Comparisons and steps do not test the stack: each level of recursion reads a character, and that one test
    // suffices.
    friend bool operator==(WatchedIterator a, WatchedIterator b) { return a.mAt == b.mAt; }
    friend bool operator!=(WatchedIterator a, WatchedIterator b) { return a.mAt != b.mAt; }

private:
    const char* mAt = nullptr;
    std::uintptr_t mLowestStack = 0;
};

// The matcher without recursion needs no watched iterator.
bool matchesWhole(const std::string& path, const std::regex& expression, std::uintptr_t lowestStack) {
    const char* const end = path.data() + path.size();
    if ((expression.flags() & kWithoutRecursion) != 0) return std::regex_match(path.data(), end, expression);
    return std::regex_match(WatchedIterator(path.data(), lowestStack), WatchedIterator(end, lowestStack), expression);
}

// The next entry of a map, or the next element of a list. Unlike a TreeCursor it is on a container that may be changed.
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

using Matches = std::vector<std::pair<Map*, Map::iterator>>;

// Finds the entries to be erased. Nothing is erased before all are known, because matching may throw.
class Search : variant::PathWalk<Position> {
public:
    Search(const std::regex& expression, const std::string& prefix)
        : PathWalk(prefix), mExpression(expression), mLowestStack(lowestStack()) {}

    Matches matchesFrom(Position outermost) {
        walk(outermost, [this] { visit(); });
        return std::move(mMatches);
    }

private:
    // The address at which matching must stop. What is below is kept for the recursion through the states.
    static std::uintptr_t lowestStack() {
        const char here = 0;
        return reinterpret_cast<std::uintptr_t>(&here) - platform::stackLeft() + kStackForStates;
    }

    void visit() {
        if (mPosition.map == nullptr) {  // an element of a list, which adds nothing to the path
            enterValue(*mPosition.element++);
            return;
        }
        const auto entry = mPosition.entry++;
        mPath += entry->first;
        if (matchesWhole(mPath, mExpression, mLowestStack)) {
            mMatches.emplace_back(mPosition.map, entry);
            return;
        }
        mPath += '/';
        enterValue(entry->second);
    }

    void enterValue(xoVariant& value) {
        if (value.getType() == xoVariant::MAP) {
            enter(value.editMap());
        } else if (value.getType() == xoVariant::LIST) {
            enter(value.editList());
        }
    }

    const std::regex& mExpression;
    std::uintptr_t mLowestStack;
    Matches mMatches;
};

// Throws what the function throws, and std::bad_alloc when there is no memory for the stack.
template <class Function>
void callOnLargeStack(Function function) {
    const auto call = [](void* called) { (*static_cast<Function*>(called))(); };
    if (!platform::callOnOwnStack(kStack, call, &function)) throw std::bad_alloc();
}

// Erased after the search: erasing an entry of a std::map leaves the iterators to all others valid. No match is inside
// another one, because the search does not enter what it has matched.
std::uint64_t eraseAll(const Matches& matches) {
    for (const auto& [map, entry] : matches) map->erase(entry);
    return matches.size();
}

// For an expression that the caller has compiled. Its size and matcher are not known, so the large stack is always
// used.
template <class Container>
std::uint64_t eraseMatches(Container& container, const std::regex& expression, const std::string& prefix) {
    Matches matches;
    callOnLargeStack([&] { matches = Search(expression, prefix).matchesFrom(container); });
    return eraseAll(matches);
}

std::regex compile(const std::string& pattern, bool caseInsensitive) {
    auto options = std::regex_constants::ECMAScript | std::regex_constants::nosubs | kWithoutRecursion;
    if (caseInsensitive) options |= std::regex_constants::icase;
    return std::regex(pattern, options);
}

// Whether the stack of the caller is large enough whatever the paths are. Without counted repetitions, an expression
// has no more than a few states for each character.
bool isSmall(const std::string& pattern) {
    constexpr bool matchesByRecursion = kWithoutRecursion == std::regex_constants::syntax_option_type();
    constexpr std::size_t kAtLeast = 0x8000;
    constexpr std::size_t kForCharacter = 0x800;  // more than the 512 bytes for compiling, or 160 for each state
    return !matchesByRecursion && pattern.find('{') == std::string::npos &&
           platform::stackLeft() >= kAtLeast + pattern.size() * kForCharacter;
}

}  // namespace

std::uint64_t Map::erasePathRegEx(const std::string& pattern, bool caseInsensitive) {
    // The stack is laid out for this size. The exception is one that the caller of a regular expression handles anyway.
    if (pattern.size() > kMaxPattern) throw std::regex_error(std::regex_constants::error_space);
    Matches matches;
    const auto search = [&] {
        const std::regex expression = compile(pattern, caseInsensitive);
        matches = Search(expression, {}).matchesFrom(*this);
    };
    if (isSmall(pattern)) {
        search();
    } else {
        callOnLargeStack(search);
    }
    return eraseAll(matches);
}

std::uint64_t xoVariantUtils::ErasePathRegExImplRecurse(Map& map, const std::regex& expression,
                                                        const std::string& prefix) {
    return eraseMatches(map, expression, prefix);
}

std::uint64_t xoVariantUtils::ErasePathRegExImplRecurse(List& list, const std::regex& expression,
                                                        const std::string& prefix) {
    return eraseMatches(list, expression, prefix);
}

}  // namespace xo
