#include "fault/faultFixture.h"

// libstdc++ calls its own macro so.
#undef __try

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;
using xo::exception::impl::ExecGuardedCode;
using xo::tests::faultLine;
using xo::tests::FaultTest;
using xo::tests::kFaultReport;
using xo::tests::kThrow;
using xo::tests::outcomeOf;

constexpr char kViolation[] = "EXCEPTION_ACCESS_VIOLATION 0xc0000005";

__declspec(noinline) void writeToNull() { *static_cast<volatile int*>(nullptr) = 1; }

using GuardTest = FaultTest;

TEST_F(GuardTest, LogsNothingOfAFunctionThatReturns) {
    static int calls = 0;
    EXPECT_EQ(outcomeOf([] { ++calls; }), "returned");
    int argument = 0;
    EXPECT_EQ(outcomeOf([](void* value) { *static_cast<int*>(value) = 7; }, static_cast<void*>(&argument)), "returned");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(argument, 7);
    EXPECT_THAT(takeFirstLines(), IsEmpty());
}

int destroyed = 0;
struct Local {
    ~Local() { ++destroyed; }
};
struct WithoutText : std::exception {
    const char* what() const noexcept override { return nullptr; }
};
struct WithFault : std::exception {
    const char* what() const noexcept override {
        writeToNull();
        return "never";
    }
};

TEST_F(GuardTest, ReportsWhatWasThrownAndThrowsAPlainException) {
    leaveOutTraces();
    const struct {
        void (*thrower)();
        const char* report;
        const char* outcome;
    } rows[] = {
        {[] { throw std::out_of_range("index"); }, "index", "exception index"},
        {[] { throw std::runtime_error(""); }, "", "exception "},
        {[] { throw WithoutText(); }, "Unknown", "exception Unknown"},
        {[] { throw WithFault(); }, "Unknown", "exception Unknown"},
        {[] {
             const Local passed;
             throw 3;
         },
         "Unknown", "runtime_error Unknown std exception"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(outcomeOf(row.thrower), row.outcome);
        EXPECT_THAT(takeFirstLines(),
                    ElementsAre(faultLine(kThrow), std::string("Catch std exception : ") + row.report));
    }
    EXPECT_EQ(destroyed, 1);
}

TEST_F(GuardTest, ReportsAFaultAndThrowsAPlainException) {
    leaveOutTraces();
    EXPECT_EQ(outcomeOf(&writeToNull), "exception Catch an SEH exception");
    EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(kViolation), kFaultReport));
    EXPECT_EQ(outcomeOf(static_cast<void (*)()>(nullptr)), "exception Catch an SEH exception");
    EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(kViolation), kFaultReport));
    EXPECT_EQ(outcomeOf([] { ExecGuardedCode(&writeToNull); }), "exception Catch an SEH exception") << "at each guard";
    EXPECT_THAT(takeFirstLines(), ElementsAre(faultLine(kViolation), kFaultReport, faultLine(kThrow), kFaultReport));
}

bool handlesItsOwnFault() {
    __try {
        writeToNull();
    } __except (EXCEPTION_EXECUTE_HANDLER) {
        return true;
    }
    return false;
}

TEST_F(GuardTest, KeepsSilentAboutWhatAnInnerFrameHandles) {
    leaveOutTraces();
    static bool handled = false;
    EXPECT_EQ(outcomeOf([] {
                  handled = handlesItsOwnFault();
                  try {
                      throw std::logic_error("inner");
                  } catch (const std::exception&) {
                  }
              }),
              "returned");
    EXPECT_TRUE(handled);
    EXPECT_THAT(takeFirstLines(), IsEmpty());
}

TEST_F(GuardTest, ReportsToTheEventLogWhateverTheLogWants) {
    leaveOutTraces();
    xo::xoLog::edit().setLogTypeEnabled(xo::xoLogCritical, false);
    outcomeOf(&writeToNull);
    EXPECT_THAT(takeReports(), IsEmpty());
    EXPECT_THAT(takeEvents(), ElementsAre(StartsWith(faultLine(kViolation)), kFaultReport));

    xo::xoLog::destroyInstance();
    testing::internal::CaptureStdout();
    outcomeOf(&writeToNull);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(takeEvents(), ElementsAre(StartsWith(faultLine(kViolation)), kFaultReport));
}

TEST_F(GuardTest, TellsAFaultInsideAReportInALine) {
    mAlso = [](const std::string&) { writeToNull(); };
    EXPECT_EQ(outcomeOf(&writeToNull), "exception Catch an SEH exception");
    const std::string line = faultLine(kViolation);
    EXPECT_THAT(takeEvents(), ElementsAre(StartsWith(line + "\n\t# "), line, kFaultReport, line));
    EXPECT_THAT(takeReports(), ElementsAre(StartsWith(line + "\n\t# "), line, kFaultReport, line));
}

TEST_F(GuardTest, EndsWhenReportsMakeReports) {
    leaveOutTraces();
    static int handled = 0;
    mAlso = [](const std::string&) {
        ++handled;
        outcomeOf(&writeToNull);
    };
    EXPECT_EQ(outcomeOf(&writeToNull), "exception Catch an SEH exception");
    // Each of the two reports makes two more, which are lines, and those make none.
    EXPECT_EQ(handled, 2 + 2 * 2);
}

}  // namespace
