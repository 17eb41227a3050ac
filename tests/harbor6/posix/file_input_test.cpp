#include "harbor6/posix/file_input.h"
#include "support/refusal.h"
#include "support/temporary_folder.h"
#include "support/zlib_streams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <random>
#include <thread>
#include <unistd.h>

namespace {

/// The same bytes as a file or as a pipe that is fed in odd pieces.
class FileInput : public testing::TestWithParam<bool> {
protected:
    std::unique_ptr<host::file_input> open(const std::string& bytes) {
        if (!GetParam()) {
            support::write_file(folder / "x", bytes);
            return std::make_unique<host::file_input>(host::open_input((folder / "x").string()), "x");
        }
        int ends[2] = {};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        feeder = std::thread([bytes, out = host::file_descriptor(ends[1])] {
            for (std::size_t at = 0; at < bytes.size(); at += 10007)
                if (write(out.get(), bytes.data() + at, std::min<std::size_t>(10007, bytes.size() - at)) < 0)
                    return;
        });
        return std::make_unique<host::file_input>(host::file_descriptor(ends[0]), "x");
    }
    ~FileInput() override {
        if (feeder.joinable())
            feeder.join();
    }

    support::temporary_folder folder;
    std::thread feeder;
};

TEST_P(FileInput, StepsBackAnywhereInTheLast256KiB) {
    constexpr unsigned kept = 256 * 1024;
    const auto bytes = zlib_streams::noise(3'000'001);
    const auto input = open(bytes);
    std::mt19937 random(11);
    std::string piece(kept, '\0');
    std::uint64_t place = 0;
    std::uint64_t farthest = 0;
    while (farthest < bytes.size()) {
        const auto wanted = static_cast<unsigned>(random() % 90000);
        switch (random() % 5) {
        case 0:
            place += input->skip(wanted);
            break;
        case 1:
            EXPECT_EQ(input->read(), place < bytes.size() ? static_cast<unsigned char>(bytes[place]) : -1);
            place += place < bytes.size();
            break;
        default:
            const auto came = input->read(piece.data(), wanted);
            ASSERT_EQ(came, std::min<std::uint64_t>(wanted, bytes.size() - place));
            ASSERT_EQ(std::string_view(piece).substr(0, came), std::string_view(bytes).substr(place, came));
            place += came;
        }
        farthest = std::max(farthest, place);
        ASSERT_EQ(input->tell(), place);
        const auto held = std::min<std::uint64_t>(kept - (farthest - place), place);
        const auto back = static_cast<unsigned>(random() % (held + 1));
        if (random() % 3 == 0 && !input->came_short()) {
            const auto step = std::min(back, 65535u);
            input->unread(bytes.data() + place - step, step);
            place -= step;
        } else if (random() % 3 == 0) {
            ASSERT_TRUE(input->seek(place - back));
            place -= back;
        }
    }
    ASSERT_TRUE(input->seek(bytes.size() - kept)) << "the last 256 KiB stay available";
    EXPECT_EQ(input->read(piece.data(), kept), kept);
    EXPECT_EQ(piece, bytes.substr(bytes.size() - kept));
    EXPECT_EQ(input->seek(0), !GetParam()) << "only a file can be read again from its beginning";
    EXPECT_EQ(input->size(), GetParam() ? ~std::uint64_t{0} : bytes.size());
}

TEST_P(FileInput, RefusesToTakeBackMissingBytes) {
    const auto input = open("abcdef");
    char piece[8] = {};
    EXPECT_EQ(input->read(piece, 8), 6u);
    EXPECT_TRUE(input->came_short());
    EXPECT_EQ(input->read(piece, 0), 0u);
    EXPECT_THROW(input->unread(piece, 0), stream::cut_short) << "a read of nothing proves nothing";
    EXPECT_TRUE(support::refusal_of([&] {
                    input->unread(piece, 8);
                }).ends_with(": cut short: the input ends at byte 6"));
    ASSERT_TRUE(input->seek(2)) << "reading beyond the end is no failure";
    EXPECT_EQ(input->read(piece, 4), 4u);
    input->unread('f');
    EXPECT_EQ(input->read(), 'f');
    EXPECT_EQ(input->read(), -1);
    EXPECT_THROW(input->unread('f'), stream::cut_short);
    EXPECT_FALSE(input->seek(7));
    EXPECT_TRUE(input->seek(6));
    EXPECT_TRUE(input->skip(1) == 0 && input->came_short());
}

INSTANTIATE_TEST_SUITE_P(FileAndPipe, FileInput, testing::Bool(),
                         [](const auto& run) { return run.param ? "Pipe" : "File"; });

TEST(RegularFileInput, SkipsWithoutReading) {
    support::temporary_folder folder;
    support::write_file(folder / "x", "head");
    std::filesystem::resize_file(folder / "x", std::uint64_t{1} << 40);
    host::file_input input(host::open_input((folder / "x").string()), "x");
    EXPECT_EQ(input.skip((std::uint64_t{1} << 40) - 1), (std::uint64_t{1} << 40) - 1);
    EXPECT_EQ(input.read(), 0);
    ASSERT_TRUE(input.seek(1));
    EXPECT_EQ(input.read(), 'e');
}

} // namespace
