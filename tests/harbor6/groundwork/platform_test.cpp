#include "harbor6/groundwork/platform.h"

#include "harbor6/concurrency/synchronization.h"
#include "harbor6/concurrency/thread.h"
#include "support/job.h"
#include "support/refusal.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

TEST(PlatformWorker, ReportsThatNoThreadIsAvailable) {
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "sanitizers need the address space that this test removes";
#endif
    const auto starve = [] {
        basic::event never(true);
        support::job waiting([&] { never.wait(); });
        std::vector<basic::thread> threads(64); // more than the C library keeps stacks for
        const rlimit none{0, 0};
        setrlimit(RLIMIT_AS, &none);
        std::string text;
        for (auto& thread : threads)
            if (text.empty())
                text = support::refusal_of([&] { thread.start(&waiting); });
        _exit(text == "cannot create a thread" ? 0 : 1);
    };
    EXPECT_EXIT(starve(), testing::ExitedWithCode(0), "");
}

TEST(Platform, FindsItsExecutableAndSymbolsOrReportsWhyNot) {
    EXPECT_TRUE(std::filesystem::equivalent(platform::executable_path(), "/proc/self/exe"));
    platform::library mathematics("libm.so.6");
    using function = double (*)(double);
    EXPECT_EQ(reinterpret_cast<function>(mathematics.symbol("floor"))(2.5), 2.0);
    platform::library moved(std::move(mathematics));
    EXPECT_NE(moved.symbol("ceil"), nullptr);
    const auto missing = support::refusal_of([&] { moved.symbol("no_such_function"); });
    EXPECT_TRUE(missing.starts_with("platform::library: "));
    EXPECT_NE(missing.find("no_such_function"), missing.npos);
    const auto absent = support::refusal_of([] { platform::library("/no/such.so"); });
    EXPECT_NE(absent.find("/no/such.so"), absent.npos);
    EXPECT_EQ(support::refusal_of([&] { mathematics.symbol("floor"); }),
              "platform::library: no library is loaded");
}

} // namespace
