#include "harbor6/posix/made_files.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

TEST(MadeFiles, KnowsEachFileInWhateverOrderTheyCome) {
    host::made_files made;
    std::map<host::made_files::object, std::string> expected;
    std::mt19937 random(1);
    for (unsigned i = 0; i < 3000; ++i) {
        const host::made_files::object file(random() % 2, random() % 900);
        if (random() % 4 == 0) {
            made.erase(file);
            expected.erase(file);
        } else {
            made.insert(file, std::to_string(i));
            expected[file] = std::to_string(i);
        }
        ASSERT_EQ(made.empty(), expected.empty());
        const host::made_files::object other(random() % 2, random() % 900);
        const auto found = expected.find(other);
        ASSERT_EQ(made.name_of(other), found == expected.end() ? std::nullopt : std::optional(found->second));
    }
}
