#include "harbor6/c.h"

#include "harbor6/hosts/archive_reader.h"
#include "harbor6/hosts/memory_folder.h"
#include "harbor6/hosts/volume_finder.h"
#include "host/sha256.h"
#include "support/cabinet_writer.h"
#include "support/temporary_folder.h"

#include <array>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <thread>
#include <unistd.h>

namespace {

using support::cabinet;

struct closer {
    void operator()(harbor6_formats* formats) const { harbor6_formats_free(formats); }
    void operator()(harbor6_archive* archive) const { harbor6_close(archive); }
    void operator()(harbor6_stream* stream) const { harbor6_stream_close(stream); }
};

using archive_ptr = std::unique_ptr<harbor6_archive, closer>;

class CInterface : public testing::Test {
protected:
    CInterface() { EXPECT_EQ(harbor6_formats_load(formats.get(), nullptr), HARBOR6_OK); }

    archive_ptr open(const std::string& bytes, harbor6_status expected = HARBOR6_OK) {
        harbor6_archive* archive = nullptr;
        EXPECT_EQ(harbor6_open_memory(formats.get(), bytes.data(), bytes.size(), &archive), expected);
        EXPECT_EQ(harbor6_error_code(archive), expected);
        return archive_ptr(archive);
    }

    std::unique_ptr<harbor6_formats, closer> formats{harbor6_formats_new()};
};

using contents = std::map<std::string, std::string>;

/// Every file through one pass; those that were incomplete have a '!' behind their bytes.
std::pair<harbor6_status, contents> read_all(harbor6_archive* archive) {
    struct reading {
        harbor6_archive* archive;
        contents files;
    } state{archive, {}};
    harbor6_receiver receiver = {};
    receiver.context = &state;
    receiver.bytes = [](void* context, size_t entry, const void* bytes, size_t length) {
        auto& into = *static_cast<reading*>(context);
        into.files[harbor6_path(into.archive, entry)].append(static_cast<const char*>(bytes), length);
        return 0;
    };
    receiver.ended = [](void* context, size_t entry, int complete) {
        auto& into = *static_cast<reading*>(context);
        into.files[harbor6_path(into.archive, entry)] += complete ? "" : "!";
    };
    const auto status = harbor6_read(archive, &receiver);
    return {status, state.files};
}

std::string read_entry(harbor6_archive* archive, size_t entry) {
    harbor6_stream* made = nullptr;
    EXPECT_EQ(harbor6_open_entry(archive, entry, UINT64_MAX, &made), HARBOR6_OK) << harbor6_error(archive);
    const std::unique_ptr<harbor6_stream, closer> stream(made);
    std::string bytes(harbor6_stream_size(made), '?');
    EXPECT_EQ(harbor6_stream_read(made, bytes.data(), bytes.size() + 9), static_cast<int64_t>(bytes.size()));
    return bytes;
}

TEST_F(CInterface, GivesTheSameBytesOnEveryRoad) {
    for (const std::string name : {"mszip-reserve.cab", "lzx17-mixed.cab", "mszip.cab"}) {
        SCOPED_TRACE(name);
        const auto path = HARBOR_TEST_DATA "/" + name;
        const auto bytes = support::read_file(path);
        const auto archive = open(bytes);
        const auto files = read_all(archive.get()).second;
        EXPECT_EQ(files.size(), harbor6_count(archive.get()));

        harbor6_source source = {};
        source.size = bytes.size();
        source.context = const_cast<std::string*>(&bytes);
        source.read = [](void* context, uint64_t offset, void* buffer, size_t length, size_t* came) {
            *came = static_cast<std::string*>(context)->copy(static_cast<char*>(buffer),
                                                             std::min<size_t>(length, 1000), offset);
            return 0;
        };
        int pipe_ends[2];
        ASSERT_EQ(pipe(pipe_ends), 0);
        std::thread writer([&] {
            EXPECT_EQ(write(pipe_ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
            close(pipe_ends[1]);
        });
        harbor6_archive *by_path = nullptr, *by_source = nullptr, *by_pipe = nullptr;
        EXPECT_EQ(harbor6_open_path(formats.get(), path.c_str(), &by_path), HARBOR6_OK);
        EXPECT_EQ(harbor6_open_source(formats.get(), &source, &by_source), HARBOR6_OK);
        EXPECT_EQ(harbor6_open_descriptor(formats.get(), pipe_ends[0], &by_pipe), HARBOR6_OK);
        writer.join();
        close(pipe_ends[0]);
        for (auto* const each : {by_path, by_source, by_pipe})
            EXPECT_EQ(read_all(archive_ptr(each).get()), std::pair(HARBOR6_OK, files));

        const support::temporary_folder place;
        EXPECT_EQ(harbor6_expand(archive.get(), place.path.c_str(), nullptr), HARBOR6_OK);
        for (size_t i = 0; i < harbor6_count(archive.get()); ++i) {
            const std::string entry = harbor6_path(archive.get(), i);
            const auto found = files.find(entry);
            const auto content = found == files.end() ? "" : found->second;
            EXPECT_EQ(harbor6_size(archive.get(), i), content.size()) << entry;
            EXPECT_TRUE(support::read_file(place / entry) == content) << entry;
            EXPECT_TRUE(read_entry(archive.get(), i) == content) << entry;
        }
    }
}

/// The bytes of each file by its path, as the archive in the file `path` gives them to a folder in memory.
contents in_memory(const std::string& path) {
    struct quiet : host::journal {
        void done(const std::string&, std::uint64_t) override {}
        void refused(const std::string&, const std::string&) override {}
        void unfinished(const std::string&, std::uint64_t, const std::string&) override {}
        void missing(const std::string&) override {}
    } reports;
    harbor6::ClientInterface client;
    host::Registry formats(client);
    for (const auto& folder : host::Registry::standard_folders())
        formats.load(folder);
    host::VolumeFinder volumes({});
    volumes.beginArchive(path);
    host::ArchiveReader reader(formats, std::make_unique<host::file_input>(host::open_input(path), path),
                               &volumes);
    host::memory_target memory(reader.plain_format());
    const pattern::AcquiredPtr<host::MemoryFolder> top(new host::MemoryFolder(memory));
    reader.expand(*top, reports, host::TargetClient::Existing::fail, {});
    contents files;
    for (const auto& [name, file] : memory.files)
        files[name] = *file.bytes;
    return files;
}

contents on_disk(const std::filesystem::path& folder) {
    contents files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            files[entry.path().lexically_relative(folder).string()] = support::read_file(entry.path());
    return files;
}

TEST_F(CInterface, GivesEachCorpusCabinetAsTheOtherHostsDo) {
    std::string digests;
    for (const auto& file : std::filesystem::directory_iterator(HARBOR_TEST_DATA)) {
        const auto name = file.path().filename().string();
        if (file.path().extension() != ".cab" || name.starts_with("refuse"))
            continue;
        SCOPED_TRACE(name);
        harbor6_archive* made = nullptr;
        ASSERT_EQ(harbor6_open_path(formats.get(), file.path().c_str(), &made), HARBOR6_OK);
        const archive_ptr archive(made);
        auto [status, files] = read_all(made);
        EXPECT_EQ(status, HARBOR6_OK);
        const support::temporary_folder place;
        EXPECT_EQ(harbor6_expand(made, place.path.c_str(), nullptr), HARBOR6_OK);
        EXPECT_TRUE(in_memory(file.path()) == files);
        EXPECT_TRUE(on_disk(place.path) == files);
        for (const auto& [path, bytes] : files) {
            host::sha256 digest;
            digest.update(bytes);
            digests += digest.finish() + "  " + (name + "/").append(path) + "\n";
        }
    }
    std::istringstream expected(support::read_file(HARBOR_TEST_DATA "/SHA256SUMS"));
    for (std::string line; std::getline(expected, line);)
        EXPECT_NE(digests.find(line + "\n"), digests.npos) << line;
}

TEST_F(CInterface, OpensAnArchiveOfSeveralParts) {
    const std::string set = HARBOR_TEST_DATA "/set-tiny";
    std::string bytes[3];
    harbor6_part parts[3] = {};
    const auto supply = [](void* context, uint64_t offset, void* buffer, size_t length, size_t* came) {
        *came = static_cast<std::string*>(context)->copy(static_cast<char*>(buffer), length, offset);
        return 0;
    };
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[i] = support::read_file(set + std::to_string(i + 1) + ".cab");
        parts[i].source = {&bytes[i], bytes[i].size(), supply};
    }
    std::vector<contents> found;
    for (const size_t first : {0u, 1u}) { // the whole set, and it without its first part
        harbor6_archive* made = nullptr;
        harbor6_open_parts(formats.get(), parts + first, 3 - first, &made);
        const archive_ptr archive(made);
        const auto [status, files] = read_all(made);
        EXPECT_EQ(status, first ? HARBOR6_FAILED : HARBOR6_OK) << harbor6_error(made);
        found.push_back(files);
    }
    std::swap(parts[0], parts[2]);
    harbor6_archive* from_last = nullptr;
    EXPECT_EQ(harbor6_open_parts(formats.get(), parts, 3, &from_last), HARBOR6_OK);
    EXPECT_EQ(read_all(archive_ptr(from_last).get()).second, found[0]);
    EXPECT_EQ(found[0], in_memory(set + "1.cab"));
    EXPECT_EQ(found[1].count("note.bin"), 0u);

    // A part of the name that the set states, but of another set.
    auto other = support::flip(bytes[1], 32);
    parts[1] = {"set-tiny2.cab", {&other, other.size(), supply}};
    harbor6_archive* wrong = nullptr;
    EXPECT_EQ(harbor6_open_parts(formats.get(), parts, 3, &wrong), HARBOR6_FAILED);
    EXPECT_STREQ(harbor6_error(archive_ptr(wrong).get()),
                 "set-tiny2.cab is a part of another set of cabinets");
}

/// The entries of a pass from `first` on, each with '!' behind its bytes if it was incomplete.
std::pair<harbor6_status, contents> pass_from(harbor6_archive* archive, size_t first, size_t piece) {
    harbor6_pass* pass = nullptr;
    EXPECT_EQ(harbor6_pass_open(archive, first, &pass), HARBOR6_OK);
    contents files;
    for (size_t entry = 0; harbor6_pass_next(pass, &entry);) {
        auto& bytes = files[harbor6_path(archive, entry)];
        std::string more(piece, '?');
        int64_t came;
        while ((came = harbor6_pass_read(pass, more.data(), piece)) > 0)
            bytes.append(more, 0, static_cast<size_t>(came));
        bytes += came ? "!" : "";
    }
    return {harbor6_pass_close(pass), files};
}

TEST_F(CInterface, ReadsEntriesByAndBy) {
    for (const std::string name : {"lzx17-mixed.cab", "order.cab", "share.cab"}) {
        SCOPED_TRACE(name);
        const auto bytes = support::read_file(HARBOR_TEST_DATA "/" + name);
        const auto archive = open(bytes);
        const auto files = read_all(archive.get()).second;
        for (size_t i = 0; i < harbor6_count(archive.get()); ++i) {
            const auto [status, came] = pass_from(archive.get(), i, i % 2 ? 5000 : 400000);
            EXPECT_EQ(status, HARBOR6_OK);
            EXPECT_EQ(came.count(harbor6_path(archive.get(), i)), 1u);
            for (const auto& [path, content] : came)
                EXPECT_TRUE(content == files.at(path)) << path;
        }
        harbor6_pass* left = nullptr;
        EXPECT_EQ(harbor6_pass_open(archive.get(), 0, &left), HARBOR6_OK);
        harbor6_pass_close(left);
    }
}

TEST_F(CInterface, FindsArchivesInsideFiles) {
    const support::temporary_folder place;
    support::write_file(place / "x", "junk" + cabinet().file("a", "1").bytes());
    const int file = ::open((place / "x").c_str(), O_RDONLY);
    std::string found;
    EXPECT_EQ(harbor6_find(formats.get(), file, &found,
                           [](void* context, const harbor6_found* each) {
                               *static_cast<std::string*>(context) +=
                                   each->format + std::to_string(each->offset);
                               return 7;
                           }),
              HARBOR6_ABORTED);
    EXPECT_EQ(found, "cab4");
    close(file);
    harbor6_source failing = {nullptr, 100, [](void*, uint64_t, void*, size_t, size_t*) { return 1; }};
    EXPECT_EQ(
        harbor6_find_source(formats.get(), &failing, nullptr, [](void*, const harbor6_found*) { return 0; }),
        HARBOR6_ABORTED);
}

TEST_F(CInterface, NamesFormatsAndCodePages) {
    EXPECT_STREQ(harbor6_formats_name(formats.get(), 0), "cab");
    EXPECT_EQ(harbor6_formats_name(formats.get(), 99), nullptr);
    EXPECT_EQ(harbor6_set_code_page("none such"), HARBOR6_FAILED);
    EXPECT_EQ(harbor6_set_code_page("CP437"), HARBOR6_OK);
    const auto bytes = cabinet().file("\x81", "1").bytes();
    EXPECT_STREQ(harbor6_path(open(bytes).get(), 0), "\xC3\xBC");
    EXPECT_EQ(harbor6_set_code_page(""), HARBOR6_OK);
    EXPECT_STREQ(harbor6_path(open(bytes).get(), 0), "\xC2\x81");
}

TEST_F(CInterface, KnowsEntriesBeforeTheirData) {
    cabinet made;
    made.folder(support::lzx(17)).file("d\\\xE4.txt", "abc");
    made.files.back().attributes = 0x21;
    const auto bytes = made.file("..\\b", "12").bytes();
    const auto archive = open(bytes);
    size_t entry = 9;
    harbor6_time time = {};
    EXPECT_STREQ(harbor6_format(archive.get()), "cab");
    EXPECT_EQ(harbor6_lookup(archive.get(), "d/\xC3\xA4.txt", &entry), HARBOR6_OK);
    EXPECT_EQ(entry, 0u);
    EXPECT_EQ(harbor6_attributes(archive.get(), 0), unsigned{HARBOR6_READ_ONLY | HARBOR6_ARCHIVE_BIT});
    EXPECT_EQ(harbor6_modified(archive.get(), 0, &time), 1);
    EXPECT_EQ(time.year * 100 + time.month, 200402);
    EXPECT_STREQ(harbor6_text(archive.get(), 0, "compMethod"), "LZX:17");
    EXPECT_EQ(harbor6_lookup(archive.get(), "none", &entry), HARBOR6_NO_ENTRY);
    EXPECT_STREQ(harbor6_error(archive.get()), "no entry none");
    EXPECT_STREQ(harbor6_path(archive.get(), 2), "");
    harbor6_stream* none = nullptr;
    EXPECT_EQ(harbor6_open_entry(archive.get(), 2, 0, &none), HARBOR6_NO_ENTRY);
}

TEST_F(CInterface, TellsWhyAnArchiveIsRefused) {
    const auto whole = cabinet().file("a", "1").file("b", std::string(500, 'x')).bytes();
    const struct {
        std::string bytes;
        harbor6_status status;
        const char* text;
        size_t entries;
    } cases[] = {
        {"", HARBOR6_NOT_AN_ARCHIVE, "the file is empty", 0},
        {"text", HARBOR6_NOT_AN_ARCHIVE, "not an archive of a known format", 0},
        {support::read_file(HARBOR_TEST_DATA "/refuse-next.cab"), HARBOR6_BAD_CONTENT,
         "expansion of segmented CAB archives not supported", 0},
        {support::cut(whole, 70), HARBOR6_BAD_CONTENT, nullptr, 1},
    };
    for (const auto& each : cases) {
        const auto archive = open(each.bytes, each.status);
        EXPECT_EQ(harbor6_count(archive.get()), each.entries);
        if (each.text) {
            EXPECT_STREQ(harbor6_error(archive.get()), each.text);
        }
    }
    harbor6_archive* none = nullptr;
    EXPECT_EQ(harbor6_open_path(formats.get(), "/none", &none), HARBOR6_SYSTEM);
    EXPECT_STREQ(harbor6_error(archive_ptr(none).get()), "No such file or directory");
}

TEST_F(CInterface, GivesWhatIsWholeOfADamagedArchive) {
    cabinet made;
    made.file("a", "1").folder(support::stored).file("b", std::string(60000, 'b'));
    const auto bytes = support::cut(made.folder(support::stored).file("c", "3").bytes(), 50000);
    const auto archive = open(bytes);
    const auto [status, files] = read_all(archive.get());
    EXPECT_EQ(status, HARBOR6_BAD_CONTENT);
    EXPECT_STREQ(harbor6_error(archive.get()), "cut short: the input ends at byte 50000");
    EXPECT_EQ(files.at("a"), "1");
    EXPECT_EQ(files.at("b").back(), '!');
    EXPECT_EQ(files.at("c"), "!");
    harbor6_stream* part = nullptr;
    EXPECT_EQ(harbor6_open_entry(archive.get(), 1, UINT64_MAX, &part), HARBOR6_BAD_CONTENT);
    EXPECT_GT(harbor6_stream_size(part), 100u);
    harbor6_stream_close(part);
    EXPECT_EQ(read_entry(archive.get(), 0), "1");
    EXPECT_EQ(pass_from(archive.get(), 0, 7000), std::pair(HARBOR6_BAD_CONTENT, files));
}

TEST_F(CInterface, DamageCostsOnlyWhatNeedsIt) {
    cabinet made;
    made.folder(support::stored).file({.name = "bad", .size = 4});
    made.block({.payload = "ha"}).block({.payload = "lf", .checksum = 1});
    const auto bytes = made.folder(support::stored).file("good", "whole").bytes();
    const auto archive = open(bytes);
    EXPECT_EQ(read_all(archive.get()),
              std::pair(HARBOR6_BAD_CONTENT, contents({{"bad", "ha!"}, {"good", "whole"}})));
    EXPECT_STREQ(harbor6_error(archive.get()), "CRC mismatch, data is invalid");
    EXPECT_EQ(read_entry(archive.get(), 1), "whole");
    const support::temporary_folder place;
    harbor6_expansion options = {};
    options.flags = HARBOR6_KEEP_PARTIAL | HARBOR6_NO_TIMES | HARBOR6_SYNC;
    EXPECT_EQ(harbor6_expand(archive.get(), place.path.c_str(), &options), HARBOR6_BAD_CONTENT);
    EXPECT_EQ(on_disk(place.path), contents({{"bad.partial", "ha"}, {"good", "whole"}}));
    EXPECT_GT(std::filesystem::last_write_time(place / "good"),
              std::filesystem::file_time_type::clock::now() - std::chrono::hours(24));

    EXPECT_EQ(harbor6_ignore_checksums(archive.get(), 1), HARBOR6_OK);
    EXPECT_EQ(read_all(archive.get()),
              std::pair(HARBOR6_BAD_CONTENT, contents({{"bad", "half!"}, {"good", "whole"}})));
    harbor6_stream* all = nullptr;
    EXPECT_EQ(harbor6_open_entry(archive.get(), 0, 9, &all), HARBOR6_BAD_CONTENT);
    EXPECT_EQ(harbor6_stream_size(all), 4u);
    harbor6_stream_close(all);
    harbor6_expand(archive.get(), place.path.c_str(), nullptr);
    EXPECT_EQ(support::read_file(place / "bad"), "half");

    // All blocks are sound, but the last file goes on behind them.
    const auto short_bytes =
        cabinet().file("a", "1").file({.name = "b", .size = 2, .folder_offset = 5}).bytes();
    const auto cut_folder = open(short_bytes);
    EXPECT_EQ(read_all(cut_folder.get()), std::pair(HARBOR6_BAD_CONTENT, contents({{"a", "1"}})));
    EXPECT_STREQ(harbor6_error(cut_folder.get()), "entries that are incomplete: 1");
}

TEST_F(CInterface, EndsWhereTheCallerWants) {
    const auto bytes = cabinet().file("a", "1").file("b", "22").bytes();
    const auto archive = open(bytes);
    harbor6_stream* stream = nullptr;
    EXPECT_EQ(harbor6_open_entry(archive.get(), 1, 1, &stream), HARBOR6_FAILED);
    EXPECT_EQ(stream, nullptr);
    harbor6_receiver refusing = {};
    refusing.bytes = [](void*, size_t entry, const void*, size_t) { return entry == 1 ? 7 : 0; };
    EXPECT_EQ(harbor6_read(archive.get(), &refusing), HARBOR6_ABORTED);
    const support::temporary_folder place;
    harbor6_expansion once = {};
    once.wants = [](void*, size_t entry) { return entry == 1 ? 1 : 0; };
    EXPECT_EQ(harbor6_expand(archive.get(), place.path.c_str(), &once), HARBOR6_OK);
    EXPECT_EQ(support::tree(place.path), "b ");
    harbor6_source failing = {nullptr, 100, [](void*, uint64_t, void*, size_t, size_t*) { return 1; }};
    harbor6_archive* none = nullptr;
    EXPECT_EQ(harbor6_open_source(formats.get(), &failing, &none), HARBOR6_ABORTED);
    harbor6_close(none);
}

TEST_F(CInterface, ExpandsSafelyAndReportsEachFile) {
    const auto bytes = cabinet().file("..", "1").file("..\\..\\b", "2").file("c", "3").bytes();
    const auto archive = open(bytes);
    const support::temporary_folder place;
    support::write_file(place / "c", "old");
    std::string reported;
    harbor6_expansion options = {};
    options.context = &reported;
    options.report = [](void* context, const char* path, harbor6_status status, const char* text) {
        *static_cast<std::string*>(context) += path + std::string(status ? ": " : " ") + text + "\n";
        return 0;
    };
    EXPECT_EQ(harbor6_expand(archive.get(), place.path.c_str(), &options), HARBOR6_INCOMPLETE);
    EXPECT_EQ(reported, "..: its name is reserved\nc: exists already\nb \n");
    EXPECT_STREQ(harbor6_error(archive.get()), "..: its name is reserved");
    options.existing = HARBOR6_REPLACE;
    harbor6_expand(archive.get(), place.path.c_str(), &options);
    EXPECT_EQ(support::read_file(place / "c"), "3");
}

TEST_F(CInterface, RefusesWhatItCanNotDo) {
    const auto archive = open(cabinet().file("a", "1").file("b", "2").bytes());
    auto* const a = archive.get();
    EXPECT_EQ(harbor6_text(a, 0, nullptr), nullptr);
    int64_t number = 0;
    EXPECT_EQ(harbor6_number(a, 0, nullptr, &number), 0);
    size_t entry = 0;
    EXPECT_EQ(harbor6_lookup(a, nullptr, &entry), HARBOR6_FAILED);
    EXPECT_STREQ(harbor6_error(a), "no path is given");
    EXPECT_EQ(harbor6_expand(a, "", nullptr), HARBOR6_FAILED);
    EXPECT_STREQ(harbor6_error(a), "no folder is given");

    // While a pass is open, or from a callback, the archive is not read once more.
    harbor6_pass *pass = nullptr, *second = nullptr;
    harbor6_stream* stream = nullptr;
    EXPECT_EQ(harbor6_pass_open(a, 3, &pass), HARBOR6_NO_ENTRY);
    ASSERT_EQ(harbor6_pass_open(a, 0, &pass), HARBOR6_OK);
    EXPECT_EQ(harbor6_pass_open(a, 0, &second), HARBOR6_FAILED);
    EXPECT_EQ(harbor6_open_entry(a, 0, 9, &stream), HARBOR6_FAILED);
    harbor6_pass_close(pass);
    harbor6_receiver receiver = {};
    receiver.context = a;
    receiver.bytes = [](void* context, size_t, const void*, size_t) {
        harbor6_stream* none = nullptr;
        return harbor6_open_entry(static_cast<harbor6_archive*>(context), 0, 9, &none) == HARBOR6_FAILED ? 0
                                                                                                         : 1;
    };
    EXPECT_EQ(harbor6_read(a, &receiver), HARBOR6_OK);
    EXPECT_EQ(read_entry(a, 1), "2");

    harbor6_source source = {};
    source.size = 100;
    source.read = [](void*, uint64_t, void*, size_t length, size_t* came) {
        *came = length + 1;
        return 0;
    };
    harbor6_archive* made = nullptr;
    EXPECT_EQ(harbor6_open_source(formats.get(), &source, &made), HARBOR6_FAILED);
    EXPECT_STREQ(harbor6_error(made), "the source states more bytes than were wanted");
    harbor6_close(made);
    const std::unique_ptr<harbor6_formats, closer> none(harbor6_formats_new());
    EXPECT_EQ(harbor6_open_path(none.get(), HARBOR_TEST_DATA "/mszip.cab", &made), HARBOR6_FAILED);
    EXPECT_STREQ(harbor6_error(made), "no formats are loaded");
    harbor6_close(made);
}

TEST_F(CInterface, ServesSeveralThreads) {
    const auto bytes = support::read_file(HARBOR_TEST_DATA "/mszip.cab");
    // The threads come first: what all archives share is made by the first use.
    std::array<decltype(read_all(open(bytes).get())), 4> found;
    std::vector<std::thread> threads;
    for (auto& each : found)
        threads.emplace_back([&] { each = read_all(open(bytes).get()); });
    for (auto& thread : threads)
        thread.join();
    const auto expected = read_all(open(bytes).get());
    for (const auto& each : found)
        EXPECT_TRUE(each == expected);
}

} // namespace
