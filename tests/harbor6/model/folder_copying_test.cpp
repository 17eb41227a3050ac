#include "harbor6/model/folder.h"

#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using harbor6::Archive, harbor6::Item, pattern::AcquiredPtr, support::memory_host, support::name_of;

namespace {

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

/// A host whose source a.arc holds `files`, and whose client asks for its expansion.
struct expanding_host : memory_host {
    explicit expanding_host(const std::vector<std::string>& files) {
        auto& content = archives["x"] = std::make_shared<support::memory_node>();
        for (const auto& file : files)
            content->file(file, "<" + file + ">");
        client.expanded = {"a.arc"};
    }

    AcquiredPtr<Item> run() { return AcquiredPtr<Item>(root()->acquireAddedItem(*archive_file, false)); }
    /// The text of what run() raises, "" for nothing.
    std::string raised() {
        const auto text = support::refusal_of([&] { run(); });
        return text.substr(text.rfind(' ') + 1);
    }
    /// The first attempt, in place, ends early.
    void refuse_in_place() {
        trap = [second = trap, first = true](const std::string& what) mutable {
            if (second)
                second(what);
            if (what == "classify" && std::exchange(first, false))
                throw un::implemented("not in place");
        };
    }

    const AcquiredPtr<support::memory_file> archive_file = source("a.arc", "arc:x");
};

const struct {
    const char* name;
    std::function<void()> raise;
    char in_place;   ///< after a failure of the first attempt: c copies, s tries the copy, t throws
    char in_content; ///< the same in the content pass
} kinds[] = {
    {"implemented", [] { throw un::implemented("x"); }, 's', 's'},
    {"mode", [] { throw Archive::ModeError("x"); }, 's', 's'},
    {"fs", [] { throw fs::Exception("x", "y"); }, 't', 't'},
    {"un", [] { throw un::exception("x", "y"); }, 'c', 'c'},
    {"format", [] { throw format::exception("x", "y"); }, 'c', 'c'},
    {"basic", [] { throw basic::exception("x"); }, 't', 'c'}, // adapted to a format::exception
    {"std", [] { throw std::runtime_error("x"); }, 't', 't'},
};

/// Steps of the first attempt; the content pass takes the last two.
const std::string steps[] = {"classify", "sourceArchive a", "open archive", "begin", "write one"};

/// Raises at the step, be it the host's or the client's, when it is taken for the `nth` time.
void fail_at(memory_host& host, const std::string& step, int nth, const std::function<void()>& raise) {
    auto taken = [=, left = nth](const std::string& what) mutable {
        if (what == step && --left == 0)
            raise();
    };
    host.client.on[step] = [taken](auto& asked) mutable { taken(asked.text); };
    host.trap = taken;
}

} // namespace

TEST(FolderCopying, AsksInOrderAndLeavesNothingOfWhatIsDeclined) {
    const std::string file = "sourceFile a.txt -> root", made_file = file + "\ntargetFile a.txt -> root",
                      folder = "sourceFolder d -> root",
                      made_folder = folder + "\ntargetFolder d -> root from d", inner = "\nsourceFile b -> d",
                      no = ": no\n";
    const struct {
        const char *name, *item;
        std::string declined, transcript, tree;
        bool returned;
    } cases[] = {
        {"a file", "a.txt", "", made_file + "\ntargetFileReady a.txt\n", "a.txt=hello\n", true},
        {"a file that is not wanted", "a.txt", "sourceFile a.txt", file + no, "", false},
        {"a file without a target", "a.txt", "targetFile a.txt", made_file + no, "", false},
        {"a folder", "d", "", made_folder + inner + "\ntargetFile b -> d\ntargetFileReady b\n", "d/\nd/b=x\n",
         true},
        {"a folder that is not wanted", "d", "sourceFolder d", folder + no, "", false},
        {"a folder without a target", "d", "targetFolder d", made_folder + no, "", false},
        {"a folder without its file", "d", "sourceFile b", made_folder + inner + no, "d/\n", true},
    };
    for (const auto& c : cases) {
        memory_host host;
        host.sources->file("a.txt", "hello");
        host.sources->dir("d").file("b", "x");
        host.client.declined = {c.declined};
        const AcquiredPtr<Item> source(host.folder(*host.sources)->acquireItemFromName(c.item));
        const AcquiredPtr<Item> result(host.root()->acquireAddedItem(*source, false));
        EXPECT_EQ(host.transcript(), c.transcript) << c.name;
        EXPECT_EQ(host.tree(), c.tree) << c.name;
        EXPECT_EQ(static_cast<bool>(result), c.returned) << c.name;
    }
}

