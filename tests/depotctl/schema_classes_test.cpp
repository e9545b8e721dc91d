#include "depotctl/schema_classes.h"

#include <gtest/gtest.h>

namespace depot::ctl {
namespace {

const SchemaTexts kSchema = {
    {"( 2.5.6.0 NAME 'top' ABSTRACT MUST objectClass )",
     "( 2.5.6.5 NAME ( 'organizationalUnit' 'ouClass' ) DESC 'a unit ( MAY be cn )' SUP top "
     "STRUCTURAL MUST ou MAY ( userPassword $ l ) )",
     "( 1.0 NAME 'told' DESC 'it MAY have ( nothing ) MUST sn' SUP 'top' MAY( l$cn ) )",
     "( 1.1 NAME 'folder' SUP top STRUCTURAL MUST ( commonName ) )",
     "( 1.2 NAME 'inner' SUP folder STRUCTURAL )", "( 1.3 NAME 'lost' SUP unseen STRUCTURAL )",
     "( 1.4 NAME 'all' SUP extensibleObject )", "( 1.5 NAME 'extensibleObject' SUP top AUXILIARY )",
     "( 1.6 NAME 'ring' SUP ring )", "broken ( NAME 'cut' MUST ("},
    {"( 2.5.4.3 NAME ( 'cn' 'commonName' ) SUP name )", "( 2.5.4.11 NAME 'ou' SUP name )"}};

TEST(SchemaClassesTest, ClassLacksAttributesThatNeitherItNorWhatItIsMadeFromNames) {
    EXPECT_TRUE(LacksAttribute(kSchema, "organizationalUnit", "CN"));
    EXPECT_TRUE(LacksAttribute(kSchema, "OUCLASS", "commonName"));
    EXPECT_TRUE(LacksAttribute(kSchema, "ring", "cn"));
    EXPECT_FALSE(LacksAttribute(kSchema, "organizationalUnit", "ou"));
    EXPECT_FALSE(LacksAttribute(kSchema, "folder", "cn"));
    EXPECT_FALSE(LacksAttribute(kSchema, "told", "cn"));
    EXPECT_TRUE(LacksAttribute(kSchema, "told", "ou"));
    EXPECT_FALSE(LacksAttribute(kSchema, "inner", "CN"));
}

TEST(SchemaClassesTest, WhatIsNotSeenIsNotKnown) {
    for (const char* const name : {"none", "lost", "all", "extensibleObject", "broken"}) {
        EXPECT_FALSE(LacksAttribute(kSchema, name, "cn")) << name;
    }
    EXPECT_FALSE(LacksAttribute(kSchema, "organizationalUnit", "noSuchAttribute"));
}

}  // namespace
}  // namespace depot::ctl
