// The map that a variant of the type MAP holds: values under unique text keys, in the keys' byte order. References and
// iterators last as those of std::map do.
//
// A path is a NUL-terminated text of keys joined by a separator: "a/b" is the key b of the map under the key a. Keys
// may be empty, so that "a/" is the empty key of the map under a, and "" the empty key of this map. A path does not
// enter lists. Looking up a key or a path allocates nothing.
//
// A null C string is no key: nothing is found under it and nothing removed, and nothing enters the map.
//
// With Microsoft's runtime an empty std::map allocates: lack of memory when a map is made or moved ends the process
// there.
#ifndef XOSYSTEM_XOVARIANTMAP_H
#define XOSYSTEM_XOVARIANTMAP_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "xoSystem/xoExport.h"
#include "xoSystem/xoVariantKeyOrder.h"
#include "xoSystem/xoVariantValue.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

class XOSYSTEM_API xoVariant::xoVariantMapImpl {
public:
    // Unsigned bytes, a proper prefix first.
    struct KeyOrder {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept { return variant::isKeyBefore(a, b); }

        // Below 0, 0 or above 0, as a is before, the same as or behind b.
        static int compare(std::string_view a, std::string_view b) noexcept {
            return variant::isKeyBefore(a, b) ? -1 : variant::isKeyBefore(b, a) ? 1 : 0;
        }
    };

    // The types that a standard map has.
    using Container = std::map<std::string, xoVariant, KeyOrder>;
    using key_type = Container::key_type;
    using mapped_type = Container::mapped_type;
    using value_type = Container::value_type;
    using size_type = Container::size_type;
    using iterator = Container::iterator;
    using const_iterator = Container::const_iterator;

