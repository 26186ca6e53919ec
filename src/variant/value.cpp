// The payload of a variant: building, copying and destroying it.
#include <algorithm>
#include <new>

#include "xoSystem/xoVariant.h"

namespace xo {
namespace {

// How many doubles a vector or matrix has; 0 for other types.
constexpr std::size_t numbersIn(xoVariant::Type type) {
    switch (type) {
        case xoVariant::VEC2D: return 2;
        case xoVariant::VEC3D: return 3;
        case xoVariant::VEC4D: return 4;
        case xoVariant::MAT3D: return 9;
        case xoVariant::MAT4D: return 16;
        default: return 0;
    }
}

// UNKNOWN for a count that no type of vector or matrix has.
xoVariant::Type typeOfNumbers(std::size_t count) {
    for (const auto type : {xoVariant::VEC2D, xoVariant::VEC3D, xoVariant::VEC4D, xoVariant::MAT3D, xoVariant::MAT4D})
        if (numbersIn(type) == count) return type;
    return xoVariant::UNKNOWN;
}

}  // namespace

// Copying and destroying lists and maps with all that they hold, on a small stack whatever their depth.
//
// Recursion through the copy constructors and destructors of the containers is the fastest way. It continues until the
// stack pointer enters the lowest part of a block of addresses; from there the rest of the tree is processed in a loop.
// The address of a local variable alone decides. A counter of the depth would have to be thread-local, and a processor
// fault that a frame further out handles would leave it behind; user data that copy or destroy variants of their own
// would share it with the tree around them.
struct xoVariant::Tree {
    // One level of recursion takes less stack than the part of a block in which the loop takes over, so that no level
    // skips that part. The largest consumer is std::map, which copies and destroys its nodes by recursion.
    static constexpr std::uintptr_t kBlock = 0x8000;
    static constexpr std::uintptr_t kLoopPart = 0x1000;

    static bool mayRecurse() noexcept {
        const char here = 0;
        return reinterpret_cast<std::uintptr_t>(&here) % kBlock >= kLoopPart;
    }

    // A container that a variant holds; each one is made as a HeldList or HeldMap, which release relies on. Destroying
    // must not allocate, so containers are linked to their outer ones.
    struct Held {
        Held() = default;
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        virtual ~Held() = default;
        // takeNext moves the next element out, in the order in which the container's own destructor destroys them, or
        // returns false at the end.
        virtual void beginTaking() noexcept = 0;
        virtual bool takeNext(xoVariant& element) noexcept = 0;

        Held* mOuter = nullptr;
    };

    struct HeldList final : Held, xoVariantListImpl {
        HeldList() = default;
        explicit HeldList(const xoVariantListImpl& other) : xoVariantListImpl(other) {}
        explicit HeldList(xoVariantListImpl&& other) noexcept : xoVariantListImpl(std::move(other)) {}

        // Elements are taken from the back, which is the cheap end of a vector, but destroyed from the front.
        void beginTaking() noexcept override { std::reverse(begin(), end()); }
        bool takeNext(xoVariant& element) noexcept override {
            if (empty()) return false;
            element = std::move(back());
            mElements.pop_back();
            return true;
        }
    };

    struct HeldMap final : Held, xoVariantMapImpl {
        HeldMap() = default;
        explicit HeldMap(const xoVariantMapImpl& other) : xoVariantMapImpl(other) {}
        explicit HeldMap(xoVariantMapImpl&& other) noexcept : xoVariantMapImpl(std::move(other)) {}

        void beginTaking() noexcept override {}
        bool takeNext(xoVariant& element) noexcept override {
            if (empty()) return false;
            const auto last = std::prev(end());
            element = std::move(last->second);
            erase(last);
            return true;
        }
    };

    static bool isContainer(const xoVariant& value) noexcept { return value.mType == MAP || value.mType == LIST; }
    static bool holdsContainer(const xoVariantListImpl::value_type& element) noexcept { return isContainer(element); }
    static bool holdsContainer(const xoVariantMapImpl::value_type& entry) noexcept { return isContainer(entry.second); }
    template <class Container>
    static bool hasContainers(const Container& container) noexcept {
        return std::any_of(container.begin(), container.end(), [](const auto& each) { return holdsContainer(each); });
    }

    // Takes the container out of a MAP or LIST, which becomes UNKNOWN. The caller owns the container.
    static Held* release(xoVariant& value) noexcept {
        if (std::exchange(value.mType, UNKNOWN) == MAP) return static_cast<HeldMap*>(value.mPayload.map);
        return static_cast<HeldList*>(value.mPayload.list);
    }

