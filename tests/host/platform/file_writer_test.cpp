#include "host/platform/file_writer.h"

#include "support/temporary_folder.h"

#include <csignal>
#include <gtest/gtest.h>

TEST(FileWriterDeathTest, ASignalRemovesThePartialFile) {
    const support::temporary_folder folder;
    support::write_file(folder / "old", "old");
    for (const bool replacing : {false, true}) {
        EXPECT_EXIT(
            {
                host::directory_tree target(folder.path.string(), true);
                host::file_writer done(target, "", replacing ? "more" : "done", false);
                done.write("all");
                done.finish({});
                host::file_writer half(target, "", replacing ? "old" : "new", replacing);
                half.write("half");
                std::raise(SIGTERM);
            },
            testing::KilledBySignal(SIGTERM), "");
    }
    EXPECT_EQ(support::tree(folder.path), "done more old ");
    EXPECT_EQ(support::read_file(folder / "old"), "old");
}