TEST(FolderCopying, DataFailuresStayVisibleAndOthersEraseTheTarget) {
    const struct {
        const char* name;
        std::function<void()> raise;
        const char* told; ///< empty: the failure passes through
        bool keep, stays;
    } cases[] = {
        {"crc", [] { throw format::crc_exception("x", "y"); }, "itemFailed 1001 a.txt\n", false, true},
        {"digest", [] { throw basic::digest_exception("x"); }, "itemFailed 1001 a.txt\n", false, true},
        {"decoder", [] { throw basic::algorithm_exception("x"); }, "itemFailed 1002 a.txt\n", false, true},
        {"format", [] { throw format::exception("x", "y"); }, "", false, false},
        {"memory", [] { throw std::bad_alloc(); }, "", false, false},
        {"format, kept", [] { throw format::exception("x", "y"); }, "", true, true},
    };
    for (const auto& c : cases) {
        memory_host host;
        const auto around = host.archive(*host.source("h.arc", "arc:h"));
        around->keepFailedTargets = c.keep;
        const auto entry = host.item(host.source("a.txt", "hello")->node, around.get());
        fail_at(host, "write a.txt", 1, c.raise);
        SCOPED_TRACE(c.name);
        EXPECT_EQ(support::refusal_of([&] { host.root()->addItem(*entry, false); }).empty(), *c.told != 0);
        const std::string asked =
            "sourceFile a.txt -> root\ntargetFile a.txt -> root\ntargetFileReady a.txt\n";
        EXPECT_EQ(host.transcript(), asked + c.told);
        EXPECT_EQ(host.tree(), c.stays ? "a.txt=\n" : "");
        if (*c.told) {
            const auto& node = *host.tree_root->children.front();
            EXPECT_EQ(std::pair(node.commits, node.flags.at("hidden")), std::pair(2u, false));
        }
    }
}

TEST(FolderCopying, WalksTellTheArchiveHowTheyEnded) {
    const std::tuple<std::string, std::vector<std::string>, std::string> cases[] = {
        {"", {"one"}, "begin end "},    {"", {}, ""},
        {"begin", {"one"}, "begin "},   {"write two", {"one", "two"}, "begin abort "},
        {"end", {"one"}, "begin end "},
    };
    for (const auto& [step, files, expected] : cases) {
        expanding_host host(files);
        const auto archive = host.archive(*host.archive_file);
        std::string told;
        host.trap = [&, step = step](const std::string& what) {
            if (what == "begin" || what == "end" || what == "abort")
                told += what + " ";
            if (what == "abort") // dropped
                throw std::runtime_error("abort");
            if (what == step)
                throw un::exception("the first", "");
        };
        EXPECT_EQ(support::refusal_of([&] { host.root()->addContent(*archive); }),
                  step.empty() ? "" : ": the first");
        EXPECT_EQ(told, expected) << step << ' ' << files.size();
    }
}

TEST(FolderCopying, TellsAnArchiveThatAFolderStoresWhatComes) {
    const std::vector<std::string> told = {"  receives anything\n", "  receives f\n",
                                           "  receives anything\n"};
    for (unsigned items = 0; items <= 3; ++items) { // in a nameless list, but 3 in a folder
        memory_host host;
        const AcquiredPtr archive(
            new support::test_archive(host, host.arc, *host.root(), Archive::mode_create, host.tree_root));
        const AcquiredPtr list(new harbor6::StdVectorContainer);
        for (unsigned i = 0; i < items; ++i)
            list->containerAdd(*host.source(i ? "g" : "f", "1"));
        const auto folder = host.folder(*host.sources);
        const AcquiredPtr added(items == 3 ? archive->acquireAddedContent(*folder)
                                           : archive->acquireAddedContent(*list));
        const auto transcript = host.transcript();
        EXPECT_TRUE(transcript.starts_with(items == 3 ? "  receives sources\n" : told[items])) << transcript;
        std::int64_t count = -1;
        EXPECT_TRUE(added->getNumItems(count, false) && count == items) << items;
    }
}

