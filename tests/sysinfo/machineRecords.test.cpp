// What the library makes of records that processors, systems and firmware have written.
#include <gmock/gmock.h>

#include <cstring>
#include <map>
#include <thread>

#include "platform/handle.h"
#include "sysinfo/errand.h"
#include "sysinfo/firmware.h"
#include "sysinfo/osName.h"
#include "sysinfo/processorFacts.h"

namespace {

using namespace xo::sysinfo;
using testing::ElementsAre;
using testing::IsEmpty;
using xo::CPUInfo;

template <class Number>
std::string bytes(Number number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}
std::string zeros(std::size_t count) { return std::string(count, '\0'); }

// ---- the instruction

std::uint32_t word(const char* four) {
    std::uint32_t value = 0;
    std::memcpy(&value, four, 4);
    return value;
}

struct Processor {
    std::map<std::pair<std::uint32_t, std::uint32_t>, Leaf> leaves;
    std::uint64_t saved = 0;
    bool mayAskForSaved = true;

    CPUInfo facts() const {
        CPUInfo facts = ProcessorFacts::nothing();
        const ProcessorSource source{[this](std::uint32_t leaf, std::uint32_t subLeaf) {
                                         const auto found = leaves.find({leaf, subLeaf});
                                         return found != leaves.end() ? found->second : Leaf{};
                                     },
                                     [this] {
                                         EXPECT_TRUE(mayAskForSaved) << "the instruction would fault";
                                         return saved;
                                     }};
        ProcessorFacts::identify(source, facts);
        return facts;
    }
};

constexpr std::uint32_t kAll = 0xFFFFFFFF, kExtended = 0x80000000;

Processor largestOf(std::uint32_t highest) {
    Processor processor;
    processor.leaves[{0, 0}] = {highest, word("Auth"), word("cAMD"), word("enti")};
    return processor;
}

TEST(Processor, IsIdentified) {
    Processor processor = largestOf(1);
    struct Row {
        std::uint32_t version;
        unsigned family, model, stepping;
    };
    const Row rows[] = {
        {0x00000543, 5, 4, 3}, {0x000906EA, 6, 0x9E, 10}, {0x00A20F12, 0x19, 0x21, 2}, {0x0F10F543, 5, 4, 3}};
    for (const Row& row : rows) {
        processor.leaves[{1, 0}] = {row.version, 0, 0, 0};
        const CPUInfo facts = processor.facts();
        EXPECT_EQ(std::tuple(facts.getFamily(), facts.getModel(), facts.getStepping()),
                  std::tuple(row.family, row.model, row.stepping))
            << std::hex << row.version;
        EXPECT_EQ(facts.getVendor(), "AuthenticAMD");
        EXPECT_EQ(facts.getBrand() + facts.getHypervisor(), "");
    }
    processor.leaves[{kExtended, 0}] = {kExtended + 4, 0, 0, 0};
    processor.leaves[{kExtended + 2, 0}] = {word("  Fa"), word("st  "), word(" Chi"), word("p\t\x01 ")};
    processor.leaves[{kExtended + 4, 0}] = {word(" 3  "), 0, 0, 0};
    processor.leaves[{1, 0}].c = 1u << 31;
    processor.leaves[{0x40000000, 0}] = {0, word("KVMK"), word("VMKV"), word("M\0\0")};
    EXPECT_EQ(processor.facts().getBrand(), "Fast Chip 3");
    EXPECT_EQ(processor.facts().getHypervisor(), "KVMKVMKVM");
}

TEST(Processor, HasOnlyWhatItsLeavesSayAndTheSystemSaves) {
    struct Row {
        const char* what;
        std::uint32_t highest, highestOf7, highestExtended;
        std::uint64_t saved;
        std::size_t features;
    };
    const Row rows[] = {{"no leaf", 0, 0, 0, 0xE6, 0},
                        {"an old one", 1, 0, 0, 0xE6, 13},
                        {"leaf 7", 7, 0, 0, 0xE6, 38},
                        {"leaf 7.1", 7, 1, 0, 0xE6, 40},
                        {"extended", 7, 1, kExtended + 7, 0xE6, 44},
                        {"extended, no clock", 7, 1, kExtended + 6, 0xE6, 43},
                        {"no 512 bits", 7, 1, kExtended + 7, 0x06, 31},
                        {"no registers", 7, 1, kExtended + 7, 0x02, 24}};
    for (const Row& row : rows) {
        Processor processor = largestOf(row.highest);
        processor.saved = row.saved;
        processor.leaves[{1, 0}] = processor.leaves[{kExtended + 1, 0}] = processor.leaves[{kExtended + 7, 0}] =
            processor.leaves[{7, 1}] = {kAll, kAll, kAll, kAll};
        processor.leaves[{7, 0}] = {row.highestOf7, kAll, kAll, kAll};
        processor.leaves[{kExtended, 0}] = {row.highestExtended, 0, 0, 0};
        EXPECT_EQ(processor.facts().getFeatureNames().size(), row.features) << row.what;
        processor.leaves[{1, 0}].c &= ~(1u << 27);  // the system saves nothing
        processor.mayAskForSaved = false;
        EXPECT_FALSE(processor.facts().hasFeature(CPUInfo::FeatureAVX)) << row.what;
    }
    Processor one = largestOf(7);
    one.leaves[{7, 0}] = {0, 1u << 29, 0, 0};
    EXPECT_THAT(one.facts().getFeatureNames(), ElementsAre("SHA"));
    for (const int number : {-1, 44, 64, 1000})
        EXPECT_FALSE(one.facts().hasFeature(static_cast<CPUInfo::Feature>(number))) << number;
}

// ---- the system's records

std::string record(std::uint32_t relation, const std::string& content) {
    return bytes(relation) + bytes(static_cast<std::uint32_t>(content.size() + 8)) + content;
}
std::string masks(const std::vector<std::uint64_t>& threads) {
    std::string text;
    for (std::size_t group = 0; group != threads.size(); ++group)
        text += bytes(threads[group]) + bytes(static_cast<std::uint16_t>(group)) + zeros(6);
    return text;
}
std::string core(std::uint64_t threads, std::uint8_t efficiencyClass = 0) {
    return record(
        0, bytes(std::uint8_t{1}) + bytes(efficiencyClass) + zeros(20) + bytes(std::uint16_t{1}) + masks({threads}));
}
std::string cache(std::uint8_t level, std::uint32_t kind, std::uint32_t size, std::uint8_t ways,
                  const std::vector<std::uint64_t>& threads, std::uint16_t groups) {
    return record(2, bytes(level) + bytes(ways) + bytes(std::uint16_t{64}) + bytes(size) + bytes(kind) + zeros(18) +
                         bytes(groups) + masks(threads));
}
std::string package(const std::vector<std::uint64_t>& threads) {
    return record(3, zeros(22) + bytes(static_cast<std::uint16_t>(threads.size())) + masks(threads));
}
std::string groups(std::uint16_t count) {
    return record(4, bytes(count) + bytes(count) + zeros(20) + zeros(48u * count));
}

std::string counts(const CPUInfo& facts) {
    std::string text = std::to_string(facts.getPackageCount()) + " " + std::to_string(facts.getCoreCount()) + " " +
                       std::to_string(facts.getThreadCount()) + " " + std::to_string(facts.getGroupCount());
    for (const auto& each : facts.getCoreClasses())
        text += ", class " + std::to_string(each.efficiencyClass) + " " + std::to_string(each.cores) + " " +
                std::to_string(each.threads);
    for (const auto& each : facts.getCaches())
        text += ", L" + std::to_string(each.level) + " " + std::to_string(each.kind) + " " +
                std::to_string(each.bytes) + "/" + std::to_string(each.ways) + " " + std::to_string(each.count) + "x" +
                std::to_string(each.threadsEach);
    return text;
}

std::string read(const std::string& records) {
    CPUInfo facts = ProcessorFacts::nothing();
    ProcessorFacts::readTopology(records, facts);
    return counts(facts);
}

TEST(Topology, CountsGroupsHybridsAndUnknownRecords) {
    std::string large = groups(2) + package({~0ULL, ~0ULL}) + cache(3, 0, 1 << 25, 16, {~0ULL, ~0ULL}, 2);
    for (int i = 0; i != 64; ++i) large += core(3ULL << (i % 32 * 2));
    EXPECT_EQ(read(large), "1 64 128 2, class 0 64 128, L3 0 33554432/16 1x128");

    const std::string hybrid =
        cache(2, 0, 2 << 20, 16, {0x3}, 1) + core(3, 1) + cache(1, 2, 49152, 12, {0x3}, 0) + core(0xC, 1) + core(0x10) +
        core(0x20) + cache(1, 2, 32768, 8, {0x10}, 1) + cache(1, 2, 32768, 8, {0x20}, 1) + cache(1, 3, 1, 1, {1}, 1) +
        cache(1, 1, 65536, 255, {0x10}, 1) + record(77, zeros(100)) + package({0x3F}) + groups(1);
    EXPECT_EQ(read(hybrid),
              "1 4 6 1, class 0 2 2, class 1 2 4, L1 1 65536/0 1x1, L1 2 49152/12 1x2, L1 2 32768/8 2x1, L2 0 "
              "2097152/16 1x2");

    for (std::size_t size = 0; size != hybrid.size(); ++size) read(hybrid.substr(0, size));
    EXPECT_EQ(read(core(1) + core(2).substr(0, 20)), "0 1 1 0, class 0 1 1");
    for (const std::uint32_t size : {0u, 7u, 49u, kAll}) {
        std::string broken = core(1);
        broken.replace(4, 4, bytes(size));
        EXPECT_EQ(read(broken), "0 0 0 0") << size;
    }
    EXPECT_EQ(read(record(0, bytes(std::uint8_t{1}))), "0 1 0 0, class 0 1 0") << "shorter than its kind is";
}

// ---- the firmware

std::string table(std::uint8_t type, const std::string& fields, const std::string& texts) {
    return bytes(type) + bytes(static_cast<std::uint8_t>(fields.size() + 4)) + zeros(2) + fields +
           (texts.empty() ? zeros(1) : texts) + zeros(1);
}

std::string texts(const std::vector<std::string>& each) {
    std::string all;
    for (const std::string& text : each) all += text + zeros(1);
    return all;
}

std::string moduleTable(std::uint16_t size, std::uint32_t extended, std::uint16_t speed, std::uint16_t configured) {
    std::string fields = zeros(0x5C - 4);
    const auto put = [&](std::size_t at, const std::string& value) { fields.replace(at - 4, value.size(), value); };
    put(0x0C, bytes(size));
    put(0x10, "\1");
    put(0x12, "\x22");
    put(0x15, bytes(speed));
    put(0x1C, bytes(extended));
    put(0x20, bytes(configured));
    put(0x54, bytes(std::uint32_t{70000}));
    return table(17, fields, texts({"DIMM 0"}));
}

std::string firmware(const std::string& tables) {
    return zeros(4) + bytes(static_cast<std::uint32_t>(tables.size())) + tables;
}

std::string modulesOf(const Machine& machine) {
    std::string text;
    for (const auto& each : machine.modules)
        text += std::to_string(each.bytes >> 20) + " " + std::to_string(each.mtPerSecond) + " " + each.kind + " " +
                each.slot + ";";
    return text;
}

TEST(Firmware, TellsOfTheMachine) {
    const std::string tables =
        table(0, std::string{1, 2, 0, 0, 3}, texts({"Maker", " 1.2  b", "04/01/2023"})) +
        table(1, std::string{1, 2, 0, 3}, texts({"To Be Filled By O.E.M.", "Desk \x01 9", "S1"})) +
        table(2, std::string{1, 2}, texts({"x", "Board"})) + moduleTable(0x7FFF, 32768, 4800, 5600) +
        moduleTable(0x8400, 0, 0xFFFF, 0) + moduleTable(0, 0, 0, 0) + moduleTable(0xFFFF, 0, 0, 0) +
        table(127, "", "") + table(1, std::string{1, 1}, texts({"behind the end"}));
    const Machine machine = readMachine(firmware(tables));
    EXPECT_EQ(machine.biosVendor + "|" + machine.biosVersion + "|" + machine.biosDate, "Maker|1.2 b|2023-04-01");
    EXPECT_EQ(machine.manufacturer + "|" + machine.product + "|" + machine.serial, "|Desk 9|S1");
    EXPECT_EQ(machine.board, "Board");
    EXPECT_EQ(modulesOf(machine), "32768 5600 DDR5 DIMM 0;1 70000 DDR5 DIMM 0;");

    const std::string whole = firmware(tables);
    for (std::size_t size = 0; size != whole.size(); ++size) {
        std::string cut = whole.substr(0, size);
        readMachine(cut);
        if (size >= 8) cut.replace(4, 4, bytes(kAll));  // claims to be longer
        EXPECT_LE(readMachine(cut).modules.size(), 2u);
    }
    for (const char* const text : {"N/A", "Default string", "to be filled by o.e.m.", "None", "0"})
        EXPECT_EQ(readMachine(firmware(table(1, "\1", texts({text})))).manufacturer, "") << text;
    EXPECT_EQ(readMachine(firmware(table(1, "\7", texts({"x"})))).manufacturer, "") << "no such text";
}

TEST(OsName, KnowsWindows11) {
    const std::tuple<const char*, unsigned, bool, const char*> rows[] = {
        {"Windows 10 Pro", 19045, false, "Windows 10 Pro"},
        {"Windows 10 Pro", 22000, false, "Windows 11 Pro"},
        {"Windows 10", 26100, false, "Windows 11"},
        {"Windows Server 2022 Standard", 20348, true, "Windows Server 2022 Standard"},
        {"Windows 10 Server", 26100, true, "Windows 10 Server"},
        {"", 26100, false, ""}};
    for (const auto& [name, build, isServer, shown] : rows) EXPECT_EQ(osName(name, build, isServer), shown) << build;
}

// ---- sources that do not answer

TEST(Errand, LeavesALateOneBehindAndOnlyOne) {
    static Lane lane(L"test");
    const auto answer = [](DWORD limit, std::function<void()> work) {
        const Deadline deadline(limit);
        return Errand(lane, deadline, std::move(work)).wait(deadline);
    };
    int calls = 0;
    EXPECT_TRUE(answer(INFINITE, [&] { ++calls; }));
    EXPECT_FALSE(answer(60000, [] { throw std::bad_alloc(); })) << "it has ended without an answer";
    EXPECT_FALSE(answer(0, [&] { ++calls; })) << "no time, no thread";
    EXPECT_EQ(calls, 1);

    const xo::platform::KernelHandle goOn(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    const auto hang = [&goOn] { ::WaitForSingleObject(goOn.get(), INFINITE); };
    const ULONGLONG begin = ::GetTickCount64();
    EXPECT_FALSE(answer(100, hang));
    EXPECT_GE(::GetTickCount64() - begin, 80u);
    EXPECT_FALSE(answer(INFINITE, [&] { ++calls; })) << "late at once, whatever the limit is";
    EXPECT_EQ(calls, 1);
    ::SetEvent(goOn.get());
    while (!answer(60000, [&] { ++calls; })) ::SwitchToThread();
    EXPECT_EQ(calls, 2);
}

TEST(Errand, OneAfterTheOther) {
    static Lane lane(L"test");
    int inside = 0, total = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i != 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n != 20; ++n) {
                const Deadline deadline(INFINITE);
                Errand errand(lane, deadline, [&] {
                    EXPECT_EQ(++inside, 1);
                    ++total;
                    --inside;
                });
                EXPECT_TRUE(errand.wait(deadline));
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(total, 80);
}

}  // namespace
