// xoVariant: one value of any of the library's types, and the lists and maps that make trees of them.
//
//     xo::xoVariant::xoVariantMapImpl settings;
//     settings.editValuePath("window/width", 800, '/');
//     const std::int64_t width = settings.getValuePath("window/width", 640, '/').toInteger();
//
// A variant owns what it holds: copies are deep, a move leaves the source UNKNOWN. INTEGER, REAL, BOOL and DATETIME
// live inside the variant's 16 bytes; the other types are one object on the heap.
//
// There is no lock: any number of threads may read one value, a writer must be alone. A thread may build, copy and
// destroy trees of any depth; none of the operations needs more stack for a deeper one.
//
// Nothing here reports an error. A conversion that cannot be made gives its fixed fallback. Exceptions come from four
// causes only: lack of memory (std::bad_alloc), a size beyond what a container can hold (std::length_error), a bad
// regular expression (std::regex_error), and what a caller's clone or equals throws.
#ifndef XOSYSTEM_XOVARIANT_H
#define XOSYSTEM_XOVARIANT_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "xoSystem/xoExport.h"

namespace xo {

namespace variant {
struct LentText;
}

class XOSYSTEM_API xoVariant {
public:
    // What a variant can hold. The numbers are fixed: values of different types are ordered by them. 8 stays free.
    enum Type : int {
        UNKNOWN = 0,
        INTEGER = 1,
        REAL = 2,
        STRING = 3,
        BOOL = 4,
        VEC2D = 5,
        VEC3D = 6,
        VEC4D = 7,
        STRINGLIST = 9,
        MAP = 10,
        LIST = 11,
        MAT3D = 12,
        MAT4D = 13,
        DATETIME = 14,
        USERDATA = 15
    };

    class xoVariantListImpl;
    class xoVariantMapImpl;

    // A count whose unit and epoch are the caller's.
    struct DateTime {
        DateTime() noexcept = default;
        // Of so many of the caller's units.
        explicit DateTime(std::int64_t count) noexcept : mValue(count) {}

        friend bool operator==(DateTime a, DateTime b) noexcept { return a.mValue == b.mValue; }
        friend bool operator!=(DateTime a, DateTime b) noexcept { return a.mValue != b.mValue; }
        friend bool operator<(DateTime a, DateTime b) noexcept { return a.mValue < b.mValue; }

        std::int64_t mValue = 0;  // the count
    };

    // The base of a caller's own payloads.
    class XOSYSTEM_API UserDataInterface {
    public:
        UserDataInterface() noexcept = default;
        // Nothing is in this base to be copied.
        UserDataInterface(const UserDataInterface&) noexcept {}
        UserDataInterface& operator=(const UserDataInterface&) noexcept { return *this; }
        virtual ~UserDataInterface();

        // A new copy from operator new, which the caller owns. Null makes the copied variant a USERDATA without an
        // object. What it throws leaves the copying of the variant or the tree, of which nothing remains.
        virtual UserDataInterface* clone() const = 0;
        // Asked of the left value with the object of the right one, whatever its class. What it throws leaves the
        // comparison.
        virtual bool equals(const UserDataInterface& other) const = 0;
    };

    xoVariant() noexcept : mType(UNKNOWN) { mPayload.integer = 0; }

    // The default value of the type: 0, false, empty, all zeros, no object. A number that is no type gives UNKNOWN.
    xoVariant(Type type);

    // A bool gives BOOL, any other integer INTEGER (unsigned values beyond its range wrap round), a floating-point
    // value REAL. No pointer becomes a bool: pointers other than the ones below do not compile.
    template <class T, std::enable_if_t<std::is_integral_v<T>, int> = 0>
    xoVariant(T value) noexcept {
        if constexpr (std::is_same_v<T, bool>) {
            mType = BOOL;
            mPayload.integer = 0;
            mPayload.boolean = value;
        } else {
            mType = INTEGER;
            mPayload.integer = static_cast<std::int64_t>(value);
        }
    }
    template <class T, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
    xoVariant(T value) noexcept : mType(REAL) {
        mPayload.real = static_cast<double>(value);
    }

