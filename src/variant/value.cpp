#include <algorithm>
#include <new>

#include "xoSystem/xoVariant.h"

namespace xo {
namespace {

// How many containers inside each other are copied or destroyed by plain recursion. What lies deeper waits in a queue
// for the outermost one, so that the stack stays small whatever the tree is.
constexpr int kMaxDepth = 32;

// A container that a variant holds: it can stand in the queue of those to be destroyed without any memory being needed.
struct Held {
    Held() = default;
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    virtual ~Held() = default;

    Held* mNextDying = nullptr;
};

template <class Container>
struct HeldContainer final : Held, Container {
    HeldContainer() = default;
    explicit HeldContainer(const Container& other) : Container(other) {}
    explicit HeldContainer(Container&& other) noexcept : Container(std::move(other)) {}
};
using HeldList = HeldContainer<xoVariant::xoVariantListImpl>;
using HeldMap = HeldContainer<xoVariant::xoVariantMapImpl>;

struct Destruction {
    int depth;
    Held* waiting;
};
thread_local Destruction tDestruction = {0, nullptr};

void destroyContainer(Held* container) noexcept {
    Destruction& state = tDestruction;
    if (state.depth == kMaxDepth) {
        container->mNextDying = std::exchange(state.waiting, container);
        return;
    }
    ++state.depth;
    delete container;
    if (state.depth == 1) {
        while (state.waiting != nullptr) {
            Held* const next = state.waiting;
            state.waiting = next->mNextDying;  // NOLINT(clang-analyzer-cplusplus.NewDelete): no one waits twice
            delete next;
        }
    }
    --state.depth;
}

// The copy that the thread is making: its depth, and the containers too deep in it, each as (target, source). Both stay
// where they are until the copy is complete.
struct Copying {
    int depth = 1;
    std::vector<std::pair<xoVariant*, const xoVariant*>> waiting;
};
thread_local Copying* tCopying = nullptr;

class CopyingScope {
public:
    explicit CopyingScope(Copying* copying) noexcept : mOuter(std::exchange(tCopying, copying)) {}
    ~CopyingScope() { tCopying = mOuter; }
    CopyingScope(const CopyingScope&) = delete;
    CopyingScope& operator=(const CopyingScope&) = delete;

private:
    Copying* mOuter;
};

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

xoVariant::Type typeOfNumbers(std::size_t count) {
    for (const auto type : {xoVariant::VEC2D, xoVariant::VEC3D, xoVariant::VEC4D, xoVariant::MAT3D, xoVariant::MAT4D})
        if (numbersIn(type) == count) return type;
    return xoVariant::UNKNOWN;
}

// A host's class decides here, and may copy variants of its own: those are copies for themselves.
xoVariant::UserDataInterface* cloneUserData(const xoVariant::UserDataInterface* object) {
    if (object == nullptr) return nullptr;
    const CopyingScope apart(nullptr);
    return object->clone();
}

}  // namespace

xoVariant::UserDataInterface::~UserDataInterface() = default;

xoVariant::xoVariant(Type type) : xoVariant() {
    switch (type) {
        case INTEGER:
        case BOOL:
        case DATETIME: break;
        case REAL: mPayload.real = 0.0; break;
        case STRING: mPayload.text = new std::string; break;
        case VEC2D:
        case VEC3D:
        case VEC4D:
        case MAT3D:
        case MAT4D: mPayload.numbers = new double[numbersIn(type)](); break;
        case STRINGLIST: mPayload.strings = new std::vector<std::string>; break;
        case MAP: mPayload.map = new HeldMap; break;
        case LIST: mPayload.list = new HeldList; break;
        case USERDATA: mPayload.userData = nullptr; break;
        default: return;
    }
    mType = type;
}

xoVariant::xoVariant(const char* text) : xoVariant(std::string_view(text != nullptr ? text : "")) {}

xoVariant::xoVariant(std::string_view text) : mType(STRING) { mPayload.text = new std::string(text); }

xoVariant::xoVariant(std::string text) : mType(STRING) { mPayload.text = new std::string(std::move(text)); }

xoVariant::xoVariant(std::vector<std::string> strings) : mType(STRINGLIST) {
    mPayload.strings = new std::vector<std::string>(std::move(strings));
}

xoVariant::xoVariant(xoVariantListImpl list) : mType(LIST) { mPayload.list = new HeldList(std::move(list)); }

xoVariant::xoVariant(xoVariantMapImpl map) : mType(MAP) { mPayload.map = new HeldMap(std::move(map)); }

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

// Copies one container, of which the containers inside come to copyPayload again.
void xoVariant::copyOneLevel(const xoVariant& other) {
    if (other.mType == MAP) {
        mPayload.map = new HeldMap(*other.mPayload.map);
    } else {
        mPayload.list = new HeldList(*other.mPayload.list);
    }
    mType = other.mType;
}

void xoVariant::copyContainer(const xoVariant& other) {
    if (Copying* const copying = tCopying) {
        if (copying->depth == kMaxDepth) {
            copying->waiting.emplace_back(this, &other);
            return;
        }
        ++copying->depth;
        copyOneLevel(other);
        --copying->depth;
        return;
    }
    Copying copying;
    const CopyingScope scope(&copying);
    xoVariant copy;
    copy.copyOneLevel(other);
    while (!copying.waiting.empty()) {
        const auto [target, source] = copying.waiting.back();
        copying.waiting.pop_back();
        target->copyOneLevel(*source);
    }
    swap(copy);
}

// Fills this variant, whose own payload is nobody's.
void xoVariant::copyPayload(const xoVariant& other) {
    mType = UNKNOWN;
    switch (other.mType) {
        case STRING: mPayload.text = new std::string(*other.mPayload.text); break;
        case STRINGLIST: mPayload.strings = new std::vector<std::string>(*other.mPayload.strings); break;
        case MAP:
        case LIST: copyContainer(other); return;
        case USERDATA: mPayload.userData = cloneUserData(other.mPayload.userData); break;
        default: buildNumbers(other.mPayload.numbers, numbersIn(other.mType)); return;
    }
    mType = other.mType;
}

void xoVariant::destroyPayload() noexcept {
    switch (mType) {
        case STRING: delete mPayload.text; break;
        case STRINGLIST: delete mPayload.strings; break;
        case MAP: destroyContainer(static_cast<HeldMap*>(mPayload.map)); break;
        case LIST: destroyContainer(static_cast<HeldList*>(mPayload.list)); break;
        case USERDATA: delete mPayload.userData; break;
        default: delete[] mPayload.numbers; break;
    }
}

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
        default: return "NOT DEFINED";
    }
}

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
    static const double none[16] = {};
    return none;
}

}  // namespace xo
