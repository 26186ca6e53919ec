#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "support/temporaryFolder.h"
#include "xoSystem/xoEnumHelper.h"
#include "xoSystem/xoIniFile.h"
#include "xoSystem/xoSystem.h"

namespace shop {

enum class Colour { Red = 1, Green = 70001, Scarlet = 1, Dusk = -5 };
constexpr xo::xoEnumEntry<Colour> kColours[] = {{Colour::Red, "red", "Red wine"},
                                                {Colour::Green, xo::EnumeratorName<Colour::Green>()},
                                                {Colour::Scarlet, "scarlet"},
                                                {Colour::Dusk, "GREEN"}};
constexpr xo::xoEnumList<Colour> xoEnumEntries(Colour) { return kColours; }

enum Access : std::uint8_t { None = 0, Read = 1, Write = 2, Both = 3, Run = 8, Own = 0x8A };
constexpr xo::xoEnumEntry<Access> kAccess[] = {{None, "none"}, {Read, "read"}, {Write, "write"},
                                               {Both, "both"}, {Run, "run"},   {Own, "own"}};
constexpr xo::xoEnumList<Access> xoEnumEntries(Access) { return {kAccess, /*areFlags=*/true}; }

class Till {
    enum class State : std::uint64_t { Open, Shut = std::uint64_t{1} << 63 };
    static constexpr xo::xoEnumEntry<State> kStates[] = {{State::Open, xo::EnumeratorName<State::Open>()},
                                                         {State::Shut, "shut"}};
    friend constexpr xo::xoEnumList<State> xoEnumEntries(State) { return kStates; }

public:
    static const xo::EnumHelperInterface& states() { return xo::EnumHelper<State>::Get(); }
    static bool readsShut() {
        State state = State::Open;
        return xo::EnumHelper<State>::FromText("9223372036854775808", state) && state == State::Shut;
    }
};

}  // namespace shop

