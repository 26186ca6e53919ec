#include <xmmintrin.h>

#include <cfloat>
#include <set>
#include <thread>

#include "fault/faultFixture.h"
#include "support/heapBlocks.h"
#include "support/openHandles.h"

#undef __try

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using xo::tests::faultLine;
using xo::tests::firstLine;
using xo::tests::heapBlocks;
using xo::tests::ImportHook;
using xo::tests::kFaultReport;
using xo::tests::openHandles;
using xo::tests::outcomeOf;
using xo::tests::Reports;

constexpr char kOutcome[] = "exception Catch an SEH exception";

using ProcessorFaults = xo::tests::FaultTest;

void raise(void* code) { ::RaiseException(*static_cast<DWORD*>(code), 0, 0, nullptr); }
void raiseAndTake(void* code) {
    __try {
        raise(code);
    } __except (EXCEPTION_EXECUTE_HANDLER) {
    }
}

TEST_F(ProcessorFaults, AreNamedByTheirCode) {
    leaveOutTraces();
    std::vector<std::pair<DWORD, std::string>> rows = {
        {0x80000003, "BREAKPOINT"},     {0xC0000092, "FLT_STACK_CHECK"},     {0xC0000026, "INVALID_DISPOSITION"},
        {0x80000004, "SINGLE_STEP"},    {0xC0000005, "ACCESS_VIOLATION"},    {0xC000008D, "FLT_DENORMAL_OPERAND"},
        {0xC0000091, "FLT_OVERFLOW"},   {0xC0000096, "PRIV_INSTRUCTION"},    {0x80000002, "DATATYPE_MISALIGNMENT"},
        {0xC0000095, "INT_OVERFLOW"},   {0xC000008E, "FLT_DIVIDE_BY_ZERO"},  {0xC000008C, "ARRAY_BOUNDS_EXCEEDED"},
        {0xC0000006, "IN_PAGE_ERROR"},  {0xC000008F, "FLT_INEXACT_RESULT"},  {0xC0000090, "FLT_INVALID_OPERATION"},
        {0xC0000093, "FLT_UNDERFLOW"},  {0xC0000094, "INT_DIVIDE_BY_ZERO"},  {0xC0000025, "NONCONTINUABLE_EXCEPTION"},
        {0xC00000FD, "STACK_OVERFLOW"}, {0xC000001D, "ILLEGAL_INSTRUCTION"},
    };
    for (auto& row : rows) row.second.insert(0, "EXCEPTION_");
    for (const DWORD unknown : {0xE0001234u, 7u}) rows.emplace_back(unknown, "Unknown Exception Code");
    for (auto& [code, name] : rows) {
        char number[16];
        std::snprintf(number, sizeof number, " 0x%lx", code);
        EXPECT_EQ(outcomeOf(&raise, static_cast<void*>(&code)), kOutcome) << name;
        EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(name + number), kFaultReport));
        EXPECT_EQ(outcomeOf(&raiseAndTake, static_cast<void*>(&code)), "returned") << name;
        EXPECT_THAT(takeReports(), testing::IsEmpty()) << "a frame of the client's own has taken it";
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
    leaveOutTraces();
    EXPECT_TRUE(passesTheGuard(xo::tests::kForeignCode));
    EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(xo::tests::kForeignThrow)));
}

volatile float zero = 0.0f, one = 1.0f, three = 3.0f, smallest = FLT_MIN, largest = FLT_MAX;
volatile int none = 0, some = 1;

