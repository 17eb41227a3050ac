#include "support/cabinet_host.h"
#include "support/cabinet_writer.h"

#include <gtest/gtest.h>
#include <set>

using harbor6::Archive;
using harbor6::Item;
using pattern::AcquiredPtr;
using support::cabinet;
using support::cabinet_host;

namespace {

/// Every item below `folder`, as "path=size " with '/' behind folders; positions go into `places`.
std::string walk(const harbor6::Folder& folder, std::set<std::uint64_t>& places,
                 const std::string& prefix = {}) {
    std::string found;
    harbor6::ConstItemIterator items(folder);
    for (items.first(); !items.isDone(); items.next()) {
        const AcquiredPtr<const Item> item(items.current());
        EXPECT_TRUE(places.insert(const_cast<Item&>(*item).position()).second);
        const auto path = prefix + item->string("name");
        if (item->asFolder())
            found += path + "/ " + walk(*item->asFolder(), places, path + "/");
        else
            found += path + "=" + std::to_string(item->integer("uncompressedSize")) + " ";
    }
    return found;
}

std::string bytes_at(harbor6::Fork& fork, std::uint64_t offset, unsigned length) {
    const auto in = fork.randomInput(true, false);
    std::string bytes(length, '\0');
    EXPECT_TRUE(in->seek(offset));
    bytes.resize(in->read(bytes.data(), length));
    return bytes;
}

} // namespace

TEST(ArchiveWalk, GivesEntriesWhileTheArchiveIsOpen) {
    // Two files of one name, a file named as a folder, an empty component, a folder asked for twice.
    cabinet made = cabinet().file("a", "1").file("a", "22").file("d", "333").file("d\\e\\x", "4444");
    const cabinet_host host(made.file("d\\e\\y", "").file("d\\\\z", "55").bytes());
    std::set<std::uint64_t> places;
    EXPECT_EQ(walk(*host.archive, places), "") << "closed";
    host.archive->open(Archive::mode_read);
    EXPECT_EQ(walk(*host.archive, places), "a=1 a=2 d=3 d/ d/e/ d/e/x=4 d/e/y=0 d/z=2 ");
    EXPECT_EQ(host.archive->integer("totalItems"), 8);
    EXPECT_EQ(host.archive->string("name"), "x");
    const AcquiredPtr<const Item> first(host.archive->acquireFirstItem());
    EXPECT_EQ(first->archive(), host.archive.get());
    EXPECT_FALSE(const_cast<Item&>(*first).setString("name", "b"));
    EXPECT_TRUE(first->has("modTime"));
    EXPECT_FALSE(host.archive->hasItemNamed("d")) << "lookups want the search bit";
    host.archive->close();
    host.archive->open(Archive::mode_walk);
    EXPECT_TRUE(host.archive->hasItemNamed("d"));
}

TEST(ArchiveWalk, RaisesTheFailureOfThePassEachTime) {
    const cabinet_host host(cabinet().block({.payload = "bad", .checksum = 1}).bytes());
    host.archive->open(Archive::mode_read);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(support::refusal_of([&] { host.archive->acquireFirstItem(); }),
                  "crc format::cab::data_header: CRC mismatch, data is invalid");
}

TEST(ArchiveWalk, KeepsContentBeyondWhatFitsItsMemory) {
    std::string large(17 << 20, '\0');
    for (std::size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<char>(i * 2654435761u >> 24);
    const cabinet_host host(
        cabinet().file("first", "first").file("large", large).file("last", "last").bytes());
    host.archive->open(Archive::mode_walk);
    const AcquiredPtr<Item> item(host.archive->acquireItemFromName("large"));
    auto& fork = *item->asFile()->getMainFork();
    constexpr std::uint64_t border = (16u << 20) - 5; // the five bytes of "first" lie in front
    for (const std::uint64_t offset : {std::uint64_t{0}, border - 7, border, border + 1})
        EXPECT_EQ(bytes_at(fork, offset, 10), large.substr(offset, 10)) << offset;
    EXPECT_EQ(bytes_at(fork, large.size() - 3, 10), large.substr(large.size() - 3));
    const AcquiredPtr<Item> last(host.archive->acquireItemFromName("last"));
    EXPECT_EQ(bytes_at(*last->asFile()->getMainFork(), 0, 10), "last");
}