    // STRING. A null text is an empty one; the other two may hold NULs.
    xoVariant(const char* text);
    xoVariant(std::string_view text);
    xoVariant(std::string text);

    // STRINGLIST, LIST, MAP and DATETIME.
    xoVariant(std::vector<std::string> strings);
    xoVariant(xoVariantListImpl list);
    xoVariant(xoVariantMapImpl map);
    xoVariant(DateTime time) noexcept : mType(DATETIME) { mPayload.integer = time.mValue; }

    // USERDATA that owns the object from here on; null is a USERDATA without one.
    template <class T, std::enable_if_t<std::is_convertible_v<T*, UserDataInterface*>, int> = 0>
    xoVariant(std::unique_ptr<T> object) noexcept : mType(USERDATA) {
        mPayload.userData = object.release();
    }
    template <class T, std::enable_if_t<std::is_convertible_v<T*, UserDataInterface*>, int> = 0>
    explicit xoVariant(T* object) noexcept : mType(USERDATA) {
        mPayload.userData = object;
    }

    // The count chooses the type: 2, 3 and 4 give vectors, 9 and 16 matrices. Any other count, and null, gives UNKNOWN.
    xoVariant(const double* values, std::size_t count);
    xoVariant(const float* values, std::size_t count);

    // Copies are deep; a move leaves the source UNKNOWN.
    xoVariant(const xoVariant& other) : mType(other.mType), mPayload(other.mPayload) {
        if (pointsToHeap()) copyPayload(other);
    }
    xoVariant(xoVariant&& other) noexcept : mType(other.mType), mIsLent(other.mIsLent), mPayload(other.mPayload) {
        other.mType = UNKNOWN;
        other.mIsLent = false;
    }
    ~xoVariant() {
        if (pointsToHeap() && !mIsLent) destroyPayload();
    }

    // Both work from a value inside the one assigned to, and from itself.
    xoVariant& operator=(const xoVariant& other);
    xoVariant& operator=(xoVariant&& other) noexcept {
        xoVariant taken(std::move(other));
        swap(taken);
        return *this;
    }

    // Exchanges type and value with another, of which neither may lie inside the other.
    void swap(xoVariant& other) noexcept {
        std::swap(mType, other.mType);
        std::swap(mIsLent, other.mIsLent);
        std::swap(mPayload, other.mPayload);
    }
    friend void swap(xoVariant& a, xoVariant& b) noexcept { a.swap(b); }

    // The narrowest type that reads the whole text: INTEGER ("0x1F" and "010" too, and the empty text is 0), else REAL
    // ("3.25" or "3,25"), else STRING. Never BOOL. White space and a sign may stand before a number, nothing behind it.
    // A whole number beyond the range gives the nearest end of it, INTEGER 9223372036854775807 for example; a REAL
    // beyond its range gives infinity or 0.
    static xoVariant BuildFromString(std::string_view text);

    // The type of what is held now.
    Type getType() const noexcept { return mType; }
    // "INTEGER" for INTEGER and so on; "NOT DEFINED" for DATETIME and USERDATA.
    std::string getTypeAsString() const;
    bool isNull() const noexcept { return mType == UNKNOWN; }
    bool isNumeric() const noexcept { return mType == INTEGER || mType == REAL; }