    // A container of plain values is deleted at any depth of the stack, because its destructor enters no other
    // container.
    static void destroy(xoVariant& value) noexcept {
        const bool canDelete = mayRecurse() || !(value.mType == MAP ? hasContainers(*value.mPayload.map)
                                                                    : hasContainers(*value.mPayload.list));
        Held* const container = release(value);
        if (canDelete) {
            delete container;
        } else {
            destroyInLoop(container);
        }
    }

    // The chain of mOuter pointers replaces the stack. A container is deleted when all its elements have been taken.
    static void destroyInLoop(Held* container) noexcept {
        container->beginTaking();
        while (container != nullptr) {
            xoVariant element;
            if (!container->takeNext(element)) {
                delete std::exchange(container, container->mOuter);
            } else if (isContainer(element)) {
                Held* const inner = release(element);
                inner->mOuter = std::exchange(container, inner);
                inner->beginTaking();
            }
        }
    }

    using Elements = xoVariantListImpl::Container;
    using Entries = xoVariantMapImpl::Container;
    // Containers that are still to be copied, as (target, source). Both keep their addresses until the copy is
    // complete.
    using Waiting = std::vector<std::pair<xoVariant*, const xoVariant*>>;

    // Called by the copy constructors of the containers, at each level of a recursion.
    static Elements copyOf(const Elements& source) { return mayRecurse() ? source : copyInLoop(source); }
    static Entries copyOf(const Entries& source) { return mayRecurse() ? source : copyInLoop(source); }

    template <class Container>
    static Container copyInLoop(const Container& source) {
        Container copy;
        Waiting waiting;
        copyOneLevel(copy, source, waiting);
        while (!waiting.empty()) {
            const auto [target, inner] = waiting.back();
            waiting.pop_back();
            if (inner->mType == MAP) {
                copyOneLevel(target->editMap().mEntries, inner->getMap().mEntries, waiting);
            } else {
                copyOneLevel(target->editList().mElements, inner->getList().mElements, waiting);
            }
        }
        return copy;
    }

    static void copyOneLevel(Elements& target, const Elements& source, Waiting& waiting) {
        target.reserve(source.size());
        for (const xoVariant& element : source) copyOrPutOff(target.emplace_back(), element, waiting);
    }

    static void copyOneLevel(Entries& target, const Entries& source, Waiting& waiting) {
        for (const auto& [key, value] : source)
            copyOrPutOff(target.emplace_hint(target.end(), key, xoVariant())->second, value, waiting);
    }

