// The library's own long functions with a notifier: each tells how far it is, and ends when it is canceled.
#include <gtest/gtest.h>

#include <functional>

#include "files/filesFixture.h"
#include "support/importHook.h"
#include "xoSystem/xoConcurrentPool.h"
#include "xoSystem/xoCsvFileReader.h"
#include "xoSystem/xoInit.h"
#include "xoSystem/xoProcess.h"
#include "xoSystem/xoProgress.h"

namespace {

using xo::xoDirUtils;
using xo::xoProgressNotifier;
using xo::xoProgressState;
using xo::tests::ImportHook;

// Cancels at the given call, the first of which is 1, and checks that the fraction never falls.
class Looker : public xoProgressNotifier {
public:
    explicit Looker(int cancelAt = 0) : xoProgressNotifier(0), mCancelAt(cancelAt) {}
    int calls = 0;

private:
    void onProgress(const xoProgressState& state) override {
        EXPECT_GE(state.fraction, mBefore);
        mBefore = state.fraction;
        if (++calls == mCancelAt) cancel();
    }

    const int mCancelAt;
    double mBefore = 0;
};

// As Windows copies, with a call of the routine at the start, half-way and at the end.
BOOL WINAPI copyInParts(const wchar_t* from, const wchar_t* to, LPPROGRESS_ROUTINE routine, void* data, BOOL*,
                        DWORD flags) {
    if (!::CopyFileW(from, to, (flags & COPY_FILE_FAIL_IF_EXISTS) != 0)) return FALSE;
    LARGE_INTEGER size{}, copied{};
    size.QuadPart = 1000;
    for (copied.QuadPart = 0; routine && copied.QuadPart <= size.QuadPart; copied.QuadPart += 500) {
        const DWORD reason = copied.QuadPart == 0 ? CALLBACK_STREAM_SWITCH : CALLBACK_CHUNK_FINISHED;
        if (routine(size, copied, size, copied, 1, reason, nullptr, nullptr, data) != PROGRESS_CANCEL) continue;
        ::DeleteFileW(to);
        ::SetLastError(ERROR_REQUEST_ABORTED);
        return FALSE;
    }
    return TRUE;
}

class Task final : public xo::ConcurrentPool::SolverBase {
public:
    void solve(xo::xoMutex*, xo::xoWaitCondition*) override {
        ++begun;
        if (canceled) canceled->cancel();
    }
    int begun = 0;
    xoProgressNotifier* canceled = nullptr;
};

class Visitor : public xoDirUtils::FileSystemVisitor {
public:
    bool onFile(const std::string&, const std::string&) override { return ++files != 0; }
    int files = 0;
};

class LongWorks : public xo::tests::FolderTest {
protected:
    LongWorks() {
        xoDirUtils::MkpathUtf8(path("tree/a/b"));
        for (const char* name : {"tree/1", "tree/a/2", "tree/a/b/3", "tree/a/b/4"}) xo::tests::makeFile(path(name));
        std::string rows;
        while (rows.size() < 1000000) rows += "1,2\n";
        mFolder.write("rows.csv", rows);
        xoDirUtils::GetFolderOfCurrentProcessUtf8(mHelper);
        mHelper += "\\processChild.exe";
    }

    // Each gives what it has done before it ended, and "canceled" if that is its result.
    std::string parse(xoProgressNotifier* progress) {
        xo::xoCsvFileReader reader(false);
        reader.setFileName(path("rows.csv"));
        EXPECT_EQ(reader.getFileByteCount(), 1000000u);
        const bool good = reader.parseCsvFile(progress);
        EXPECT_EQ(reader.getLastError(), good ? "" : "Canceled");
        EXPECT_EQ(reader.getParsedByteCount(), reader.getTable().size() * 4);
        return std::to_string(reader.getTable().size() / 10000) + (good ? "" : " canceled");
    }
    std::string copy(xoProgressNotifier* progress) {
        const ImportHook hook("xoSystem.dll", "CopyFileExW", &copyInParts);
        const bool good = xoDirUtils::CopyFileUtf8(path("rows.csv"), path("copy"), true, &mError, progress);
        EXPECT_TRUE(good || mError == "Canceled") << mError;
        const bool isThere = mFolder.has("copy");
        xoDirUtils::RemoveFileUtf8(path("copy"));
        return std::to_string(isThere) + (good ? "" : " canceled");
    }
    std::string clear(xoProgressNotifier* progress) {
        EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path("copied"), false) || !mFolder.has("copied"));
        EXPECT_TRUE(xoDirUtils::CopyFolderUtf8(path("tree"), path("copied")));
        const bool good = xoDirUtils::ClearFolderUtf8(path("copied"), true, &mError, nullptr, progress);
        EXPECT_TRUE(good || mError == "Canceled") << mError;
        std::vector<std::string> left;
        xoDirUtils::GlobFileAndFolderUtf8(path("copied"), &left, nullptr, nullptr, xoDirUtils::GlobRecursive);
        return std::to_string(4 - left.size()) + (good ? "" : " canceled");
    }
    std::string visit(xoProgressNotifier* progress) {
        Visitor visitor;
        const bool good = visitor.visit(path("tree"), true, nullptr, progress);
        return std::to_string(visitor.files) + (good ? "" : " canceled");
    }
    std::string execute(xoProgressNotifier* progress, const char* what) {
        const int code = xo::xoProcess::ExecUtf8(mHelper, {what, "0"}, path(), true, 60000, &mError, progress);
        EXPECT_TRUE(code == 0 || (code == -4 && mError == "Canceled")) << code << mError;
        return code == 0 ? "1" : "0 canceled";
    }
    std::string wait(xoProgressNotifier* progress) {
        xo::xoProcess child;
        child.setWorkingDirectoryUtf8(path());
        EXPECT_TRUE(child.startProcess(mHelper, {"sleep"}));
        const bool good = child.waitForFinished(60000, progress);
        EXPECT_EQ(child.getState(), xo::xoProcess::StateRunning);
        child.killProcess();
        EXPECT_TRUE(child.waitForFinished(60000, nullptr));
        return good ? "1" : "0 canceled";
    }
    static std::string solve(xoProgressNotifier* progress) {
        xo::ConcurrentPool pool(1);
        Task task;
        const bool good = pool.solve({&task, &task, &task}, progress);
        return std::to_string(task.begun) + (good ? "" : " canceled");
    }

    std::string mHelper;
};

