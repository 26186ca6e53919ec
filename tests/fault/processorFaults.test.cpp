#include <xmmintrin.h>

#include <cfloat>
#include <cstdint>
#include <set>
#include <thread>

#include "fault/faultFixture.h"
#include "xoSystem/xoSemaphore.h"

#undef __try

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using xo::tests::faultLine;
using xo::tests::firstLine;
using xo::tests::kFaultReport;
using xo::tests::outcomeOf;
using xo::tests::Reports;

constexpr char kOutcome[] = "exception Catch an SEH exception";

using ProcessorFaults = xo::tests::FaultTest;

void raise(void* code) { ::RaiseException(*static_cast<DWORD*>(code), 0, 0, nullptr); }

TEST_F(ProcessorFaults, AreNamedByTheirCode) {
    const struct {
        DWORD code;
        const char* text;
    } rows[] = {
        {0xC0000005, "EXCEPTION_ACCESS_VIOLATION 0xc0000005"},
        {0x80000002, "EXCEPTION_DATATYPE_MISALIGNMENT 0x80000002"},
        {0x80000003, "EXCEPTION_BREAKPOINT 0x80000003"},
        {0x80000004, "EXCEPTION_SINGLE_STEP 0x80000004"},
        {0xC0000006, "EXCEPTION_IN_PAGE_ERROR 0xc0000006"},
        {0xC000001D, "EXCEPTION_ILLEGAL_INSTRUCTION 0xc000001d"},
        {0xC0000025, "EXCEPTION_NONCONTINUABLE_EXCEPTION 0xc0000025"},
        {0xC0000026, "EXCEPTION_INVALID_DISPOSITION 0xc0000026"},
        {0xC000008C, "EXCEPTION_ARRAY_BOUNDS_EXCEEDED 0xc000008c"},
        {0xC000008D, "EXCEPTION_FLT_DENORMAL_OPERAND 0xc000008d"},
        {0xC000008E, "EXCEPTION_FLT_DIVIDE_BY_ZERO 0xc000008e"},
        {0xC000008F, "EXCEPTION_FLT_INEXACT_RESULT 0xc000008f"},
        {0xC0000090, "EXCEPTION_FLT_INVALID_OPERATION 0xc0000090"},
        {0xC0000091, "EXCEPTION_FLT_OVERFLOW 0xc0000091"},
        {0xC0000092, "EXCEPTION_FLT_STACK_CHECK 0xc0000092"},
        {0xC0000093, "EXCEPTION_FLT_UNDERFLOW 0xc0000093"},
        {0xC0000094, "EXCEPTION_INT_DIVIDE_BY_ZERO 0xc0000094"},
        {0xC0000095, "EXCEPTION_INT_OVERFLOW 0xc0000095"},
        {0xC0000096, "EXCEPTION_PRIV_INSTRUCTION 0xc0000096"},
        {0xC00000FD, "EXCEPTION_STACK_OVERFLOW 0xc00000fd"},
        {0xE0001234, "Unknown Exception Code 0xe0001234"},
        {0x00000007, "Unknown Exception Code 0x7"},
    };
    for (const auto& row : rows) {
        DWORD code = row.code;
        EXPECT_EQ(outcomeOf(&raise, static_cast<void*>(&code)), kOutcome) << row.text;
        EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(row.text), kFaultReport));
    }
}

// The other compiler's exceptions pass the guard; a frame outside takes them.
bool passesTheGuard(DWORD code) {
    __try {
        xo::exception::impl::ExecGuardedCode(&raise, &code);
    } __except (GetExceptionCode() == code ? EXCEPTION_EXECUTE_HANDLER : EXCEPTION_CONTINUE_SEARCH) {
        return true;
    }
    return false;
}

TEST_F(ProcessorFaults, LetLanguageExceptionsPass) {
    EXPECT_TRUE(passesTheGuard(0xE06D7363));
    EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine("Msvc C++ Exception 0xe06d7363")));
}

// Calls machine code.
class Code {
public:
    explicit Code(const std::vector<std::uint8_t>& bytes)
        : mCode(::VirtualAlloc(nullptr, bytes.size(), MEM_COMMIT | MEM_RESERVE, PAGE_EXECUTE_READWRITE)) {
        std::copy(bytes.begin(), bytes.end(), static_cast<std::uint8_t*>(mCode));
    }
    ~Code() { ::VirtualFree(mCode, 0, MEM_RELEASE); }
    Code(const Code&) = delete;
    Code& operator=(const Code&) = delete;

