// Records of processors and firmware, cut, changed and invented: what is read of them stays within what they can say.
#include <cstring>

#include "fuzz.h"
#include "sysinfo/firmware.h"
#include "sysinfo/processorFacts.h"
#include "xoSystem/xoStringUtils.h"

namespace xo::fuzz {
namespace {

std::string number(std::uint64_t value, std::size_t size) { return {reinterpret_cast<const char*>(&value), size}; }

// A record of the system: what it is about, its size, and bytes that are mostly small numbers.
std::string topologyRecord(Random& random) {
    const std::size_t size = 8 + random.below(80);
    std::string text = number(random.below(7), 4) + number(random.oneIn(10) ? random.next() : size, 4);
    while (text.size() < size) text += static_cast<char>(random.oneIn(3) ? random.next() : random.below(3));
    return text;
}

std::string firmwareTable(Random& random) {
    static const std::vector<std::string_view> texts = {
        "Maker", "None", "To be filled by O.E.M.", "04/01/2023", "\x01\xFF", "\xC3\xA9", " "};
    static const std::vector<unsigned char> types = {0, 1, 2, 17, 17, 126, 127};
    const std::size_t length = 4 + random.below(100);
    std::string text =
        number(types[random.below(types.size())], 1) + number(random.oneIn(10) ? random.next() : length, 1);
    while (text.size() < length) text += static_cast<char>(random.oneIn(3) ? random.next() : random.below(4));
    for (std::size_t i = random.below(4); i != 0; --i) text.append(random.pick(texts)).push_back('\0');
    return text.append(random.oneIn(8) ? 1 : 2, '\0');
}

std::string generate(Random& random) {
    std::string input(1, static_cast<char>(random.below(2)));
    if (input[0] != 0) input += number(random.below(2000), 8);
    for (std::size_t i = random.below(8); i != 0; --i)
        input += input[0] == 0 ? topologyRecord(random) : firmwareTable(random);
    return input;
}

void checkTopology(const std::string& records) {
    CPUInfo facts = sysinfo::ProcessorFacts::nothing();
    sysinfo::ProcessorFacts::readTopology(records, facts);
    const std::size_t most = records.size() / 8;  // a record has no less
    std::size_t cores = 0, threads = 0, caches = 0;
    for (const CPUInfo::CoreClass& each : facts.getCoreClasses()) {
        cores += each.cores;
        threads += each.threads;
    }
    for (const CPUInfo::Cache& each : facts.getCaches()) caches += each.count;
    require(cores == facts.getCoreCount() && threads == facts.getThreadCount(), "the classes have other counts");
    require(cores + caches + facts.getPackageCount() <= most, "more than there are records");
    require(threads <= records.size() * 8, "more threads than there are bits");
    for (std::size_t i = 1; i < facts.getCoreClasses().size(); ++i)
        require(facts.getCoreClasses()[i - 1].efficiencyClass < facts.getCoreClasses()[i].efficiencyClass, "no order");
}

void checkFirmware(const std::string& tables) {
    const sysinfo::Machine machine = sysinfo::readMachine(tables);
    require(machine.modules.size() <= tables.size() / 6, "more modules than there are tables");
    std::vector<std::string> texts = {machine.manufacturer, machine.product,     machine.board,   machine.serial,
                                      machine.biosVendor,   machine.biosVersion, machine.biosDate};
    for (const sysinfo::Machine::Module& module : machine.modules) {
        require(module.bytes != 0, "a module without memory");
        texts.push_back(module.slot);
    }
    for (std::string& text : texts) {
        require(xoStringUtils::IsUtf8String(text), "is no UTF-8");
        for (const char c : text) require(static_cast<unsigned char>(c) >= ' ', "has a control character");
        require(text != "None", "a text that says nothing");
    }
}

void check(const std::string& input) {
    if (input.empty()) return;
    if (input[0] == 0) {
        checkTopology(input.substr(1));
    } else {
        checkFirmware(input.substr(1));
    }
}

}  // namespace

const Target kMachine = {"machine", 20000, &generate, &check};

}  // namespace xo::fuzz