    // Access without conversion, for a variant that has the type already. Otherwise a get... gives an empty value (the
    // pointers: sixteen zeros) and an edit... first makes the variant the default value of its type.
    const std::string& getString() const { return mType == STRING ? *mPayload.text : noString(); }
    std::string& editString() { return *as(STRING).text; }
    const std::vector<std::string>& getStringList() const {
        return mType == STRINGLIST ? *mPayload.strings : noStrings();
    }
    std::vector<std::string>& editStringList() { return *as(STRINGLIST).strings; }
    const xoVariantListImpl& getList() const {
        if (mType == LIST) return *mPayload.list;
        return noList();
    }
    xoVariantListImpl& editList() { return *as(LIST).list; }
    const xoVariantMapImpl& getMap() const {
        if (mType == MAP) return *mPayload.map;
        return noMap();
    }
    xoVariantMapImpl& editMap() { return *as(MAP).map; }
    const double* getVec2d() const { return getNumbers(VEC2D); }
    const double* getVec3d() const { return getNumbers(VEC3D); }
    const double* getVec4d() const { return getNumbers(VEC4D); }
    const double* getMat3d() const { return getNumbers(MAT3D); }
    const double* getMat4d() const { return getNumbers(MAT4D); }
    // Null for any other type; the object stays the variant's.
    const UserDataInterface* getUserData() const { return mType == USERDATA ? mPayload.userData : nullptr; }
    UserDataInterface* editUserData() { return mType == USERDATA ? mPayload.userData : nullptr; }

    // Replaces the value by the default one of the type, even where it has that type already. A number that is no type
    // makes it UNKNOWN.
    xoVariant& setType(Type type);
    void clear() noexcept {
        xoVariant old;
        swap(old);
    }

    // A NaN is true; of the texts only "true", "True", "TRUE", "t" and "1" are.
    bool toBool() const { return mType == BOOL ? mPayload.boolean : convertToBool(); }
    // A text that is not wholly an integer ("1.5", "5 ", "") gives 0; white space may stand before it, "0x1F" is 31 and
    // "010" is 8. A text or REAL beyond the range gives the nearest end of it, NaN gives 0, a BOOL 0 or 1, a DATETIME
    // its count. Every other type gives 0.
    std::int64_t toInteger() const { return mType == INTEGER ? mPayload.integer : convertToInteger(); }
    // A text that is not wholly a decimal number ("1,5", "5 ", "0x1F", "") gives 0.0; white space may stand before it.
    // A text beyond the range gives infinity or 0. What is neither number, text nor BOOL gives NaN.
    double toReal() const { return mType == REAL ? mPayload.real : convertToReal(); }
    // INTEGER and DATETIME in decimal, REAL with six significant digits ("0.1", "1e+20", "inf", "nan"), BOOL as "true"
    // or "false", vectors and matrices as "[1,2.5,3]", string lists and lists joined by " ", maps as
    // "(key=value),(...)". UNKNOWN and USERDATA give an empty text.
    std::string toString() const;
    // STRING gives its text as the only one, LIST the toString() of each element; types other than these and STRINGLIST
    // give an empty list.
    std::vector<std::string> toStringList() const;
    // Lists come from LIST and STRINGLIST, maps from MAP alone; any other type gives an empty one.
    xoVariantListImpl toList() const;
    xoVariantMapImpl toMap() const;
    // From DATETIME and INTEGER; 0 from any other type.
    DateTime toDateTime() const;

    // Writes the converted value to out (which may be this variant) where nothing is lost; otherwise returns false and
    // leaves out alone. Besides each type to itself:
    //
    //   to INTEGER     BOOL, DATETIME; REAL without a fraction and in range; STRING that is wholly an integer in range
    //   to REAL        BOOL; INTEGER that a double holds exactly; STRING that is wholly a number, finite, not rounded
    //                  down to 0, and if it is digits alone, held exactly
    //   to BOOL        INTEGER and REAL 0 and 1; STRING "true", "True", "TRUE", "false", "False", "FALSE"
    //   to STRING      INTEGER, BOOL; REAL whose text reads back as the same value; STRINGLIST of one text
    //   to STRINGLIST  STRING; LIST of nothing but STRING
    //   to LIST        STRINGLIST
    //   to DATETIME    INTEGER
    //
    // White space may stand before a number in a STRING, but not behind it. A number that is no type gives false.
    bool convertLosslessTo(Type type, xoVariant& out) const;