TEST(FolderCopying, CopiesContentIntoAFolderOfTheSameName) {
    memory_host host;
    auto& d = host.sources->dir("d");
    d.file("b", "x");
    host.folder(d)->copyContentTo(*host.root());
    EXPECT_EQ(host.tree(), "d/\nd/b=x\n");
    EXPECT_EQ(host.transcript(), "targetFolder d -> root from d\nsourceFile b -> d\n"
                                 "targetFile b -> d\ntargetFileReady b\n");
    host.client.declined = {"targetFolder d", "conflict d"};
    for (const auto* line : {"conflict d -> root folders: no\n", "targetFolder d -> root from d: no\n"}) {
        host.folder(d)->copyContentTo(*host.root());
        EXPECT_EQ(host.transcript(), line);
        host.tree_root->children.clear();
    }
}

TEST(FolderCopying, ExpandsWhatItIsAskedForAndNothingElse) {
    const std::string copied = "targetFile a.arc -> root\ntargetFileReady a.arc\n";
    const std::string asked = "sourceFile a.arc -> root\n";
    const std::string found = asked + "  classify file a.arc\n";
    const std::string opened = "sourceArchive a -> root\n  open a 1\n";
    const struct {
        const char* name;
        std::function<void(expanding_host&)> set;
        std::string transcript;
        bool expanded;
    } cases[] = {
        {"wanted", [](auto&) {},
         found + opened +
             "sourceFolder a -> root\ntargetFolder a -> root from a\n  begin\n"
             "sourceFile one -> a\ntargetFile one -> a\ntargetFileReady one\n"
             "sourceFile two -> a\ntargetFile two -> a\ntargetFileReady two\n"
             "  end\n  close a\nsourceArchiveDone a\n",
         true},
        {"not asked for", [](auto& host) { host.client.expanded.clear(); }, asked + copied, false},
        {"no archive", [](auto& host) { host.archive_file->node->bytes = "plain"; }, found + copied, false},
        {"declined", [](auto& host) { host.client.declined = {"sourceArchive a"}; },
         found + "sourceArchive a -> root: no\nsourceArchiveDone a\n" + copied, false},
        {"declined when open",
         [](auto& host) {
             host.client.declined = {"sourceArchive a"};
             host.client.on["sourceArchive a"] = [](auto& question) { question.archive->open(7); };
         },
         found + "sourceArchive a -> root: no\n  open a 7\nsourceArchiveDone a\n  close a\n" + copied, false},
        {"content declined", [](auto& host) { host.client.declined = {"sourceFolder a"}; },
         found + opened + "sourceFolder a -> root: no\n  close a\nsourceArchiveDone a\n" + copied +
             "  classify stream a.arc\n" + opened +
             "sourceFolder a -> root: no\n  close a\nsourceArchiveDone a\n",
         false},
    };
    for (const auto& c : cases) {
        expanding_host host({"one", "two"});
        SCOPED_TRACE(c.name);
        c.set(host);
        const auto result = host.run();
        EXPECT_EQ(host.transcript(), c.transcript);
        EXPECT_EQ(host.tree(), c.expanded ? "a/\na/one=<one>\na/two=<two>\n"
                                          : "a.arc=" + host.archive_file->node->bytes + "\n");
        EXPECT_EQ(result->expanded, c.expanded);
        EXPECT_EQ(name_of(*result), c.expanded ? "a" : "a.arc");
    }
    expanding_host host({"one"});
    host.client.on["sourceArchive a"] = [](auto& question) { question.archive->open(4); };
    host.run();
    EXPECT_EQ(count(host.transcript(), "  open"), 1u); // not opened again by the folder
    EXPECT_EQ(host.tree(), "one=<one>\n");
}

