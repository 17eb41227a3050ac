#include "harbor6/shell/attributes.h"

#include <gtest/gtest.h>

TEST(ModelAttributes, HasAFilesNameAndItsTwoStructures) {
    harbor6::ModelAttributes model;
    model.name = "a";
    model.file_info.type.code = 7;
    model.extended_info.bytes[15] = 'x';
    io::mac::file_info info;
    io::mac::extended_file_info extended;
    EXPECT_TRUE(model.getStructure("fInfo", info) && info.type.code == 7);
    EXPECT_TRUE(model.getStructure("fXInfo", extended) && extended.bytes[15] == 'x');
    EXPECT_FALSE(model.getStructure("fInfo", extended) || model.getStructure("dInfo", info)) << "wrong class";
    EXPECT_TRUE(model.string("name") == "a" && model.hasString("name") && !model.hasString("fInfo"));
    EXPECT_TRUE(model.hasStructure("fInfo") && model.hasStructure("fXInfo") && !model.hasStructure("dInfo"));
    EXPECT_FALSE(model.modifiable("name") || model.modifiable("fInfo"));
}