    // Values of different types are never equal, whatever numbers they hold. A REAL NaN is unequal to itself; vectors
    // and matrices are compared as bytes.
    bool operator==(const xoVariant& other) const;
    bool operator!=(const xoVariant& other) const { return !(*this == other); }
    // A strict order over all values: the type's number first, then the value. Vectors and matrices are ordered as
    // bytes, user data by address. A REAL NaN stands beside every REAL: keep it out of ordered containers.
    bool operator<(const xoVariant& other) const;

private:
    friend struct variant::LentText;
    struct Tree;

    union Payload {
        std::int64_t integer;  // INTEGER and DATETIME
        double real;
        bool boolean;
        std::string* text;
        double* numbers;
        std::vector<std::string>* strings;
        xoVariantMapImpl* map;
        xoVariantListImpl* list;
        UserDataInterface* userData;  // may be null
    };

    bool pointsToHeap() const noexcept {
        constexpr unsigned pointers = 1u << STRING | 1u << VEC2D | 1u << VEC3D | 1u << VEC4D | 1u << STRINGLIST |
                                      1u << MAP | 1u << LIST | 1u << MAT3D | 1u << MAT4D | 1u << USERDATA;
        return (pointers >> static_cast<unsigned>(mType) & 1u) != 0;
    }
    template <class Number>
    void buildNumbers(const Number* values, std::size_t count);
    void copyPayload(const xoVariant& other);
    void destroyPayload() noexcept;

    Payload& as(Type type) {
        if (mType != type) setType(type);
        return mPayload;
    }
    const double* getNumbers(Type type) const { return mType == type ? mPayload.numbers : noNumbers(); }
    static const std::string& noString();
    static const std::vector<std::string>& noStrings();
    static const xoVariantListImpl& noList();
    static const xoVariantMapImpl& noMap();
    static const double* noNumbers();

    bool convertToBool() const;
    std::int64_t convertToInteger() const;
    double convertToReal() const;

    Type mType;            // always one of the enumerators
    bool mIsLent = false;  // the payload is not this variant's to delete
    Payload mPayload;
};

static_assert(sizeof(xoVariant) == 16, "a table of variants is an array of tag and word");

// An ordered, contiguous sequence. References and iterators last as those of std::vector do.
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

    // As for variants, what is assigned may lie inside the one assigned to.
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
    // Returns the place behind the one erased. Erasing end() does nothing.
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

// Values under unique text keys, in the keys' byte order. References and iterators last as those of std::map do.
//
// A path is keys joined by a separator, ended by a NUL: "a/b" is the key b of the map under the key a. A key in it may
// be empty, so "a/" is the empty key of the map under a, and "" the empty key of this map. Lists have no place in a
// path. Looking up a key or a path allocates nothing.
//
// A null C string is no key: nothing is found under it and nothing removed, and nothing enters the map.
class XOSYSTEM_API xoVariant::xoVariantMapImpl {
public:
    // Unsigned bytes, a proper prefix first. Keys are short: comparing them here beats a call to do it.
    struct KeyOrder {
        using is_transparent = void;
        bool operator()(std::string_view a, std::string_view b) const noexcept {
            const std::size_t common = a.size() < b.size() ? a.size() : b.size();
            if (common < 8) {
                const std::uint64_t one = shortText(a.data(), common);
                const std::uint64_t other = shortText(b.data(), common);
                return one != other ? one < other : a.size() < b.size();
            }
            for (std::size_t at = 0;; at += 8) {
                if (common - at < 8) at = common - 8;  // the last bytes, some of them once more
                const std::uint64_t one = eightBytes(a.data() + at);
                const std::uint64_t other = eightBytes(b.data() + at);
                if (one != other) return one < other;
                if (at + 8 == common) return a.size() < b.size();
            }
        }

