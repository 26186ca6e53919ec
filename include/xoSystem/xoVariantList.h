// The list that a variant of the type LIST holds: an ordered, contiguous sequence of variants. References and iterators
// last as those of std::vector do.
#ifndef XOSYSTEM_XOVARIANTLIST_H
#define XOSYSTEM_XOVARIANTLIST_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariantValue.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class XOSYSTEM_API xoVariant::xoVariantListImpl {
public:
    // The types that a standard sequence has.
    using Container = std::vector<xoVariant>;
    using value_type = Container::value_type;
    using size_type = Container::size_type;
    using reference = Container::reference;
    using const_reference = Container::const_reference;
    using iterator = Container::iterator;
    using const_iterator = Container::const_iterator;

    // The list that is assigned may lie inside the one that it is assigned to.
    xoVariantListImpl() noexcept = default;
    xoVariantListImpl(const xoVariantListImpl& other);
    xoVariantListImpl(xoVariantListImpl&&) noexcept = default;
    xoVariantListImpl& operator=(const xoVariantListImpl& other) { return *this = xoVariantListImpl(other); }
    xoVariantListImpl& operator=(xoVariantListImpl&& other) noexcept {
        xoVariantListImpl taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~xoVariantListImpl() = default;

    // As in std::vector.
    iterator begin() noexcept { return mElements.begin(); }
    iterator end() noexcept { return mElements.end(); }
    const_iterator begin() const noexcept { return mElements.begin(); }
    const_iterator end() const noexcept { return mElements.end(); }
    size_type size() const noexcept { return mElements.size(); }
    bool empty() const noexcept { return mElements.empty(); }
    size_type capacity() const noexcept { return mElements.capacity(); }

    // The index must be below size(); the list must not be empty.
    xoVariant& operator[](size_type index) { return mElements[index]; }
    const xoVariant& operator[](size_type index) const { return mElements[index]; }
    xoVariant& back() { return mElements.back(); }
    const xoVariant& back() const { return mElements.back(); }

    // Appends a copy. The value may lie inside this list, or hold it.
    xoVariant& push_back(const xoVariant& value);
    xoVariantListImpl& operator<<(const xoVariant& value);
    // Appends the value itself, which may lie inside this list and becomes UNKNOWN. It must not hold this list, not
    // even deep inside: the list would then own itself, and nobody could reach it or free it.
    xoVariant& push_back(xoVariant&& value);
    // Returns the position behind the erased one. Erasing end() does nothing.
    iterator erase(iterator position) { return position != end() ? mElements.erase(position) : position; }
    // New elements are copies of fill, which may lie inside this list.
    void resize(size_type count, const xoVariant& fill = xoVariant()) { mElements.resize(count, fill); }
    void reserve(size_type count) { mElements.reserve(count); }
    void clear() noexcept { mElements.clear(); }
    // Neither list may lie inside the other.
    void swap(xoVariantListImpl& other) noexcept { mElements.swap(other.mElements); }
    friend void swap(xoVariantListImpl& a, xoVariantListImpl& b) noexcept { a.swap(b); }

    // The elements' texts with the separator between them. Lists inside use " ".
    std::string toString(std::string_view separator = " ") const;

    // Element by element, as variants compare.
    bool operator==(const xoVariantListImpl& other) const;
    bool operator!=(const xoVariantListImpl& other) const { return !(*this == other); }
    bool operator<(const xoVariantListImpl& other) const;

private:
    friend struct xoVariant::Tree;

    Container mElements;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
