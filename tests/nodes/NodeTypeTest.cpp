#include "nodes/nodes/NodeType.h"

#include <gtest/gtest.h>

namespace nodes {
namespace {

TEST(NodeType, NamesGoOnBehindTheClasses) {
    EXPECT_STREQ("Anchor", nodeTypeName(kAnchor));
    EXPECT_STREQ("DEF", nodeTypeName(kDef));
    EXPECT_STREQ("WorldInfo", nodeTypeName(kWorldInfo));
    EXPECT_EQ(56, kNodeClassCount);
    EXPECT_STREQ("XML", nodeTypeName(kXmlElement));
    EXPECT_STREQ("Scene", nodeTypeName(kXmlScene));
    EXPECT_STREQ("ambientIntensity", nodeTypeName(94));
    EXPECT_STREQ("zSpacing", nodeTypeName(226));
    EXPECT_EQ(nullptr, nodeTypeName(227));
    EXPECT_EQ(nullptr, nodeTypeName(-1));
}

}  // namespace
}  // namespace nodes