TEST(FolderCopying, NeverExpandsOutOfAnArchiveThatIsSearched) {
    expanding_host host({"one"});
    const auto holder = host.source("h.arc", "arc:h");
    for (const Archive::Mode mode : {1u, 4u}) {
        const auto around = host.archive(*holder, mode);
        host.root()->addItem(*host.item(host.archive_file->node, around.get()), false);
        // From within an archive that is no single-file wrapper the stream question is asked.
        EXPECT_EQ(count(host.transcript(), "classify stream a.arc"), mode == 1 ? 1u : 0u);
        host.tree_root->children.clear();
    }
}

TEST(FolderCopying, EveryFailureOfEitherAttemptGoesItsWay) {
    for (const bool second : {false, true}) {
        for (const auto& step : steps) {
            const bool in_content = &step >= &steps[3];
            for (const auto& kind : kinds) {
                SCOPED_TRACE(step + ": " + kind.name);
                expanding_host host({"one", "two"});
                fail_at(host, step, second && step == "classify" ? 2 : 1, kind.raise);
                if (second)
                    host.refuse_in_place();
                const char way = second ? 't' : in_content ? kind.in_content : kind.in_place;
                EXPECT_EQ(host.raised(), way == 't' ? "x" : "");
                const auto transcript = host.transcript();
                const std::string made = in_content ? "a/\n" : "";
                EXPECT_EQ(host.tree(), way == 's'             ? "a/\na/one=<one>\na/two=<two>\n"
                                       : way == 'c' || second ? "a.arc=arc:x\n" + made
                                                              : made);
                const std::size_t done = (in_content ? 1 : 0) + (way == 's' ? 1 : 0);
                EXPECT_EQ(count(transcript, "sourceArchiveDone a\n"), done);
                EXPECT_EQ(count(transcript, "  close a\n"), done);
                EXPECT_EQ(count(transcript, "targetFile a.arc"), way != 't' || second ? 1u : 0u);
                EXPECT_EQ(count(transcript, "  end\n") + count(transcript, "  abort\n"),
                          count(transcript, "  begin\n") - (step == "begin" ? 1 : 0));
                EXPECT_EQ(std::count(host.erased.begin(), host.erased.end(), "a.arc"), way == 's' ? 1 : 0);
            }
        }
    }
    expanding_host host({"one"});
    host.client.declined = {"targetFile a.arc"}; // no copy to expand
    host.refuse_in_place();
    EXPECT_EQ(support::refusal_of([&] { host.run(); }), "un: attempt to derefernce 0");
}

TEST(FolderCopying, ASingleItemTakesThePlaceOfItsWrapper) {
    const struct {
        std::vector<std::string> files;
        std::string fails, tree, result;
    } cases[] = {
        {{"a"}, "", "a=<a>\n", "a"},
        {{"one"}, "", "one=<one>\n", "one"},
        {{}, "", "a/\n", "a"},
        {{"one", "two"}, "", "a/\na/one=<one>\na/two=<two>\n", "a"},
        {{"one"}, "name .__&&temp_folder&&__", "a/\na/one=<one>\n", "a"},
        {{"one"}, "new file in root", "a/\na/one=<one>\n", "a"},
        {{"one"}, "erase one", "a/\na/one=<one>\none=<one>\n", "a"},
        {{"one"}, "erase .__&&temp_folder&&__", "a/\none=<one>\n", "one"},
        {{"one"}, "sourceFile one", "a/\na/one=<one>\n", "a"}, // wanted, but not from the wrapper
    };
    for (const bool second_attempt : {false, true}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(c.tree + " after " + c.fails + (second_attempt ? ", second attempt" : ""));
            expanding_host host(c.files);
            host.trap = [&](const std::string& what) {
                // The copy of the archive is a new file too.
                if (what == c.fails && (!second_attempt || host.tree().find("one=") != std::string::npos))
                    throw std::runtime_error("dropped");
            };
            host.client.on["sourceFile one"] = [&](auto& question) {
                if (host.tree().find("one=") != std::string::npos)
                    host.client.declined = {question.text == c.fails ? c.fails : ""};
            };
            if (second_attempt)
                host.refuse_in_place();
            const auto result = host.run();
            EXPECT_EQ(host.tree(), c.tree);
            EXPECT_EQ(name_of(*result), c.result);
            EXPECT_TRUE(result->expanded);
            const auto told = host.client.log.find("promotionFailed a\n") != std::string::npos;
            EXPECT_EQ(told, !c.fails.empty() && !c.fails.starts_with("sourceFile"));
        }
    }
}