    std::string outcome() const { return outcomeOf(reinterpret_cast<void (*)()>(mCode)); }

private:
    void* mCode;
};

// push control, ldmxcsr [rsp], pop rax, then the rest: arithmetic with some floating-point faults switched on.
std::vector<std::uint8_t> withControl(std::uint16_t mxcsr, std::vector<std::uint8_t> rest) {
    std::vector<std::uint8_t> code = {0x68, std::uint8_t(mxcsr), std::uint8_t(mxcsr >> 8), 0, 0, 0x0F, 0xAE, 0x14, 0x24,
                                      0x58};
    code.insert(code.end(), rest.begin(), rest.end());
    code.push_back(0xC3);
    return code;
}

TEST_F(ProcessorFaults, OfTheProcessorItself) {
    const struct {
        const char* text;
        std::vector<std::uint8_t> code;
    } rows[] = {
        {"EXCEPTION_ACCESS_VIOLATION 0xc0000005", {0xC7, 0x04, 0x25, 0, 0, 0, 0, 1, 0, 0, 0}},  // mov dword [0], 1
        {"EXCEPTION_BREAKPOINT 0x80000003", {0xCC, 0xC3}},
        {"EXCEPTION_SINGLE_STEP 0x80000004",  // the trap flag
         {0x9C, 0x81, 0x0C, 0x24, 0x00, 0x01, 0, 0, 0x9D, 0x90, 0xC3}},
        {"EXCEPTION_ILLEGAL_INSTRUCTION 0xc000001d", {0x0F, 0x0B}},                                     // ud2
        {"EXCEPTION_PRIV_INSTRUCTION 0xc0000096", {0xF4}},                                              // hlt
        {"EXCEPTION_INT_DIVIDE_BY_ZERO 0xc0000094", {0x31, 0xC9, 0xB8, 1, 0, 0, 0, 0x99, 0xF7, 0xF9}},  // 1 / 0
        {"EXCEPTION_INT_OVERFLOW 0xc0000095", {0xCD, 0x04, 0xC3}},                                      // int 4
        {"EXCEPTION_FLT_DIVIDE_BY_ZERO 0xc000008e",                                                     // 1.0 / 0.0
         withControl(0x1D80,
                     {0xB8, 0, 0, 0x80, 0x3F, 0x66, 0x0F, 0x6E, 0xC0, 0x0F, 0x57, 0xC9, 0xF3, 0x0F, 0x5E, 0xC1})},
        {"EXCEPTION_FLT_INVALID_OPERATION 0xc0000090",  // 0.0 / 0.0
         withControl(0x1F00, {0x0F, 0x57, 0xC0, 0xF3, 0x0F, 0x5E, 0xC0})},
        {"EXCEPTION_FLT_OVERFLOW 0xc0000091",  // the largest number squared
         withControl(0x1B80, {0xB8, 0xFF, 0xFF, 0x7F, 0x7F, 0x66, 0x0F, 0x6E, 0xC0, 0xF3, 0x0F, 0x59, 0xC0})},
        {"EXCEPTION_FLT_UNDERFLOW 0xc0000093",  // the smallest squared
         withControl(0x1780, {0xB8, 0, 0, 0x80, 0x00, 0x66, 0x0F, 0x6E, 0xC0, 0xF3, 0x0F, 0x59, 0xC0})},
        {"EXCEPTION_FLT_INEXACT_RESULT 0xc000008f",  // 1.0 / 3.0, with every fault switched on
         withControl(0x0000, {0xB8, 0,    0,    0x80, 0x3F, 0x66, 0x0F, 0x6E, 0xC0, 0xB8, 0,
                              0,    0x40, 0x40, 0x66, 0x0F, 0x6E, 0xC8, 0xF3, 0x0F, 0x5E, 0xC1})},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Code(row.code).outcome(), kOutcome) << row.text;
        ::_mm_setcsr(0x1F80);
        EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(row.text), kFaultReport));
    }
}

// Without an end, which the compiler does not see, and without a loop in place of the calls.
volatile int lastDepth = -1;
int recurse(int depth) {
    volatile char room[256];
    room[depth % 256] = 1;
    return depth == lastDepth ? 0 : recurse(depth + 1) + room[0];
}
void exhaustStack() { lastDepth = recurse(0); }

