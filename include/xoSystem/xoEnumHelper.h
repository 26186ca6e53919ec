// EnumHelper: names for the values of an enumeration, for settings, dialogs and logs.
//
//     namespace shop {
//     enum class Colour { Red = 1, Green = 70001 };
//     constexpr xo::xoEnumEntry<Colour> kColours[] = {
//         {Colour::Red, "red", "Red wine"},
//         {Colour::Green, xo::EnumeratorName<Colour::Green>()},   // "Green"
//     };
//     constexpr xo::xoEnumList<Colour> xoEnumEntries(Colour) { return kColours; }
//     }
//
//     using Colours = xo::EnumHelper<shop::Colour>;
//     static_assert(Colours::IsValid());
//     settings.editValuePath("wine/colour") = Colours::ToVariant(shop::Colour::Red);      // colour=red
//     const auto colour = Colours::FromVariantOr(settings.getValuePath("wine/colour"), shop::Colour::Green);
//
// The owner of an enumeration, or of code that uses somebody else's, writes a table and the function xoEnumEntries,
// which argument-dependent lookup must find: it is in the namespace of the enumeration, or a friend of the class that
// the enumeration is in. The enumeration itself is not changed. Any values and spellings are possible. If two entries
// have the same value, the first name is written and both are read. For an enumeration of flags, the function returns
// {kTable, /*areFlags=*/true}. The library's own enumerations have such lists:
//
//     xo::EnumHelper<xo::xoLogType>::ToText(xo::xoLogWarning);     // "WARNING"
//
// Names are compared ignoring the case of ASCII letters; an exact match is preferred. As a text, a value is
//
//   the name of its entry, if it has one;
//   without an entry and without flags, its decimal number;
//   of flags, the names of the entries that it is made of, those with most bits chosen first, in the order of the
//   table, with "|" between, and what is left as "0x40"; "0" for none.
//
// Where the type is not known, values are 64-bit integers; a value beyond INT64_MAX is the negative number with the
// same bits.
//
// All of this is immutable, so any thread may use it at any time. Nothing throws except std::bad_alloc.
#ifndef XOSYSTEM_XOENUMHELPER_H
#define XOSYSTEM_XOENUMHELPER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

#include "xoSystem/xoExport.h"

namespace xo {

class xoVariant;

// A value, its name, and a label for people; an empty label stands for the name. The texts must have static storage
// duration, as literals have.
template <class E>
struct xoEnumEntry {
    E value;                // may stand in several entries
    std::string_view name;  // for settings and code
    // For people. Compilers warn about entries that leave out a member without an initializer.
    std::string_view label = {};  // NOLINT(readability-redundant-member-init)
};

// Refers to a table of entries with static storage duration.
template <class E>
class xoEnumList {
    static_assert(std::is_enum_v<E>);

public:
    // The member type of a standard container.
    using value_type = xoEnumEntry<E>;

    // areFlags: values are combinations of bits.
    template <std::size_t N>
    constexpr xoEnumList(const xoEnumEntry<E> (&table)[N], bool areFlags = false)
        : mBegin(table), mSize(N), mAreFlags(areFlags) {}

    // As in std::array.
    constexpr const xoEnumEntry<E>* begin() const { return mBegin; }
    constexpr const xoEnumEntry<E>* end() const { return mBegin + mSize; }
    constexpr std::size_t size() const { return mSize; }
    // The index must be below size().
    constexpr const xoEnumEntry<E>& operator[](std::size_t index) const { return mBegin[index]; }

    // Whether values are combinations of bits.
    constexpr bool areFlags() const { return mAreFlags; }

private:
    const xoEnumEntry<E>* mBegin;
    std::size_t mSize;
    bool mAreFlags;
};

namespace impl {

// The lower case of an ASCII letter.
constexpr char lowerLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Ignores the case of ASCII letters.
constexpr bool isSameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i != a.size(); ++i)
        if (lowerLetter(a[i]) != lowerLetter(b[i])) return false;
    return true;
}

// Whether the name, written to an INI file, is read back as the same STRING.
constexpr bool isPlainName(std::string_view name) {
    if (name.empty() || name.back() == ' ') return false;
    for (const char& c : name) {
        const bool isLetter = lowerLetter(c) >= 'a' && lowerLetter(c) <= 'z';
        const bool isInner = (c >= '0' && c <= '9') || c == '_' || c == '-' || c == '.' || c == ' ';
        if (!isLetter && (!isInner || &c == name.data())) return false;
    }
    return !isSameName(name, "true") && !isSameName(name, "false") && !isSameName(name, "inf") &&
           !isSameName(name, "nan");
}

}  // namespace impl

// The enumerator as it is spelled in the source, without its scope; if several have the value, the first one. Empty for
// a value without an enumerator. The text is part of the name that the compiler gives this function.
template <auto Value>
constexpr std::string_view EnumeratorName() {
    static_assert(std::is_enum_v<decltype(Value)>);
#if defined(_MSC_VER) && !defined(__clang__)
    std::string_view name = __FUNCSIG__;  // "... EnumeratorName<shop::Colour::Green>(void)"
    name = name.substr(0, name.rfind('>'));
#else
    std::string_view name =
        __PRETTY_FUNCTION__;  // "... [Value = shop::Colour::Green]", "... [with auto Value = ...; ...]"
    name.remove_prefix(name.find("Value = ") + 8);
    name = name.substr(0, name.find_first_of(";]"));
#endif
    const std::size_t scope = name.find_last_of(":< ");
    if (scope != std::string_view::npos) name.remove_prefix(scope + 1);
    const bool isNumber = name.empty() || (name[0] >= '0' && name[0] <= '9') || name[0] == '-';
    return isNumber || name.find(')') != std::string_view::npos ? std::string_view() : name;
}

