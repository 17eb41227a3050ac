#include "host/platform/disk_transfer.h"

#include "support/temporary_folder.h"

#include <csignal>
#include <gtest/gtest.h>

TEST(DiskTransferDeathTest, LeavesNoHalfFileWhenTheProgramIsEnded) {
    const support::temporary_folder folder;
    support::write_file(folder / "old", "old");
    for (const bool replacing : {false, true}) {
        EXPECT_EXIT(
            {
                host::disk_target target(folder.path.string(), true);
                host::disk_transfer done(target, "", replacing ? "more" : "done", false);
                done.write("all", 3);
                done.finish({});
                host::disk_transfer half(target, "", replacing ? "old" : "new", replacing);
                half.write("half", 4);
                std::raise(SIGTERM);
            },
            testing::KilledBySignal(SIGTERM), "");
    }
    EXPECT_EQ(support::tree(folder.path), "done more old ");
    EXPECT_EQ(support::read_file(folder / "old"), "old");
}
