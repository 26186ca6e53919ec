#include <gtest/gtest.h>

#include "support/child.h"
#include "support/temporaryFolder.h"

namespace {

namespace fs = std::filesystem;
using xo::tests::Child;

TEST(UnloadingProgram, GetsItsCrashHelpOutOfTheWay) { EXPECT_EQ(Child(L"unloader").wait(), 0); }

TEST(UnloadingProgram, TakesNoCrashHelpThatSomebodyLaidBesideIt) {
    wchar_t self[MAX_PATH];
    ::GetModuleFileNameW(nullptr, self, MAX_PATH);
    const fs::path here = fs::path(self).parent_path();
    const xo::tests::TemporaryFolder folder;
    for (const auto& entry : fs::directory_iterator(here))
        if (entry.path().extension() == ".dll" || entry.path().stem() == "unloader")
            fs::copy_file(entry.path(), folder.widePath() / entry.path().filename());
    ASSERT_TRUE(fs::copy_file(here / "xoSystem.dll", folder.widePath() / "DbgHelp.dll"));
    EXPECT_EQ(Child(folder.widePath() / "unloader").wait(), 0);
}

}  // namespace
