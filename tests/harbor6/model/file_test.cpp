#include "harbor6/model/file.h"

#include "harbor6/model/infinite_items.h"
#include "support/memory_host.h"
#include "support/refusal.h"

#include <gtest/gtest.h>

using pattern::AcquiredPtr, support::memory_host, support::name_of, support::refusal_of;

TEST(File, TakesForksThroughItsOwnTransformOrIntoItsArchive) {
    memory_host host;
    const auto source = host.source("s", "x");
    const auto target = host.source("t", "old");
    auto& fork = *source->getMainFork();
    target->commitFork(fork);
    EXPECT_EQ(target->node->bytes, "x");
    fork.id = 1; // the target doesn't have it
    target->commitForkTo(fork, *target);
    EXPECT_TRUE(fork.committed);
    fork.id = 0;
    target->containerFormat = &host.arc;
    target->adopt(static_cast<harbor6::Item*>(host.root().get()));
    EXPECT_EQ(target->node->bytes, "arc:root()");
    target->node->flags["symLink"] = true;
    target->adopt(source.get());
    EXPECT_EQ(target->node->bytes, "x");
    EXPECT_EQ(refusal_of([&] { target->commitFork(harbor6::Fork()); }),
              "un::implemented: gz::FileItem::commitFile: can't get input stream");
    EXPECT_EQ(refusal_of([&] { target->adoptFileContents(*source); }),
              "un::implemented: no default implementation for File::adoptFileContents");
}

TEST(File, FollowsSingleFileWrappersToTheInnermostArchive) {
    const std::string asked = "  classify file out.arc\n", opened = asked + "  open out 7\n",
                      inside = opened + "  classify file in.arc\n";
    const struct {
        const char* name;
        bool follow, single;
        std::string log, after; ///< after: what is done when something fails
        char failure;           ///< 'u' for an un::exception, 's' for another one
        std::string found;      ///< name of the archive, or what is raised
    } cases[] = {
        {"not followed", false, true, asked, "", 0, "out"},
        {"no wrapper", true, false, asked, "", 0, "out"},
        {"followed", true, true, inside + "  open in 7\n  classify file plain\n", "  close in\n", 0, "in"},
        {"fails to open", true, true, opened, "", 'u', "out"},
        {"fails inside", true, true, inside, "  close out\n", 'u', "out"},
        {"fails inside, unexpectedly", true, true, inside, "  close out\n", 's', "z"},
    };
    for (const auto& c : cases) {
        memory_host host;
        host.arc.is_file = c.single;
        (host.archives["1"] = std::make_shared<support::memory_node>())->file("in.arc", "arc:2");
        (host.archives["2"] = std::make_shared<support::memory_node>())->file("plain", "text");
        host.trap = [&](const std::string&) {
            if (c.failure && host.log == c.log)
                c.failure == 'u' ? throw un::exception("x", "y") : throw std::runtime_error("z");
        };
        const auto file = host.source("out.arc", "arc:1");
        std::string found;
        found += refusal_of([&] { found = name_of(*AcquiredPtr(file->acquireArchive(c.follow, 0, 0))); });
        EXPECT_EQ(found, c.found) << c.name;
        EXPECT_EQ(host.transcript(), c.log + c.after) << c.name;
        const auto around = host.archive(*file);
        EXPECT_EQ(host.item(file->node, around.get())->asFile()->isOutermost(), c.single);
    }
}

TEST(File, IsTestedByACopyIntoNothing) {
    memory_host host;
    const auto file = host.source("a", "text");
    file->testContents();
    EXPECT_EQ(host.transcript(), "");
    host.trap = support::fail_once_at<format::crc_exception>("read a", "x", "y");
    file->testContents();
    EXPECT_EQ(host.transcript(), "itemFailed 1001 a\n");

    const AcquiredPtr sink(new harbor6::InfiniteFile(host.shell, nullptr));
    sink->adopt(file.get());
    sink->cloneAttributes(*file, false);
    EXPECT_EQ(sink->string("name"), "");
    sink->cloneAttributes(*file, true);
    EXPECT_EQ(sink->string("name"), "a");
    EXPECT_EQ(refusal_of([&] { sink->copyTo(*file); }), "un::implemented: harbor6::File::getMainFork");
}

TEST(SimpleFork, HasTheAttributesOfItsFile) {
    memory_host host;
    const auto file = host.source("a", "text");
    file->node->flags["locked"] = true;
    file->node->times["modTime"].words[0] = 1;
    harbor6::SimpleFork fork(file.get());
    fs::Spec spec;
    EXPECT_TRUE(fork.available("name") && fork.modifiable("name") && !fork.modifiable("x"));
    for (const auto* const key : {"locked", "name", "modTime", "uncompressedSize"})
        EXPECT_TRUE(fork.has(key)) << key;
    EXPECT_TRUE(fork.boolean("locked") && fork.time("modTime").words[0] == 1);
    EXPECT_TRUE(fork.integer("uncompressedSize") == 4 && fork.getStructure("fsSpec", spec));
    const AcquiredPtr sink(new harbor6::InfiniteFile(host.shell, nullptr));
    harbor6::SimpleFork taking(sink.get());
    EXPECT_TRUE(taking.setBoolean("x", true) && taking.setString("x", "") && taking.setTime("x", {}));
    EXPECT_TRUE(taking.setInteger("x", 1) && taking.setStructure("x", spec));
    taking.cloneAttributes(fork, true);
    EXPECT_EQ(taking.string("name"), "a");
}