    // The copy of a container is UNKNOWN until it is made, so that an exception leaves a tree that can be destroyed.
    static void copyOrPutOff(xoVariant& target, const xoVariant& source, Waiting& waiting) {
        if (isContainer(source)) {
            waiting.emplace_back(&target, &source);
        } else {
            target = source;
        }
    }
};

xoVariant::xoVariantListImpl::xoVariantListImpl(const xoVariantListImpl& other)
    : mElements(Tree::copyOf(other.mElements)) {}

xoVariant::xoVariantMapImpl::xoVariantMapImpl(const xoVariantMapImpl& other) : mEntries(Tree::copyOf(other.mEntries)) {}

xoVariant::UserDataInterface::~UserDataInterface() = default;

xoVariant::xoVariant(Type type) : xoVariant() {
    switch (type) {
        case INTEGER:
        case BOOL:
        case DATETIME: break;  // xoVariant() has set the payload to 0
        case REAL: mPayload.real = 0.0; break;
        case STRING: mPayload.text = new std::string; break;
        case VEC2D:
        case VEC3D:
        case VEC4D:
        case MAT3D:
        case MAT4D: mPayload.numbers = new double[numbersIn(type)](); break;
        case STRINGLIST: mPayload.strings = new std::vector<std::string>; break;
        case MAP: mPayload.map = new Tree::HeldMap(); break;
        case LIST: mPayload.list = new Tree::HeldList(); break;
        case USERDATA: mPayload.userData = nullptr; break;
        // A number that is no type gives UNKNOWN.
        default: return;
    }
    // Last: if an allocation throws, the destructor runs, because xoVariant() is complete, and must not see a payload.
    mType = type;
}

xoVariant::xoVariant(const char* text) : xoVariant(std::string_view(text != nullptr ? text : "")) {}

xoVariant::xoVariant(std::string_view text) : mType(STRING) { mPayload.text = new std::string(text); }

xoVariant::xoVariant(std::string text) : mType(STRING) { mPayload.text = new std::string(std::move(text)); }

xoVariant::xoVariant(std::vector<std::string> strings) : mType(STRINGLIST) {
    mPayload.strings = new std::vector<std::string>(std::move(strings));
}

xoVariant::xoVariant(xoVariantListImpl list) : mType(LIST) { mPayload.list = new Tree::HeldList(std::move(list)); }

xoVariant::xoVariant(xoVariantMapImpl map) : mType(MAP) { mPayload.map = new Tree::HeldMap(std::move(map)); }

// For a variant that is UNKNOWN, and stays so for a count that no type has.
template <class Number>
void xoVariant::buildNumbers(const Number* values, std::size_t count) {
    const Type type = values != nullptr ? typeOfNumbers(count) : UNKNOWN;
    if (type == UNKNOWN) return;
    mPayload.numbers = new double[count];
    std::copy_n(values, count, mPayload.numbers);
    mType = type;
}

xoVariant::xoVariant(const double* values, std::size_t count) : xoVariant() { buildNumbers(values, count); }

xoVariant::xoVariant(const float* values, std::size_t count) : xoVariant() { buildNumbers(values, count); }

// For a variant whose members have been copied from the other one: makes the payload, still the other's, its own.
void xoVariant::copyPayload(const xoVariant& other) {
    mType = UNKNOWN;
    switch (other.mType) {
        case STRING: mPayload.text = new std::string(*other.mPayload.text); break;
        case STRINGLIST: mPayload.strings = new std::vector<std::string>(*other.mPayload.strings); break;
        case MAP: mPayload.map = new Tree::HeldMap(*other.mPayload.map); break;
        case LIST: mPayload.list = new Tree::HeldList(*other.mPayload.list); break;
        // clone() may throw, and may return null.
        case USERDATA:
            mPayload.userData = other.mPayload.userData != nullptr ? other.mPayload.userData->clone() : nullptr;
            break;
        // Only types with a payload on the heap arrive here, so the rest are vectors and matrices.
        default: buildNumbers(other.mPayload.numbers, numbersIn(other.mType)); return;
    }
    mType = other.mType;
}

void xoVariant::destroyPayload() noexcept {
    switch (mType) {
        case STRING: delete mPayload.text; break;
        case STRINGLIST: delete mPayload.strings; break;
        case MAP:
        case LIST: Tree::destroy(*this); break;
        case USERDATA: delete mPayload.userData; break;
        default: delete[] mPayload.numbers; break;  // a vector or matrix, as in copyPayload
    }
}

// A text is copied into the existing one, which needs no allocation where its capacity suffices. Everything else is
// copied first and swapped then: the other may be part of this tree, and an exception leaves this value unchanged.
xoVariant& xoVariant::operator=(const xoVariant& other) {
    if (mType == STRING && other.mType == STRING) {
        *mPayload.text = *other.mPayload.text;
        return *this;
    }
    xoVariant copy(other);
    swap(copy);
    return *this;
}

xoVariant& xoVariant::setType(Type type) { return *this = xoVariant(type); }

std::string xoVariant::getTypeAsString() const {
    switch (mType) {
        case UNKNOWN: return "UNKNOWN";
        case INTEGER: return "INTEGER";
        case REAL: return "REAL";
        case STRING: return "STRING";
        case BOOL: return "BOOL";
        case VEC2D: return "VEC2D";
        case VEC3D: return "VEC3D";
        case VEC4D: return "VEC4D";
        case STRINGLIST: return "STRINGLIST";
        case MAP: return "MAP";
        case LIST: return "LIST";
        case MAT3D: return "MAT3D";
        case MAT4D: return "MAT4D";
        // DATETIME and USERDATA too; xoEnumEntries has names for them.
        default: return "NOT DEFINED";
    }
}

// What the getters of a variant of another type return. The objects are made at the first use, so that they exist even
// while other static objects are constructed.
const std::string& xoVariant::noString() {
    static const std::string none;
    return none;
}

const std::vector<std::string>& xoVariant::noStrings() {
    static const std::vector<std::string> none;
    return none;
}

const xoVariant::xoVariantListImpl& xoVariant::noList() {
    static const xoVariantListImpl none;
    return none;
}

const xoVariant::xoVariantMapImpl& xoVariant::noMap() {
    static const xoVariantMapImpl none;
    return none;
}

const double* xoVariant::noNumbers() {
    static const double none[16] = {};  // as many as MAT4D, the largest type, has
    return none;
}

}  // namespace xo