// The names of an enumeration for code that does not know its type. The function Get of EnumHelper returns one. Derive
// from this class for an enumeration that is known only at run time.
class XOSYSTEM_API EnumHelperInterface {
public:
    virtual ~EnumHelperInterface();

    // The number of entries; they are in the order of their table.
    virtual std::size_t getCount() const = 0;
    // 0 and "" from getCount() on.
    virtual std::int64_t getValue(std::size_t index) const = 0;
    virtual std::string_view getName(std::size_t index) const = 0;
    // The name where there is no label.
    virtual std::string_view getLabel(std::size_t index) const = 0;
    virtual bool areFlags() const = 0;

    // The text of a value, as described above. fromText reads it back, except the number of a value that has no entry,
    // unless there are flags.
    std::string toText(std::int64_t value) const;
    // Reads a name, or the number (decimal or "0x1F") of an entry. With flags it reads any number, several names and
    // numbers with "|" or "," between them, and the empty text as 0. Blanks around names are ignored. Labels are not
    // read, because they may be translated. If it returns false, the value is unchanged.
    bool fromText(std::string_view text, std::int64_t& value) const;
    // Reads a STRING as a text and an INTEGER as a number. With flags it combines the elements of a STRINGLIST or LIST.
    // If it returns false, as for any other type, the value is unchanged.
    bool fromVariant(const xoVariant& variant, std::int64_t& value) const;

protected:
    EnumHelperInterface() = default;
    EnumHelperInterface(const EnumHelperInterface&) = default;
    EnumHelperInterface& operator=(const EnumHelperInterface&) = default;
};

// The names of E, for which there is a function xoEnumEntries(E).
template <class E>
class EnumHelper final : public EnumHelperInterface {
public:
    // The only object of this class, for code that does not know E.
    static const EnumHelper& Get() {
        static const EnumHelper helper;
        return helper;
    }

    // The list that xoEnumEntries gives.
    static constexpr xoEnumList<E> GetEntries() { return xoEnumEntries(E{}); }

    // "" for a value without entry. The label is the name where there is none.
    static constexpr std::string_view ToName(E value) {
        for (const xoEnumEntry<E>& entry : GetEntries())
            if (entry.value == value) return entry.name;
        return {};
    }
    static constexpr std::string_view ToLabel(E value) {
        for (const xoEnumEntry<E>& entry : GetEntries())
            if (entry.value == value) return entry.label.empty() ? entry.name : entry.label;
        return {};
    }

    // If one of these returns false, the value is unchanged. FromName reads a name only. The others are fromText and
    // fromVariant of the interface, and return false for a number that E cannot represent.
    static constexpr bool FromName(std::string_view name, E& value) {
        const xoEnumEntry<E>* found = nullptr;
        for (const xoEnumEntry<E>& entry : GetEntries()) {
            if (!impl::isSameName(entry.name, name)) continue;  // mostly known by the first letter
            const bool isExact = entry.name == name;
            if (isExact || found == nullptr) found = &entry;
            if (isExact) break;
        }
        if (found == nullptr) return false;
        value = found->value;
        return true;
    }
    static bool FromText(std::string_view text, E& value) {
        std::int64_t number = 0;
        return Get().fromText(text, number) && take(number, value);
    }
    static bool FromVariant(const xoVariant& variant, E& value) {
        std::int64_t number = 0;
        return Get().fromVariant(variant, number) && take(number, value);
    }
    static E FromVariantOr(const xoVariant& variant, E fallback) {
        FromVariant(variant, fallback);
        return fallback;
    }

    // The text as described above, and a STRING with it, which needs xoVariant.h.
    static std::string ToText(E value) { return Get().toText(static_cast<std::int64_t>(value)); }
    template <class Variant = xoVariant>
    static Variant ToVariant(E value) {
        return Variant(ToText(value));
    }

    // Whether all names, written to an INI file, are read back as the same STRING: they are unique when case is
    // ignored, begin with an ASCII letter, have only such letters, digits, "_", "-", "." and inner blanks, and are none
    // of "true", "false", "inf" and "nan". For a static_assert.
    static constexpr bool IsValid() {
        for (const xoEnumEntry<E>& entry : GetEntries()) {
            if (!impl::isPlainName(entry.name)) return false;
            for (const xoEnumEntry<E>* other = GetEntries().begin(); other != &entry; ++other)
                if (impl::isSameName(entry.name, other->name)) return false;
        }
        return true;
    }

    // The interface, for this list.
    std::size_t getCount() const override { return GetEntries().size(); }
    std::int64_t getValue(std::size_t index) const override {
        return index < getCount() ? static_cast<std::int64_t>(GetEntries()[index].value) : 0;
    }
    std::string_view getName(std::size_t index) const override {
        return index < getCount() ? GetEntries()[index].name : std::string_view();
    }
    std::string_view getLabel(std::size_t index) const override {
        if (index >= getCount()) return {};
        const xoEnumEntry<E>& entry = GetEntries()[index];
        return entry.label.empty() ? entry.name : entry.label;
    }
    bool areFlags() const override { return GetEntries().areFlags(); }

private:
    EnumHelper() = default;

    static bool take(std::int64_t number, E& value) {
        const auto taken = static_cast<E>(number);
        if (static_cast<std::int64_t>(taken) != number) return false;
        value = taken;
        return true;
    }
};

}  // namespace xo

#endif