TEST_F(ProcessorFaults, OfTheProcessorItself) {
    leaveOutTraces();
    const struct {
        const char* text;
        void (*fault)();  // a floating-point one first switches it on
        unsigned csr = 0x1F80;
    } rows[] = {
        {"EXCEPTION_ACCESS_VIOLATION 0xc0000005", [] { *reinterpret_cast<volatile int*>(8) = 1; }},
        {"EXCEPTION_BREAKPOINT 0x80000003", [] { __debugbreak(); }},
        {"EXCEPTION_INT_DIVIDE_BY_ZERO 0xc0000094", [] { some = some / none; }},
        {"EXCEPTION_FLT_DIVIDE_BY_ZERO 0xc000008e", [] { ::_mm_setcsr(0x1D80), one = one / zero; }, 0x1D80},
        {"EXCEPTION_FLT_INVALID_OPERATION 0xc0000090", [] { ::_mm_setcsr(0x1F00), one = zero / zero; }, 0x1F00},
        {"EXCEPTION_FLT_OVERFLOW 0xc0000091", [] { ::_mm_setcsr(0x1B80), one = largest * largest; }, 0x1B80},
        {"EXCEPTION_FLT_UNDERFLOW 0xc0000093", [] { ::_mm_setcsr(0x1780), one = smallest * smallest; }, 0x1780},
        {"EXCEPTION_FLT_INEXACT_RESULT 0xc000008f", [] { ::_mm_setcsr(0x0000), one = one / three; },
         0x0000},  // all switched on
#if defined(__GNUC__)
        {"EXCEPTION_ILLEGAL_INSTRUCTION 0xc000001d", [] { __asm__ volatile("ud2"); }},
        {"EXCEPTION_PRIV_INSTRUCTION 0xc0000096", [] { __asm__ volatile("hlt"); }},
        {"EXCEPTION_INT_OVERFLOW 0xc0000095", [] { __asm__ volatile("int $4"); }},
        {"EXCEPTION_FLT_STACK_CHECK 0xc0000092",
         [] {
             __asm__ volatile("pushq $0x37E; fldcw (%%rsp); popq %%rax; fstp %%st(0); fwait" ::: "rax");
         }},
        {"EXCEPTION_SINGLE_STEP 0x80000004", [] { __asm__ volatile("pushfq; orl $0x100, (%rsp); popfq; nop"); }},
#endif
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(row.fault), kOutcome) << row.text;
        EXPECT_EQ(::_mm_getcsr(), row.csr) << row.text;  // the masks as they were, no fault noted
        ::_mm_setcsr(0x1F80);
#if defined(__GNUC__)
        __asm__ volatile("fwait; fninit");  // faults again if the first is still pending
#endif
        EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(row.text), kFaultReport));
    }
}

// Without an end, which the compiler does not see, and without a loop in place of the calls.
volatile int lastDepth = -1;
int recurse(int depth) {
    volatile char frame[256];
    frame[depth % 256] = 1;
    return depth == lastDepth ? 0 : recurse(depth + 1) + frame[0];
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
    EXPECT_FALSE(::IsThreadAFiber()) << "but for the report";
    std::thread(overflowThrice).join();
    ::ConvertThreadToFiber(nullptr);
    overflowThrice();
    EXPECT_TRUE(::IsThreadAFiber());
}

ULONG_PTR stackSize = 0;
void WINAPI tellStackSize(ULONG_PTR* low, ULONG_PTR* high) { *low = 0x10000, *high = *low + stackSize; }

TEST_F(ProcessorFaults, ReserveASmallPartOfTheStack) {
    const ImportHook hook("xoSystem.dll", "GetCurrentThreadStackLimits", &tellStackSize);
    ASSERT_TRUE(hook.isInstalled());
    const std::pair<ULONG_PTR, ULONG> rows[] = {{256 * 1024, 16 * 1024}, {4096 * 1024, 64 * 1024}};
    for (const auto& [size, expected] : rows) {
        stackSize = size;
        ULONG reserved = 0;
        std::thread([&reserved] {
            outcomeOf([] {});
            ::SetThreadStackGuarantee(&reserved);  // of 0 bytes: tells what is reserved
        }).join();
        EXPECT_EQ(reserved, expected);
    }
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

TEST_F(ProcessorFaults, OfSomeThreadsAtOnceGiveAReportEach) {
    constexpr int kThreads = 2;  // a trace waits at most 10 s for those of other threads, which a loaded machine needs
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
    faultOften(1);
    const int handles = openHandles();
    faultOften(1);
    EXPECT_EQ(openHandles(), handles);
    leaveOutTraces();  // Wine's DbgHelp leaves blocks behind each time
    faultOften(10);
    const int blocks = heapBlocks();
    ASSERT_GT(blocks, 100);
    faultOften(300);
    EXPECT_LT(heapBlocks(), blocks + 50);
    EXPECT_EQ(openHandles(), handles);
}

}  // namespace
