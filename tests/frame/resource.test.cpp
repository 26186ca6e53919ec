#include "xoSystem/xoResource.h"

#include <string>
#include <thread>

#include "log/logFixture.h"
#include "xoSystem/xoInit.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using xo::rc::GetResource;

constexpr char kBlob[] = "first\0secondthird";
constexpr const char* kNames[] = {"a", "A", "data/\xC3\xA9"};
constexpr std::size_t kSizes[] = {6, 6, 0};
constexpr std::size_t kOffsets[] = {0, 6, 12};

void registerAll() { xo::rc::impl::RegisterResources(3, kBlob, kNames, kSizes, kOffsets); }
void unregisterAll() { xo::rc::impl::UnRegisterResources(3, kBlob, kNames, kSizes, kOffsets); }

class Resource : public xo::tests::LogTest {
protected:
    Resource() { xo::initializeXoSystem(xo::InitTypeFull); }
    ~Resource() override { xo::terminateXoSystem(); }
};

TEST_F(Resource, IsFoundByItsExactName) {
    registerAll();
    std::string bytes = "old";
    EXPECT_TRUE(GetResource("a", bytes));
    EXPECT_EQ(bytes, std::string("first\0", 6));
    EXPECT_TRUE(GetResource("data/\xC3\xA9", bytes));
    EXPECT_EQ(bytes, "");
    const char* data = nullptr;
    std::size_t size = 0;
    EXPECT_TRUE(GetResource("A", data, size));
    EXPECT_EQ(data, kBlob + 6) << "the registry must not copy";
    EXPECT_EQ(size, 6u);
    EXPECT_THAT(takeLines(), IsEmpty());

    EXPECT_FALSE(GetResource("b", data, size));
    EXPECT_TRUE(data == nullptr && size == 0);
    bytes = "old";
    EXPECT_FALSE(GetResource(nullptr, bytes));
    EXPECT_EQ(bytes, "");
    EXPECT_THAT(takeLines(), ElementsAre("3()Resource is missing b", "3()Resource is missing [NullPtr]"));
}

TEST_F(Resource, KeepsTheFirstDataOfAName) {
    registerAll();
    constexpr char kOther[] = "other";
    const char* const names[] = {"new", "a", nullptr};
    const std::size_t sizes[] = {5, 5, 5};
    const std::size_t offsets[] = {0, 0, 0};
    xo::rc::impl::RegisterResources(3, kOther, names, sizes, offsets);
    EXPECT_THAT(takeLines(), ElementsAre("3()Resource conflict a", "3()Resource conflict [NullPtr]"));
    std::string bytes;
    EXPECT_TRUE(GetResource("a", bytes));
    EXPECT_EQ(bytes, std::string("first\0", 6));
    EXPECT_TRUE(GetResource("new", bytes));

    const char* const unknown[] = {"unknown"};
    for (int missing = 0; missing < 4; ++missing)
        xo::rc::impl::RegisterResources(1, missing == 0 ? nullptr : kOther, missing == 1 ? nullptr : unknown,
                                        missing == 2 ? nullptr : sizes, missing == 3 ? nullptr : offsets);
    xo::rc::impl::UnRegisterResources(1, nullptr, nullptr, nullptr, nullptr);
    EXPECT_THAT(takeLines(), IsEmpty());
    EXPECT_FALSE(GetResource("unknown", bytes));
    EXPECT_THAT(takeLines(), ElementsAre("3()Resource is missing unknown"));
    xo::rc::impl::UnRegisterResources(1, nullptr, &names[2], nullptr, nullptr);
    EXPECT_THAT(takeLines(), ElementsAre("3()Resource is already unregistered [NullPtr]"));
}

TEST_F(Resource, IsForgottenWhenUnregisteredAndAtTheEnd) {
    registerAll();
    unregisterAll();
    EXPECT_THAT(takeLines(), IsEmpty());
    unregisterAll();
    EXPECT_THAT(takeLines(),
                ElementsAre("3()Resource is already unregistered a", "3()Resource is already unregistered A",
                            "3()Resource is already unregistered data/\xC3\xA9"));
    registerAll();
    xo::terminateXoSystem();
    unregisterAll();  // a module may unload after termination
    xo::initializeXoSystem(xo::InitTypeFull);
    xo::xoLog::edit().setEchoToConsole(false);
    const char* data = nullptr;
    std::size_t size = 0;
    EXPECT_FALSE(GetResource("a", data, size));
}

TEST(EarlyResource, OutlivesTheStartOfTheLibrary) {
    registerAll();  // a module may be loaded before the host initialises the library
    xo::initializeXoSystem(xo::InitTypeFull);
    std::string bytes;
    EXPECT_TRUE(GetResource("A", bytes));
    EXPECT_EQ(bytes, "second");
    xo::terminateXoSystem();
}

TEST_F(Resource, IsSafeForThreads) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            const std::string name = "thread" + std::to_string(t);
            const char* const names[] = {name.c_str()};
            for (int i = 0; i < 20000; ++i) {
                xo::rc::impl::RegisterResources(1, kBlob, names, kSizes, kOffsets);
                std::string bytes;
                EXPECT_TRUE(GetResource(name.c_str(), bytes));
                xo::rc::impl::UnRegisterResources(1, kBlob, names, kSizes, kOffsets);
            }
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_THAT(takeLines(), IsEmpty());
}

}  // namespace