TEST_F(ProcessorFaults, LeaveTheStackWholeAfterItsOverflow) {
    const auto overflowThrice = [&] {
        for (int round = 0; round < 3; ++round) {
            EXPECT_EQ(outcomeOf(&exhaustStack), kOutcome);
            const Reports reports = takeReports();
            EXPECT_THAT(reports, ElementsAre(StartsWith(faultLine("EXCEPTION_STACK_OVERFLOW 0xc00000fd") + "\n\t# "),
                                             kFaultReport));
            EXPECT_THAT(reports.at(0), HasSubstr("recurse @0x"));
            EXPECT_EQ(takeEvents(), reports);
        }
    };
    overflowThrice();
    std::thread(overflowThrice).join();
    ::ConvertThreadToFiber(nullptr);
    overflowThrice();
    EXPECT_TRUE(::IsThreadAFiber());
}

TEST_F(ProcessorFaults, ReportAnOverflowUnderTheLogsLock) {
    mAlso = [](const std::string& report) {
        if (report == "overflow") exhaustStack();
    };
    EXPECT_EQ(outcomeOf([] { xo::xoLogObject(xo::xoLogCritical) << "overflow"; }), kOutcome);
    EXPECT_THAT(takeReports(),
                ElementsAre("overflow", StartsWith(faultLine("EXCEPTION_STACK_OVERFLOW 0xc00000fd")), kFaultReport));
}

TEST_F(ProcessorFaults, TellAnOverflowInsideAReportInALine) {
    mAlso = [](const std::string&) { exhaustStack(); };
    EXPECT_EQ(outcomeOf([] { ::RaiseException(7, 0, 0, nullptr); }), kOutcome);
    const std::string line = faultLine("EXCEPTION_STACK_OVERFLOW 0xc00000fd");
    EXPECT_THAT(takeEvents(),
                ElementsAre(StartsWith(faultLine("Unknown Exception Code 0x7")), line, kFaultReport, line));
}

void breakHere() { __debugbreak(); }

TEST_F(ProcessorFaults, OfEightThreadsAtOnceGiveEightReports) {
    constexpr int kThreads = 8;
    std::atomic<int> waiting{0};
    std::vector<std::thread> threads;
    std::mutex mutex;
    std::set<std::string> expected;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&] {
            {
                const std::lock_guard<std::mutex> locker(mutex);
                expected.insert(faultLine("EXCEPTION_BREAKPOINT 0x80000003"));
            }
            ++waiting;
            while (waiting < kThreads) std::this_thread::yield();
            EXPECT_EQ(outcomeOf(&breakHere), kOutcome);
        });
    for (std::thread& thread : threads) thread.join();

    std::set<std::string> found;
    for (const std::string& report : takeReports()) {
        if (report == kFaultReport) continue;
        found.insert(firstLine(report));
        EXPECT_THAT(report, AllOf(HasSubstr("breakHere @0x"), HasSubstr("RtlUserThreadStart @0x"))) << "whole";
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(expected.size(), kThreads);
}

std::size_t busyBlocks() {
    std::size_t count = 0;
    PROCESS_HEAP_ENTRY entry{};
    while (::HeapWalk(::GetProcessHeap(), &entry)) count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
    return count;
}

// The system gives out the lowest number that is free.
std::uintptr_t lowestFreeHandle() {
    const HANDLE event = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ::CloseHandle(event);
    return reinterpret_cast<std::uintptr_t>(event);
}

TEST_F(ProcessorFaults, LeaveNothingBehind) {
    const auto faultOften = [&](int times) {
        for (int i = 0; i < times; ++i) {
            outcomeOf(&breakHere);
            outcomeOf([] { throw 1; });
            if (i % 10 == 0) outcomeOf(&exhaustStack);
        }
        takeReports().shrink_to_fit();
        takeEvents();
    };
    faultOften(10);
    const std::size_t blocks = busyBlocks();
    const std::uintptr_t handle = lowestFreeHandle();
    ASSERT_GT(blocks, 100U);
    faultOften(1000);
    EXPECT_LT(busyBlocks(), blocks + 50);
    EXPECT_EQ(lowestFreeHandle(), handle);
}

}  // namespace
