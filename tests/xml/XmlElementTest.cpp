#include <gtest/gtest.h>

#include "scenefiles/xml/XmlDocument.h"

namespace {

TEST(XmlElement, AttributesKeepTheOrderOfTheirFirstValue) {
    XmlElement element("point");
    EXPECT_EQ(nullptr, element.GetAttribute("x"));
    element.SetAttribute("x", "1");
    element.SetAttribute("y", "");
    element.SetAttribute("x", "a much longer value than the first");
    element.SetAttribute("z", element.GetAttribute("x")->value);
    ASSERT_EQ(3u, element.GetAttributes().size());
    EXPECT_STREQ("x", element.GetAttributes()[0].name);
    EXPECT_STREQ("a much longer value than the first", element.GetAttribute("x")->value);
    EXPECT_STREQ("", element.GetAttribute("y")->value);
    EXPECT_STREQ("a much longer value than the first", element.GetAttributes()[2].value);
    EXPECT_EQ("point", element.GetName());
    EXPECT_EQ(nullptr, element.GetAttribute(""));
    EXPECT_EQ(nullptr, element.GetAttribute("xy"));
}

TEST(XmlElement, ChildrenKeepTheOrderOfAttaching) {
    XmlElement parent("scene");
    EXPECT_TRUE(parent.GetChildren("").empty());
    EXPECT_EQ(nullptr, parent.AddChild(nullptr));
    XmlElement* const box = new XmlElement("box", &parent);
    XmlElement* const first = parent.AddChild(std::make_unique<XmlElement>("group"));
    XmlElement* const second = new XmlElement("group", &parent);
    EXPECT_EQ((std::vector<XmlElement*>{box, first, second}), parent.GetChildren(""));
    EXPECT_EQ((std::vector<XmlElement*>{first, second}), parent.GetChildren("group"));
    EXPECT_TRUE(parent.GetChildren("grou").empty());
    EXPECT_EQ(first, parent.FirstChild("group"));
    EXPECT_EQ(second, first->NextSibling("group"));
    EXPECT_EQ(nullptr, second->NextSibling());
    EXPECT_EQ(nullptr, first->NextSibling("box"));
}

TEST(XmlElement, DestructionOfADeepTreeNeedsNoStack) {
    auto root = std::make_unique<XmlElement>("a");
    XmlElement* last = root.get();
    for (int depth = 0; depth < 1'000'000; ++depth) {
        XmlElement* const deeper = new XmlElement("a", last);
        new XmlElement("b", last);
        last = deeper;
    }
    root.reset();
}

TEST(XmlDocument, BuiltByHand) {
    XmlDocument document;
    EXPECT_EQ(nullptr, document.Root());
    EXPECT_EQ("", document.GetDocTypeSystemId());
    document.SetDocType("scene", "kestrane.dtd");
    EXPECT_EQ("kestrane.dtd", document.GetDocTypeSystemId());
    new XmlElement("group", document.CreateRoot("old"));
    const XmlElement* const root = document.CreateRoot("scene");
    EXPECT_EQ(root, document.Root());
    EXPECT_EQ("scene", document.Root()->GetName());
    EXPECT_TRUE(document.Root()->GetChildren("").empty());
    EXPECT_EQ("", document.GetError());
}

}  // namespace