TEST_F(LongWorks, AreCompleteOrEndWhenTheyAreCanceled) {
    using Work = std::function<std::string(xoProgressNotifier*)>;
    const struct {
        const char* name;
        Work work;
        const char* whole;
        int cancelAt;  // a later call, or 0
        const char* canceledLater;
        int mostCalls;  // of the CSV one for 64 KiB, none for a row; 0 where the calls depend on the time
    } rows[] = {
        {"parseCsvFile", [this](auto* p) { return parse(p); }, "25", 3, "1 canceled", 20},
        {"CopyFileUtf8", [this](auto* p) { return copy(p); }, "1", 3, "0 canceled", 10},
        {"ClearFolderUtf8", [this](auto* p) { return clear(p); }, "4", 3, "1 canceled", 40},
        {"visit", [this](auto* p) { return visit(p); }, "4", 4, "1 canceled", 40},
        {"ExecUtf8", [this](auto* p) { return execute(p, "exit"); }, "1", 0, "", 0},
        {"ExecUtf8 of a long program", [this](auto* p) { return execute(p, "sleep"); }, nullptr, 3, "0 canceled", 0},
        {"waitForFinished", [this](auto* p) { return wait(p); }, nullptr, 3, "0 canceled", 0},
        {"solve", [](auto* p) { return solve(p); }, "3", 0, "", 0},
    };
    xo::initializeXoSystem(xo::InitTypeFull, false);
    for (const auto& row : rows) {
        Looker never, early(1), later(row.cancelAt), whole;
        never.cancel();
        EXPECT_EQ(row.work(&never), "0 canceled") << row.name;
        EXPECT_EQ(row.work(&early), "0 canceled") << row.name;
        EXPECT_EQ(early.getState().phase, xoProgressState::PhaseCanceled) << row.name;
        if (row.cancelAt != 0) {
            EXPECT_EQ(row.work(&later), row.canceledLater) << row.name;
        }
        if (!row.whole) continue;
        EXPECT_EQ(row.work(nullptr), row.whole) << row.name;
        EXPECT_EQ(row.work(&whole), row.whole) << row.name;
        EXPECT_EQ(whole.getState().phase, xoProgressState::PhaseDone) << row.name;
        if (row.mostCalls != 0) {
            EXPECT_LE(whole.calls, row.mostCalls) << row.name;
        }
    }
    xo::terminateXoSystem();
}

TEST_F(LongWorks, APoolBeginsNoTaskOnceItIsCanceled) {
    xo::initializeXoSystem(xo::InitTypeFull, false);
    {
        xo::ConcurrentPool pool(1);
        for (const std::size_t tasks : {3u, 1u}) {
            Looker looker;
            Task task;
            task.canceled = &looker;
            const std::vector<xo::ConcurrentPool::SolverBase*> all(tasks, &task);
            EXPECT_EQ(pool.solve(all, &looker), tasks == 1) << "too late when the last one has begun";
            EXPECT_EQ(task.begun, 1);
        }
    }
    xo::terminateXoSystem();
}

// A tree deeper than the scopes that a walk opens.
TEST_F(LongWorks, WalksOfDeepTreesStayWithinTheirRange) {
    std::string deep = path("deep");
    for (int level = 0; level < 12; ++level) {
        deep += "/level";
        xoDirUtils::MkpathUtf8(deep);
        xo::tests::makeFile(deep + "/file");
    }
    Visitor visitor;
    Looker visiting, clearing;
    EXPECT_TRUE(visitor.visit(path("deep"), true, nullptr, &visiting));
    EXPECT_EQ(visitor.files, 12);
    EXPECT_TRUE(xoDirUtils::ClearFolderUtf8(path("deep"), true, &mError, nullptr, &clearing));
    for (const Looker* looker : {&visiting, &clearing}) EXPECT_EQ(looker->getState().phase, xoProgressState::PhaseDone);
}

}  // namespace
