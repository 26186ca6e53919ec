// xoVariant: one value of any of the library's types. xoVariant.h shows its use, and includes the lists and maps that
// it can hold; a source that uses those, or calls toList or toMap, includes that header.
//
// A variant owns what it holds: copies are deep, a move leaves the source UNKNOWN. INTEGER, REAL, BOOL and DATETIME
// live inside the variant's 16 bytes; the other types are one object on the heap.
#ifndef XOSYSTEM_XOVARIANTVALUE_H
#define XOSYSTEM_XOVARIANTVALUE_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "xoSystem/xoExport.h"

#if defined(_MSC_VER)
#    pragma warning(push)
#    pragma warning(disable : 4251)  // private members of standard types: host and DLL share one C++ runtime
#endif

namespace xo {

template <class E>
class xoEnumList;

namespace variant {
struct BorrowedText;
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
        // The base has nothing to copy.
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

    // USERDATA that takes ownership of the object; null gives a USERDATA without an object.
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
    xoVariant(xoVariant&& other) noexcept
        : mType(other.mType), mIsBorrowed(other.mIsBorrowed), mPayload(other.mPayload) {
        other.mType = UNKNOWN;
        other.mIsBorrowed = false;
    }
    ~xoVariant() {
        if (pointsToHeap() && !mIsBorrowed) destroyPayload();
    }

    // The value that is assigned may lie inside the one that it is assigned to, or be the same.
    xoVariant& operator=(const xoVariant& other);
    xoVariant& operator=(xoVariant&& other) noexcept {
        xoVariant taken(std::move(other));
        swap(taken);
        return *this;
    }

    // Exchanges type and value with another, of which neither may lie inside the other.
    void swap(xoVariant& other) noexcept {
        std::swap(mType, other.mType);
        std::swap(mIsBorrowed, other.mIsBorrowed);
        std::swap(mPayload, other.mPayload);
    }
    friend void swap(xoVariant& a, xoVariant& b) noexcept { a.swap(b); }

    // The narrowest type that reads the whole text: INTEGER ("0x1F" and "010" too, and the empty text is 0), else REAL
    // ("3.25" or "3,25"), else STRING. Never BOOL. White space and a sign may stand before a number, nothing behind it.
    // A whole number beyond the range gives the nearest end of it, INTEGER 9223372036854775807 for example; a REAL
    // beyond its range gives infinity or 0.
    static xoVariant BuildFromString(std::string_view text);
    // The same; a null text is an empty one.
    static xoVariant BuildFromString(const char* text) {
        return BuildFromString(std::string_view(text != nullptr ? text : ""));
    }

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
    friend struct variant::BorrowedText;
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

    Type mType;                // always one of the enumerators
    bool mIsBorrowed = false;  // the payload is not this variant's to delete
    Payload mPayload;
};

static_assert(sizeof(xoVariant) == 16, "a table of variants is an array of tag and word");

// The names of the values, for EnumHelper.
XOSYSTEM_API xoEnumList<xoVariant::Type> xoEnumEntries(xoVariant::Type);

}  // namespace xo

#if defined(_MSC_VER)
#    pragma warning(pop)
#endif

#endif