    // The map that is assigned may lie inside the one that it is assigned to.
    xoVariantMapImpl() noexcept = default;
    xoVariantMapImpl(const xoVariantMapImpl& other);
    xoVariantMapImpl(xoVariantMapImpl&&) noexcept = default;
    xoVariantMapImpl& operator=(const xoVariantMapImpl& other) { return *this = xoVariantMapImpl(other); }
    xoVariantMapImpl& operator=(xoVariantMapImpl&& other) noexcept {
        xoVariantMapImpl taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~xoVariantMapImpl() = default;

    // As in std::map.
    iterator begin() noexcept { return mEntries.begin(); }
    iterator end() noexcept { return mEntries.end(); }
    const_iterator begin() const noexcept { return mEntries.begin(); }
    const_iterator end() const noexcept { return mEntries.end(); }
    size_type size() const noexcept { return mEntries.size(); }
    bool empty() const noexcept { return mEntries.empty(); }
    void clear() noexcept { mEntries.clear(); }
    // Neither map may lie inside the other.
    void swap(xoVariantMapImpl& other) noexcept { mEntries.swap(other.mEntries); }
    friend void swap(xoVariantMapImpl& a, xoVariantMapImpl& b) noexcept { a.swap(b); }

    // A copy of the value, or of the default when the key is absent.
    xoVariant getValue(std::string_view key, const xoVariant& defaultValue = xoVariant()) const;
    xoVariant getValue(const char* key, const xoVariant& defaultValue = xoVariant()) const {
        return key != nullptr ? getValue(std::string_view(key), defaultValue) : defaultValue;
    }
    // An absent key is inserted with a copy of the default; operator[] inserts UNKNOWN. A null key gives what
    // editValuePath gives for a null path.
    xoVariant& editValue(std::string_view key, const xoVariant& defaultValue = xoVariant());
    xoVariant& editValue(const char* key, const xoVariant& defaultValue = xoVariant()) {
        return key != nullptr ? editValue(std::string_view(key), defaultValue) : editValuePath(key, defaultValue);
    }
    xoVariant& operator[](std::string_view key);
    xoVariant& operator[](const char* key) { return editValue(key); }

    // An absent key is found at end().
    iterator find(std::string_view key);
    const_iterator find(std::string_view key) const;
    iterator find(const char* key) { return key != nullptr ? find(std::string_view(key)) : end(); }
    const_iterator find(const char* key) const { return key != nullptr ? find(std::string_view(key)) : end(); }
    // Whether the map itself has the key.
    bool contains(std::string_view key) const;
    bool contains(const char* key) const { return find(key) != end(); }
    // Does not change an existing value. Returns the position of the key and whether it was inserted.
    std::pair<iterator, bool> insert(std::pair<std::string, xoVariant> entry);
    // Returns the position behind the erased one. Erasing end() does nothing.
    iterator erase(iterator position) { return position != end() ? mEntries.erase(position) : position; }
    // Returns whether the key existed.
    bool remove(std::string_view key);
    bool remove(const char* key) { return key != nullptr && remove(std::string_view(key)); }

    // A null path resolves to nothing. With NUL as the separator the whole path is one key.
    xoVariant getValuePath(const char* path, const xoVariant& defaultValue = xoVariant(), char separator = '/') const;
    const xoVariant* findPath(const char* path, char separator = '/') const;
    xoVariant* findPath(const char* path, char separator = '/');
    // Creates what is missing, the last key with a copy of the default; an existing value is not changed. A value on
    // the way that is not a map is lost: an empty map replaces it. A null path gives a value of the calling thread that
    // holds a copy of the default and lasts until the thread's next call with a null path or key; no map has a part in
    // it. That value keeps the library's DLL loaded and is destroyed when the thread ends: a class of user data that is
    // in it must then still be loaded.
    xoVariant& editValuePath(const char* path, const xoVariant& defaultValue = xoVariant(), char separator = '/');

    // The same; the path ends at its first NUL.
    xoVariant getValuePath(const std::string& path, const xoVariant& defaultValue = xoVariant(),
                           char separator = '/') const {
        return getValuePath(path.c_str(), defaultValue, separator);
    }
    const xoVariant* findPath(const std::string& path, char separator = '/') const {
        return findPath(path.c_str(), separator);
    }
    xoVariant* findPath(const std::string& path, char separator = '/') { return findPath(path.c_str(), separator); }
    xoVariant& editValuePath(const std::string& path, const xoVariant& defaultValue = xoVariant(),
                             char separator = '/') {
        return editValuePath(path.c_str(), defaultValue, separator);
    }

    // Inserts the value without losing the one that the key already has. Without asList two maps are merged key by key
    // at every depth, and texts are collected in a STRINGLIST; all other values are collected in a LIST. If memory runs
    // out, the map still has the values that it had.
    void multiInsert(std::string_view key, const xoVariant& value, bool asList = false);
    void multiInsert(const char* key, const xoVariant& value, bool asList = false) {
        if (key != nullptr) multiInsert(std::string_view(key), value, asList);
    }
    // The same, taking the value and leaving it UNKNOWN, even where a null key loses it. The value may lie inside this
    // map. It must not hold this map, not even deep inside: the map would then own itself, and nobody could reach it or
    // free it.
    void multiInsertAndDestroy(std::string_view key, xoVariant& value, bool asList = false);
    void multiInsertAndDestroy(std::string_view key, xoVariant&& value, bool asList = false) {
        multiInsertAndDestroy(key, value, asList);
    }
    void multiInsertAndDestroy(const char* key, xoVariant& value, bool asList = false) {
        if (key == nullptr) return value.clear();
        multiInsertAndDestroy(std::string_view(key), value, asList);
    }
    void multiInsertAndDestroy(const char* key, xoVariant&& value, bool asList = false) {
        multiInsertAndDestroy(key, value, asList);
    }
    // Multi-inserts a copy of every entry. The other map may be this one, or a part of it.
    void mergeWith(const xoVariantMapImpl& other, bool asList = false);

    // Multi-inserts each leaf of the tree into out, which keeps what it has, under the leaf's keys joined by the
    // separator. The maps in a list are flattened under the list's key; its other elements together, or a list without
    // maps, are one leaf. An empty map adds nothing. out may be this map.
    void toFlattenMap(xoVariantMapImpl& out, char separator = '/') const;

    // Erases each entry whose whole path (keys joined by "/") matches the ECMAScript expression, with all below it, and
    // returns how many entries matched. The maps in a list share the list's path; the elements of a list are never
    // erased. Throws std::regex_error for a bad expression, for one of more than 32768 bytes and for one that is too
    // large for the runtime's own limit once its repetitions are written out; whenever it throws, nothing has been
    // erased. Each path is matched from its start: below a chain of maps, an expression that must read whole paths
    // costs the square of their length.
    std::uint64_t erasePathRegEx(const std::string& pattern, bool caseInsensitive = false);

    // "(key=value),(key=value)" in key order.
    std::string toString() const;

    // Entry by entry in key order: keys as bytes, values as variants compare.
    bool operator==(const xoVariantMapImpl& other) const;
    bool operator!=(const xoVariantMapImpl& other) const { return !(*this == other); }
    bool operator<(const xoVariantMapImpl& other) const;

private:
    friend struct xoVariant::Tree;
    struct Merge;

    Container mEntries;
};

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
