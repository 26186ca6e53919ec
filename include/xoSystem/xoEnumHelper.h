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
// which is found by its argument: it stands in the namespace of the enumeration, or is a friend of the class that the
// enumeration is in. The enumeration itself stays as it is. Any values and spellings are possible; of two entries with
// one value the first is shown, and both are understood. A list of flags says so: return {kTable, /*areFlags=*/true}.
// The library's own enumerations have such lists:
//
//     xo::EnumHelper<xo::xoLogType>::ToText(xo::xoLogWarning);     // "WARNING"
//
// Names are compared without the case of ASCII letters, an exact match before others. As a text, a value is
//
//   the name of its entry, if it has one;
//   without an entry and without flags, its decimal number;
//   of flags, the names of the entries that it is made of, those with most bits chosen first, in the order of the
//   table, with "|" between, and what is left as "0x40"; "0" for none.
//
// Values are 64-bit integers where the type is not known: one beyond INT64_MAX is the negative number of the same bits.
//
// Nothing here changes, so that any thread may use it at any time. Nothing throws, short of memory running out.
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

// A value and its name; the label is for people, and is the name where it is empty. The texts last for ever.
template <class E>
struct xoEnumEntry {
    E value;                      // may stand in several entries
    std::string_view name;        // for settings and code
    std::string_view label = {};  // for people
};

// A table of entries, which lasts for ever: it is not copied.
template <class E>
class xoEnumList {
    static_assert(std::is_enum_v<E>);

public:
    // The type that a standard sequence has.
    using value_type = xoEnumEntry<E>;

    // areFlags: values are combined of bits.
    template <std::size_t N>
    constexpr xoEnumList(const xoEnumEntry<E> (&table)[N], bool areFlags = false)
        : mBegin(table), mSize(N), mAreFlags(areFlags) {}

    // As in an array.
    constexpr const xoEnumEntry<E>* begin() const { return mBegin; }
    constexpr const xoEnumEntry<E>* end() const { return mBegin + mSize; }
    constexpr std::size_t size() const { return mSize; }
    // The index must be below size().
    constexpr const xoEnumEntry<E>& operator[](std::size_t index) const { return mBegin[index]; }

    // Whether values are combined of bits.
    constexpr bool areFlags() const { return mAreFlags; }

private:
    const xoEnumEntry<E>* mBegin;
    std::size_t mSize;
    bool mAreFlags;
};

namespace impl {

// Of ASCII letters.
constexpr char lowerLetter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// Without the case of ASCII letters.
constexpr bool isSameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i != a.size(); ++i)
        if (lowerLetter(a[i]) != lowerLetter(b[i])) return false;
    return true;
}

// Whether an INI file brings the name back as the text that it is.
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

// The enumerator as the source spells it, without its scope; of several with one value the first. Empty for a value
// without enumerator. Taken from what the compiler calls this function.
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
    return isNumber || name.find(")") != std::string_view::npos ? std::string_view() : name;
}

// The names of an enumeration whose type the code does not know. What EnumHelper's function Get returns is one; one
// that exists only at run time derives from this class.
class XOSYSTEM_API EnumHelperInterface {
public:
    virtual ~EnumHelperInterface();

    // The entries, in the order of their table.
    virtual std::size_t getCount() const = 0;
    // 0 and "" from getCount() on.
    virtual std::int64_t getValue(std::size_t index) const = 0;
    virtual std::string_view getName(std::size_t index) const = 0;
    // The name where there is no label.
    virtual std::string_view getLabel(std::size_t index) const = 0;
    virtual bool areFlags() const = 0;

    // As described above. Nothing is lost: fromText gives the value back, but where it has no entry only with flags.
    std::string toText(std::int64_t value) const;
    // Takes a name, or a number (decimal or "0x1F") that is an entry's value; with flags any number, several of all
    // these with "|" or "," between them, and the empty text for 0. Blanks around names do not matter. Labels are not
    // understood: they may be translated. False leaves the value alone.
    bool fromText(std::string_view text, std::int64_t& value) const;
    // Takes a STRING as a text, an INTEGER as a number; with flags a STRINGLIST or a LIST of these, which are combined.
    // False for anything else; it leaves the value alone.
    bool fromVariant(const xoVariant& variant, std::int64_t& value) const;

protected:
    EnumHelperInterface() = default;
    EnumHelperInterface(const EnumHelperInterface&) = default;
    EnumHelperInterface& operator=(const EnumHelperInterface&) = default;
};

// The names of E, whose xoEnumEntries(E) is found by its argument.
template <class E>
class EnumHelper final : public EnumHelperInterface {
public:
    // The one object there is, for code that does not know E.
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

    // Each returns false, and leaves the value alone, for what it does not understand. FromName takes a name and
    // nothing else; the others are fromText and fromVariant of the interface, and refuse a number that E cannot hold.
    static constexpr bool FromName(std::string_view name, E& value) {
        const xoEnumEntry<E>* found = nullptr;
        for (const xoEnumEntry<E>& entry : GetEntries()) {
            if (entry.name == name) {
                found = &entry;
                break;
            }
            if (found == nullptr && impl::isSameName(entry.name, name)) found = &entry;
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

    // The text as described above, and a STRING of it; for the latter include xoVariant.h.
    static std::string ToText(E value) { return Get().toText(static_cast<std::int64_t>(value)); }
    template <class Variant = xoVariant>
    static Variant ToVariant(E value) {
        return Variant(ToText(value));
    }

    // Whether the names are fit for INI files, where all of them come back as STRING: they are unique without case,
    // begin with an ASCII letter, have only such letters, digits, "_", "-", "." and inner blanks, and are none of
    // "true", "false", "inf" and "nan". For a static_assert.
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
