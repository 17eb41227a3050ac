#include "host/disk_input.h"
#include "host/disk_random.h"
#include "support/temporary_folder.h"

#include <gtest/gtest.h>

using host::disk_random_input;
using host::disk_random_output;

TEST(DiskRandom, WritesAndReadsInAnyOrder) {
    const support::temporary_folder place;
    host::disk_target target(place.path.string(), true);
    const auto transfer = std::make_shared<host::disk_transfer>(target, "d", "f", false);
    {
        disk_random_output out(transfer);
        out.write("0123456789", 10);
        EXPECT_FALSE(out.seek(11)) << "no holes";
        EXPECT_TRUE(out.seek(3));
        out.write("abc");
        out.write('d');
        EXPECT_EQ(out.tell(), 7u);
        EXPECT_EQ(out.size(), 10u);
        out.resize(9);
    }
    transfer->finish({});
    EXPECT_EQ(support::read_file(place / "d/f"), "012abcd78");

    disk_random_input in(host::open_input((place / "d/f").string()), "f");
    char bytes[16];
    EXPECT_EQ(in.skip(7), 7u);
    EXPECT_EQ(in.read(bytes, 16), 2u);
    in.unread("??", 2);
    EXPECT_EQ(in.read(), '7');
    EXPECT_EQ(in.skip(9), 1u);
    EXPECT_FALSE(in.seek(10));
    EXPECT_TRUE(in.seek(1));
    EXPECT_EQ(std::string(bytes, in.read(bytes, 3)), "12a");
}
