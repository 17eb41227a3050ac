#include "formats/cfb/cfb_format.h"

#include "formats/cfb/compound_writer.h"
#include "harbor6/model/archive_finder.h"
#include "harbor6/model/classifier.h"
#include "support/memory_host.h"
#include "support/program.h"
#include "support/refusal.h"

#include <numeric>

namespace {

using support::compound;

/// A memory host with one compound document outside its root.
struct document_host : support::memory_host {
    /// Expands the document into the root; returns the failure as refusal_of does.
    std::string expand(const std::string& bytes) {
        const auto stored = source("x.msi", bytes);
        const pattern::AcquiredPtr<harbor6::Archive> archive(format._newArchiveAtItem(stored.get(), 0));
        return support::refusal_of([&] { archive->addContentTo(*root(), nullptr); });
    }
    harbor6::cfb::Format format{&shell};
};

std::string sample(std::size_t size) {
    std::string text(size, ' ');
    for (std::size_t i = 0; i < size; ++i)
        text[i] = static_cast<char>('a' + i * i % 23);
    return text;
}

TEST(CompoundDocument, GivesStreamsOfAnySizeInStoragesOfAnyDepth) {
    for (const unsigned shift : {9u, 12u}) {
        compound made;
        made.shift = shift;
        made.backwards = shift == 12;
        const auto inner = made.storage(u"in", made.storage(u"out"));
        made.storage(u"empty");
        std::multiset<std::string> lines{"out/\n", "out/in/\n", "empty/\n"};
        for (const auto size : std::initializer_list<std::size_t>{0, 1, 63, 64, 65, 511, 512, 4095, 4096,
                                                                  4097, 70000, 7300000}) {
            const auto name = std::to_string(size);
            const auto data = sample(shift == 9 ? size : size % 1000000);
            made.stream({name.begin(), name.end()}, data, size % 2 ? inner : 0);
            lines.insert((size % 2 ? "out/in/" : "") + name + '=' + data + '\n');
        }
        const auto expected = std::accumulate(lines.begin(), lines.end(), std::string());
        const auto bytes = made.bytes();
        document_host host;
        EXPECT_EQ(host.expand(bytes), "");
        EXPECT_TRUE(host.tree() == expected) << shift;
        // Between other bytes its size is that of all sectors in use, of which the last may be incomplete; a
        // table that is longer than the file means that the rest is missing.
        const auto lacking = shift == 9 ? 9u : 0u; // else the last one is part of the table
        auto endless = bytes;
        endless.replace(44, 4, "\xFF\xFF\xFF\xFF");
        const std::tuple<std::string, std::uint64_t, bool> sizes[] = {
            {"stub" + bytes + "tail", bytes.size(), false},
            {"stub" + bytes.substr(0, bytes.size() - lacking), bytes.size() - lacking, false},
            {"stub" + endless, std::uint64_t{0xFFFFFFFF} << shift, true},
        };
        harbor6::Classifier formats;
        formats.addFormat(*new harbor6::cfb::Format(nullptr));
        for (const auto& [around, size, cut] : sizes) {
            support::seekable_input file(around);
            harbor6::FoundArchive found;
            ASSERT_TRUE(harbor6::ArchiveFinder(formats, file).next(found));
            EXPECT_EQ(std::tuple(found.offset, found.size, found.cut), std::tuple(4, size, cut));
        }
    }
}

TEST(CompoundDocument, ShowsNamesAsPeopleKnowThem) {
    const std::u16string table = u"\x4840\x3F7F\x4164\x422F\x4836";
    const struct {
        std::u16string stored;
        std::string plain, beside_a_table; ///< the latter empty if it is the same
    } names[] = {
        {u"a.txt", "a.txt", {}},
        {u"\x05Sum", "[5]Sum", {}},
        {u"a/b\\c", "a[47]b[92]c", {}},
        {u"\xD83D\xDE00\xD800", "\xF0\x9F\x98\x80\xEF\xBF\xBD", {}},
        {u"\x38C9\x4824", "\xE3\xA3\x89\xE4\xA0\xA4", "93a"},
        {u"\x47FF\x483E", "\xE4\x9F\xBF\xE4\xA0\xBE", "__."},
    };
    for (const auto& [stored, plain, packed] : names) {
        document_host host, database;
        EXPECT_EQ(host.expand(compound().stream(stored, "1").bytes()), "");
        EXPECT_EQ(host.tree(), plain + "=1\n");
        EXPECT_EQ(database.expand(compound().stream(table, "").stream(stored, "1").bytes()), "");
        EXPECT_EQ(database.tree(), "!_Tables=\n" + (packed.empty() ? plain : packed) + "=1\n");
    }
}

TEST(CompoundDocument, GivesWhatIsSoundAndSaysWhatIsNot) {
    const std::string whole = "a2000 b5000 c70 ";
    const std::string directory = "the directory of the compound document is damaged";
    const std::string table = "the table of sectors of the compound document is incomplete";
    const std::string beyond = "a chain of sectors leads beyond the end of the file";
    const std::string early = "a chain of sectors ends early";
    const std::string twice = "a sector belongs to two chains";
    const struct {
        const char* name;
        std::function<void(compound&)> damage;
        std::string failure, tree;
    } cases[] = {
        // b is the only long stream: its chain begins at sector 0.
        {"old bytes in a size", [](compound& d) { d.entries[2].size |= 1ull << 40; }, "", whole},
        {"a chain that leads to itself", [](compound& d) { d.fat[1] = 0; }, twice, "a2000 b1024 c70 "},
        {"a chain that ends early", [](compound& d) { d.fat[3] = compound::end; }, early, "a2000 b2048 c70 "},
        {"a chain that leads nowhere", [](compound& d) { d.fat[0] = 0xFFFFFF0; }, beyond, "a2000 b512 c70 "},
        {"a free sector", [](compound& d) { d.fat[0] = compound::none; }, beyond, "a2000 b512 c70 "},
        {"a shared chain", [](compound& d) { d.entries[3].first = d.entries[1].first; }, twice,
         "a2000 b5000 c0 "},
        {"a chain into another", [](compound& d) { d.mini_fat[5] = d.entries[3].first; }, twice,
         "a384 b5000 c70 "},
        {"a circle of short sectors", [](compound& d) { d.mini_fat[1] = 1; }, twice, "a128 b5000 c70 "},
        {"a size beyond the chain", [](compound& d) { d.entries[2].size = 0xFFFFFFFF; }, early,
         "a2000 b5120 c70 "},
        {"no table", [](compound& d) { d.places.assign(1, compound::end); }, table, "a0 b512 c0 "},
        {"a directory in a circle", [](compound& d) { d.fat[d.directory] = d.directory; }, twice, whole},
        {"no root", [](compound& d) { d.entries[0].type = 2; }, directory, ""},
        {"a sibling that is the root", [](compound& d) { d.entries[3].right = 0; }, directory, whole},
        {"siblings in a circle", [](compound& d) { d.entries[3].right = 1; }, directory, whole},
        {"a sibling that doesn't exist", [](compound& d) { d.entries[3].left = 9000; }, directory, whole},
    };
    for (const auto& [name, damage, failure, tree] : cases) {
        SCOPED_TRACE(name);
        compound made;
        made.stream(u"a", sample(2000)).stream(u"b", sample(5000)).stream(u"c", sample(70));
        made.damage = damage;
        document_host host;
        EXPECT_EQ(host.expand(made.bytes()), failure.empty() ? "" : "format::cfb::document: " + failure);
        std::string came;
        for (const auto& node : host.tree_root->children) {
            came += node->name + std::to_string(node->bytes.size()) + ' ';
            EXPECT_TRUE(node->bytes.starts_with(sample(std::min<std::size_t>(5000, node->bytes.size()))));
        }
        EXPECT_EQ(came, tree);
    }
    // A part of the table that can't be found costs the streams whose sectors it has.
    compound large;
    large.stream(u"a", sample(100000)).stream(u"b", sample(20000));
    large.damage = [](compound& d) { d.places[0] = 0xFFFFFF0; };
    document_host host;
    EXPECT_EQ(host.expand(large.bytes()), "format::cfb::document: " + beyond);
    EXPECT_TRUE(host.tree().ends_with("b=" + sample(20000) + "\n"));
}

struct CompoundProgram : support::program {};

TEST_F(CompoundProgram, ExpandsTheCabinetsInAnInstaller) {
    compound made;
    made.stream(u"\x4840\x3F7F\x4164\x422F\x4836", "tables");
    made.stream(u"data.cab", support::cabinet().file("a", sample(5000)).file("b", "two").bytes());
    const auto bytes = made.bytes();
    support::write_file(place / "x.msi", bytes);
    support::write_file(place / "cut.msi", bytes.substr(0, 3000));
    EXPECT_EQ(run("expand --nested -q x.msi"), fine());
    EXPECT_EQ(support::tree(place / "x"), "!_Tables data/ data/a data/b ");
    EXPECT_EQ(support::read_file(place / "x/data/a"), sample(5000));
    EXPECT_EQ(run("list -q cut.msi").status, 1);
    EXPECT_EQ(run("test -q cut.msi - x.msi", "cat x.msi |"),
              failed("harbor: cut.msi: a chain of sectors leads beyond the end of the file\n"
                     "harbor: -: a compound document is not read in order, so it cannot come from a pipe\n"));
}

} // namespace