TEST(FolderCopying, ChangesTheFormatInPlaceOrThroughAScratchFileOutsideAllArchives) {
    const std::string new_file = "  new file in root\n", asked = "sourceFile a -> root\n" + new_file,
                      open_a = "  open a 8\n  receives a\nsourceFile a -> a\n",
                      close_a = "targetFile a -> a\ntargetFileReady a\n  close a\n",
                      scratch = asked + open_a + close_a + "conflict a.arc -> root\n" + new_file;
    const struct {
        const char* name;
        bool changed, in_place, inside; ///< inside: into an archive in another one
        const char* declined;
        std::string transcript, tree;
    } cases[] = {
        {"its own format", false, true, false, "", asked + "targetFile a -> root\ntargetFileReady a\n",
         "a=1\n"},
        {"in place", true, true, false, "",
         asked + "  open new 8\ntargetFile a -> root\ntargetFileReady a\n  close new\n",
         "new.arc=arc:a(1)\n"},
        {"scratch file", true, false, false, "",
         scratch + "targetFile a.arc -> root as b\ntargetFileReady a.arc\n", "b=arc:a(1)\n"},
        {"scratch file, declined", true, false, false, "targetFile a.arc",
         scratch + "targetFile a.arc -> root as b: no\n", ""},
        {"inside archives", true, false, true, "",
         "  open i 8\n  receives a\nsourceFile a -> i\n  new file in sources\n" + open_a + close_a +
             "targetFile a.arc -> i\ntargetFileReady a.arc\n  close i\n",
         "i.arc=arc:a.arc(arc:a(1))\n"},
    };
    for (const auto& c : cases) {
        memory_host host;
        SCOPED_TRACE(c.name);
        support::test_format other(host);
        host.arc.provides_empty_file = host.plain.provides_empty_file = c.in_place;
        host.client.declined = {c.declined};
        host.client.on["sourceFile a"] = [&](auto& q) {
            *q.format = c.changed ? static_cast<harbor6::Format*>(&other) : &host.plain;
        };
        host.client.on["conflict a.arc"] = [](auto& q) { *q.name = "b"; };
        host.trap = [&](auto& what) { host.log += what.starts_with("new") ? "  " + what + "\n" : ""; };
        const auto source = host.source("a", "1");
        if (c.inside) {
            host.client.expanded = {"a"}; // has no effect here
            const auto outer = host.archive(*host.source("h.arc", "arc:h"));
            const auto i = host.item(host.tree_root->file("i.arc", "").shared_from_this(), outer.get());
            i->asFile()->containerFormat = &host.arc;
            i->asFile()->adopt(source.get());
        } else {
            const AcquiredPtr<Item> made(host.root()->acquireAddedItem(*source, false));
            EXPECT_EQ(made ? name_of(*made) : "", c.tree.substr(0, c.tree.find('=')));
        }
        EXPECT_EQ(host.transcript(), c.transcript);
        EXPECT_EQ(host.tree(), c.tree);
    }
}

TEST(FolderCopying, AdaptsFailuresOfTheLowerLayersAtItsTwoEntries) {
    memory_host host;
    const auto source = host.source("a", "x");
    host.trap = [](const std::string& what) {
        if (what == "write a")
            throw nio::exception("pipe");
    };
    EXPECT_THROW(host.root()->addItem(*source, false), format::exception);
    EXPECT_THROW(host.root()->addContent(*host.folder(*host.sources)), format::exception);
    EXPECT_THROW(host.root()->acquireCopiedItem(*source, false), nio::exception);
}