namespace {

using shop::Access;
using shop::Colour;
using Colours = xo::EnumHelper<Colour>;
using Accesses = xo::EnumHelper<Access>;
using xo::xoVariant;

static_assert(Colours::ToName(Colour::Green) == "Green" && Colours::ToName(Colour::Scarlet) == "red");
static_assert(Colours::ToName(static_cast<Colour>(9)).empty() && Colours::ToLabel(static_cast<Colour>(9)).empty());
static_assert(Colours::ToLabel(Colour::Red) == "Red wine" && Colours::ToLabel(Colour::Green) == "Green");
static_assert(!Colours::IsValid(), "two names differ in case alone");
static_assert(Accesses::IsValid());
static_assert(xo::EnumeratorName<shop::Both>() == "Both");
static_assert(xo::EnumeratorName<static_cast<Colour>(9)>().empty());
static_assert(xo::EnumeratorName<static_cast<Colour>(-9)>().empty());

Colour colourOf(const xoVariant& variant) { return Colours::FromVariantOr(variant, static_cast<Colour>(77)); }

TEST(EnumHelper, ReadsNamesAndNumbersOfEntries) {
    for (const char* const text : {"red", "RED", " Red\t", "scarlet", "1", "0x1"})
        EXPECT_EQ(colourOf(text), Colour::Red) << text;
    for (const char* const text : {"Green", "70001", "0x11171"}) EXPECT_EQ(colourOf(text), Colour::Green) << text;
    for (const char* const text : {"GREEN", "-5", "18446744073709551611"})
        EXPECT_EQ(colourOf(text), Colour::Dusk) << text;
    EXPECT_EQ(colourOf("gREEN"), Colour::Green) << "the first where none is exact";
    for (const char* const text : {"", "Red wine", "2", "0x", "-", "1.0", "red|scarlet", "red,", "--5", "-0x5", "+1",
                                   "99999999999999999999", "-9223372036854775809"})
        EXPECT_EQ(colourOf(text), static_cast<Colour>(77)) << text;
    EXPECT_EQ(colourOf(70001), Colour::Green);
    for (const xoVariant& variant : {xoVariant(), xoVariant(2), xoVariant(1.0), xoVariant(true),
                                     xoVariant(std::vector<std::string>{"red"}), xoVariant(xoVariant::MAP)})
        EXPECT_EQ(colourOf(variant), static_cast<Colour>(77)) << variant.toString();
    Colour colour = Colour::Dusk;
    EXPECT_TRUE(Colours::FromName("reD", colour));
    EXPECT_FALSE(Colours::FromName(" red", colour));
    EXPECT_EQ(colour, Colour::Red);
    EXPECT_EQ(Colours::ToText(Colour::Scarlet) + Colours::ToText(static_cast<Colour>(-77)), "red-77");
}

TEST(EnumHelper, KeepsEveryCombinationOfFlags) {
    for (int value = 0; value != 256; ++value) {
        const auto access = static_cast<Access>(value);
        Access fromText = shop::None, fromVariant = shop::None;
        ASSERT_TRUE(Accesses::FromText(Accesses::ToText(access), fromText)) << Accesses::ToText(access);
        ASSERT_TRUE(Accesses::FromVariant(value, fromVariant));
        ASSERT_EQ(fromText, access);
        ASSERT_EQ(fromVariant, access);
    }
    const auto text = [](int value) { return Accesses::ToText(static_cast<Access>(value)); };
    EXPECT_EQ(text(0) + " " + text(3) + " " + text(9) + " " + text(11), "none both read|run both|run");
    EXPECT_EQ(text(0x8B) + " " + text(0x40) + " " + text(0x49), "read|own 0x40 read|run|0x40");

    using Texts = std::vector<std::string>;
    const xoVariant known = Texts{"read", "run|0x40"}, unknown = Texts{"read", "walk"}, empty = Texts{};
    // -1: not understood
    const std::pair<xoVariant, int> rows[] = {
        {"", 0},          {" Read , WRITE|8 ", 11},
        {"both|read", 3}, {"255", 255},
        {"256", -1},      {"-1", -1},
        {256, -1},        {"|", -1},
        {"read|", -1},    {"read;run", -1},
        {known, 0x49},    {unknown, -1},
        {empty, 0},       {1.0, -1},
    };
    for (const auto& [variant, value] : rows) {
        Access access = shop::Own;
        EXPECT_EQ(Accesses::FromVariant(variant, access), value >= 0) << variant.toString();
        EXPECT_EQ(access, value >= 0 ? static_cast<Access>(value) : shop::Own) << variant.toString();
    }
    xoVariant::xoVariantListImpl list;
    list << "read" << 8;
    EXPECT_EQ(Accesses::FromVariantOr(list, shop::None), 9);
    list << xoVariant(list);
    EXPECT_EQ(Accesses::FromVariantOr(list, shop::None), shop::None);
}

TEST(EnumHelper, ServesCodeThatDoesNotKnowTheType) {
    const xo::EnumHelperInterface& states = shop::Till::states();
    ASSERT_EQ(states.getCount(), 2u);
    EXPECT_EQ(std::string(states.getName(0)) + std::string(states.getLabel(1)), "Openshut");
    EXPECT_EQ(states.getValue(1), INT64_MIN);
    EXPECT_EQ(states.getValue(2), 0);
    EXPECT_EQ(std::string(states.getName(2)) + std::string(states.getLabel(2)), "");
    EXPECT_FALSE(states.areFlags());
    EXPECT_TRUE(shop::Till::readsShut());
    EXPECT_EQ(states.toText(INT64_MIN), "shut");
}

template <class E>
void expectInIniFile(const std::string& path) {
    static_assert(xo::EnumHelper<E>::IsValid());
    xoVariant::xoVariantMapImpl written, read;
    for (const auto& entry : xo::EnumHelper<E>::GetEntries())
        written[entry.name] = xo::EnumHelper<E>::ToVariant(entry.value);
    ASSERT_TRUE(xo::SaveIniFile(path, written));
    ASSERT_TRUE(xo::LoadIniFile(path, read));
    for (const auto& entry : xo::EnumHelper<E>::GetEntries()) {
        EXPECT_EQ(read.getValue(entry.name).getType(), xoVariant::STRING) << entry.name;
        E value{};
        EXPECT_TRUE(xo::EnumHelper<E>::FromVariant(read.getValue(entry.name), value)) << entry.name;
        EXPECT_EQ(value, entry.value) << entry.name;
    }
}

TEST(EnumHelper, GoesThroughIniFiles) {
    const xo::tests::TemporaryFolder folder;
    expectInIniFile<Access>(folder.path("names.ini"));
}

TEST(EnumHelper, KnowsWhatIsFitForIniFiles) {
    for (const char* const name : {"", " a", "a ", "1st", "-a", "a,b", "a|b", "a\xC3\xA9", "True", "INF", "nan"})
        EXPECT_FALSE(xo::impl::isPlainName(name)) << name;
    EXPECT_TRUE(xo::impl::isPlainName("a b-c_d.e9"));
}

// Each enumerator that the compiler knows has an entry, and each entry an enumerator. Those of the library are small.
template <class E, std::size_t... Numbers>
void expectEachNamed(std::index_sequence<Numbers...>) {
    using Names = xo::EnumHelper<E>;
    EXPECT_TRUE(Names::IsValid());
    std::size_t enumerators = 0;
    const auto expectNamed = [&](E value, std::string_view enumerator) {
        if (enumerator.empty()) return;
        ++enumerators;
        EXPECT_FALSE(Names::ToName(value).empty()) << enumerator;
    };
    (expectNamed(static_cast<E>(Numbers), xo::EnumeratorName<static_cast<E>(Numbers)>()), ...);
    EXPECT_EQ(enumerators, Names::GetEntries().size()) << Names::GetEntries()[0].name;
}

template <class... Enums>
void expectEachNamed() {
    (expectEachNamed<Enums>(std::make_index_sequence<64>()), ...);
}

TEST(EnumHelper, NamesTheLibrarysOwn) {
    expectEachNamed<xo::xoLogType, xo::xoLogFileFlag, xo::ProcessPriority, xo::xoProcess::State, xo::InitType,
                    xo::xoPowerStatus::AcLine, xo::xoLockFile::LockType, xoThreadCreationFlag,
                    xo::xoDataStream::Endianness, xo::xoIoDevice::SeekStart, xo::xoIoDeviceDelegable::DelegableFlag,
                    xo::xoDirUtils::GlobFlag, xo::xoStringUtils::xoCharSet,
                    xo::xoStringUtils::SoftwareVersionComparisonResult, xo::xoMathUtils::xoByteUnit,
                    xo::xoVariant::Type, xo::AsciiTableBuilder::Style, xo::AsciiTableBuilder::Align,
                    xo::AsciiTableBuilder::Overflow, xo::xoProgressUnit, xo::xoProgressState::Phase,
                    xo::xoProgressConsole::Flag, xo::xoIoDeviceFile::OpenMode, xo::xoIoDeviceFile::Share,
                    xo::xoXRefResolverSearchPath::How, xo::CPUInfo::Feature, xo::CPUInfo::Cache::Kind,
                    xo::xoNamedPipe::Result, xo::xoNamedPipe::ConnectMode, xo::xoNamedPipe::ServerTrust,
                    xo::xoNamedPipeServer::Access, xo::xoProcess::ProcessTree, xo::xoProcess::RunResult::Outcome>();

    for (const auto& entry : xo::EnumHelper<xoVariant::Type>::GetEntries())
        if (entry.value < xoVariant::DATETIME) EXPECT_EQ(xoVariant(entry.value).getTypeAsString(), entry.name);
    for (const auto& entry : xo::EnumHelper<xo::ProcessPriority>::GetEntries())
        EXPECT_EQ(xo::ProcessPriorityToString(entry.value), entry.name);
    EXPECT_EQ(xo::EnumHelper<xo::xoLogType>::ToText(xo::xoLogCritical), "CRITICAL");
    EXPECT_TRUE(xo::EnumHelper<xo::xoLogFileFlag>::Get().areFlags());
}

}  // namespace