        static int compare(std::string_view a, std::string_view b) noexcept {
            const KeyOrder before;
            return before(a, b) ? -1 : before(b, a) ? 1 : 0;
        }

    private:
        // The bytes as one number, the first of them the highest. Compilers make one instruction of the swaps.
        static std::uint64_t eightBytes(const char* at) noexcept {
            std::uint64_t value = 0;
            std::memcpy(&value, at, sizeof value);
            value = (value & 0x00FF00FF00FF00FF) << 8 | (value >> 8 & 0x00FF00FF00FF00FF);
            value = (value & 0x0000FFFF0000FFFF) << 16 | (value >> 16 & 0x0000FFFF0000FFFF);
            return value << 32 | value >> 32;
        }
        static std::uint64_t fourBytes(const char* at) noexcept {
            std::uint32_t value = 0;
            std::memcpy(&value, at, sizeof value);
            value = (value & 0x00FF00FF) << 8 | (value >> 8 & 0x00FF00FF);
            return value << 16 | value >> 16;
        }
        static std::uint64_t byte(const char* at) noexcept { return static_cast<unsigned char>(*at); }

        // Up to seven bytes, some of them more than once; texts of one size are ordered as these numbers are.
        static std::uint64_t shortText(const char* at, std::size_t size) noexcept {
            if (size >= 4) return fourBytes(at) << 32 | fourBytes(at + size - 4);
            if (size == 0) return 0;
            return byte(at) << 16 | byte(at + size / 2) << 8 | byte(at + size - 1);
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

    // As for variants, what is assigned may lie inside the one assigned to.
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
    // Leaves an existing value alone. Returns the key's place and whether it was inserted.
    std::pair<iterator, bool> insert(std::pair<std::string, xoVariant> entry);
    // Returns the place behind the one erased. Erasing end() does nothing.
    iterator erase(iterator position) { return position != end() ? mEntries.erase(position) : position; }
    // Whether there was such a key.
    bool remove(std::string_view key);
    bool remove(const char* key) { return key != nullptr && remove(std::string_view(key)); }

    // A null path resolves to nothing. With NUL as the separator the whole path is one key.
    xoVariant getValuePath(const char* path, const xoVariant& defaultValue = xoVariant(), char separator = '/') const;
    const xoVariant* findPath(const char* path, char separator = '/') const;
    xoVariant* findPath(const char* path, char separator = '/');
    // Creates what is missing, the last key with a copy of the default; an existing value is left as it is. A value on
    // the way that is not a map is lost: an empty map takes its place. A null path gives a value of the calling thread
    // that holds a copy of the default and lasts until the thread's next call with a null path or key; no map has a
    // part in it. That value keeps the library's DLL loaded and is destroyed when the thread ends: a class of user data
    // that is in it must then still be loaded.
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

    // Inserts beside what the key holds already. Without asList two maps merge key by key at every depth, and texts
    // gather in a STRINGLIST; otherwise the values gather in a LIST.
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

    // Multi-inserts each leaf of the tree into out, beside what it holds, under the leaf's keys joined by the
    // separator. The maps in a list are flattened under the list's key; what else it holds, or the list without maps,
    // is one leaf. An empty map leaves nothing. out may be this map.
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

// The walk of erasePathRegEx with an expression that the caller has compiled, from a place whose path is already known:
// the prefix stands before every key.
class XOSYSTEM_API xoVariantUtils {
public:
    // Throws std::regex_error with error_stack where a path is too long for the runtime's matcher, which may need some
    // hundred bytes of stack for each character (tens of thousands of characters are matched in any case). Whenever it
    // throws, nothing has been erased.
    static std::uint64_t ErasePathRegExImplRecurse(xoVariant::xoVariantMapImpl& map, const std::regex& expression,
                                                   const std::string& prefix);
    static std::uint64_t ErasePathRegExImplRecurse(xoVariant::xoVariantListImpl& list, const std::regex& expression,
                                                   const std::string& prefix);
};

}  // namespace xo

#endif
