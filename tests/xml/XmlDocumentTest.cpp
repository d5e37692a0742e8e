// What a good file becomes, and how a bad one is reported.

#include <libxml/parser.h>
#include <sys/stat.h>

#include <thread>
#include <vector>

#include "XmlFolder.h"

namespace {

std::vector<std::string> Names(const XmlElement& element) {
    std::vector<std::string> names;
    for (const XmlElement* child : element.GetChildren("")) {
        names.emplace_back(child->GetName());
    }
    return names;
}

TEST_F(XmlFolder, TreeOfAFileWithoutDocType) {
    XmlDocument document;
    ASSERT_EQ(0, document.Load(Write("a.xml",
                                     "<?xml version='1.0'?>\n<!-- before --><?pi x='1'?>\n"
                                     "<a one='1' two='&lt;&#65;&gt;&amp;' three=''>\n"
                                     "  <b/> text <!-- c --> more&amp;more <![CDATA[d]]>\n"
                                     "  <?box width='1'?>\n  <b><c/></b>\n"
                                     "</a>\n<!-- behind --><?pi?>")));
    EXPECT_EQ("", document.GetDocTypeSystemId());
    ASSERT_NE(nullptr, document.Root());
    const XmlElement& root = *document.Root();
    EXPECT_EQ("a", root.GetName());
    ASSERT_EQ(3u, root.GetAttributes().size());
    EXPECT_STREQ("two", root.GetAttributes()[1].name);
    EXPECT_STREQ("<A>&", root.GetAttribute("two")->value);
    EXPECT_STREQ("", root.GetAttribute("three")->value);
    EXPECT_EQ((std::vector<std::string>{"b", "#text", "#comment", "#text", "#cdata-section", "b"}),
              Names(root));
    EXPECT_EQ(1u, root.GetChildren("#comment").size());
    EXPECT_EQ((std::vector<std::string>{"c"}), Names(*root.GetChildren("b")[1]));
}

TEST_F(XmlFolder, DefaultsOfTheDtdFollowTheAttributesOfTheFile) {
    CopyDtd();
    XmlDocument document;
    ASSERT_EQ(
        0, document.Load(Write("a.xml", Scene("<group label='g'><motion/></group>"
                                              "<group colCheck='true' label='&quot;h&quot;'/>"))))
        << document.GetError();
    EXPECT_EQ("kestrane.dtd", document.GetDocTypeSystemId());
    const auto groups = document.Root()->GetChildren("group");
    ASSERT_EQ(2u, groups.size());
    ASSERT_EQ(2u, groups[0]->GetAttributes().size());
    EXPECT_STREQ("colCheck", groups[0]->GetAttributes()[1].name);
    EXPECT_STREQ("false", groups[0]->GetAttributes()[1].value);
    EXPECT_STREQ("true", groups[1]->GetAttribute("colCheck")->value);
    EXPECT_STREQ("\"h\"", groups[1]->GetAttribute("label")->value);
    EXPECT_STREQ("false", groups[0]->FirstChild("motion")->GetAttribute("cyclic")->value);
}

TEST_F(XmlFolder, InternalEntitiesAreExpandedInValues) {
    XmlDocument document;
    ASSERT_EQ(0, document.Load(Write("a.xml",
                                     "<!DOCTYPE a [<!ENTITY half '0.5'><!ENTITY two '1&half;'>]>"
                                     "<a x='-&two;'/>")));
    EXPECT_STREQ("-10.5", document.Root()->GetAttribute("x")->value);
    // In content a reference could stand for elements, which nobody would find there.
    EXPECT_EQ("Entity 'b' stands in content; only attribute values may refer to entities.",
              Reason("<!DOCTYPE a [<!ENTITY b '<c/>'>]>\n<a>&b;</a>"));
}

TEST_F(XmlFolder, NamespacesAreOrdinaryAttributes) {
    XmlDocument document;
    ASSERT_EQ(0, document.Load(
                     Write("a.xml", "<p:a xmlns='urn:d' xmlns:p='urn:p' p:b='1'><q:c/></p:a>")));
    EXPECT_EQ("p:a", document.Root()->GetName());
    EXPECT_STREQ("urn:d", document.Root()->GetAttribute("xmlns")->value);
    EXPECT_STREQ("urn:p", document.Root()->GetAttribute("xmlns:p")->value);
    EXPECT_STREQ("1", document.Root()->GetAttribute("p:b")->value);
    EXPECT_EQ((std::vector<std::string>{"q:c"}), Names(*document.Root()));
}

TEST_F(XmlFolder, TextIsUtf8WhateverTheEncoding) {
    const std::string utf16("\xff\xfe<\0a\0 \0x\0=\0'\0\xe4\0'\0/\0>\0", 22);
    for (const std::string& text :
         {std::string("\xef\xbb\xbf<a x='\xc3\xa4'/>"), std::string("<a x='\xc3\xa4'/>"), utf16,
          std::string("<?xml version='1.0' encoding='ISO-8859-1'?><a x='\xe4'/>")}) {
        XmlDocument document;
        ASSERT_EQ(0, document.Load(Write("a.xml", text))) << document.GetError();
        EXPECT_STREQ("\xc3\xa4", document.Root()->GetAttribute("x")->value);
    }
}

TEST_F(XmlFolder, ErrorHasPathReasonAndLine) {
    EXPECT_EQ("Failed to load " + Path("test.xml") +
                  ": Opening and ending tag mismatch: b line 2 and a Line number: 3",
              Error("<a>\n<b>\n</a>"));
    EXPECT_EQ("Document is empty", Reason(""));
    EXPECT_NE("", Error("<a/><b/>"));
    EXPECT_NE("", Error("<a>\xff</a>"));
    EXPECT_NE("", Error("<a x='1' x='2'/>"));
    EXPECT_NE("", Error("<a x='&b;'/>"));
    EXPECT_NE("", Error(std::string("<a>\0</a>", 8)));
    EXPECT_NE("", Error(std::string("<a/>\0<!-- -->", 13)));
    EXPECT_NE("", Error("<?xml version='1.0' encoding='no-such-encoding'?><a/>"));
    EXPECT_NE("", Error("<?xml version='1.0' encoding='UTF-16'?><a>\xd8\x20</a>"));
    // Lines beyond the 16 bits that libxml2 has for them in a tree.
    const std::string error = Error("<a>" + std::string(100'000, '\n') + "<b></a>");
    EXPECT_NE(std::string::npos, error.find(" Line number: 100001")) << error;
}

TEST_F(XmlFolder, OnlyRegularFilesAreRead) {
    XmlDocument document;
    std::filesystem::create_directory(Path("folder.xml"));
    ASSERT_EQ(0, mkfifo(Path("pipe.xml").c_str(), 0600));
    for (const std::string& path :
         {Path("none.xml"), Path("folder.xml"), Path("pipe.xml"), std::string("/dev/zero"),
          std::string(), std::string(100'000, 'x')}) {
        EXPECT_EQ(2, document.Load(path));
        EXPECT_EQ(0u, document.GetError().find("Failed to load " + path + ": "));
        EXPECT_EQ(nullptr, document.Root());
    }
    // A file that grows as it is unpacked could fill the memory; none is unpacked.
    EXPECT_EQ("The file is compressed.", Reason("\x1f\x8b\x08 and so on"));
}

TEST_F(XmlFolder, EachTruncationOfAFileIsRefused) {
    CopyDtd();
    const std::string whole = Scene(
        "<!-- c --><group label='&#228;'>\n<box width='1' height='2' depth='3'>"
        "<pos x='1' y='2' z='3'/></box></group>");
    EXPECT_EQ("", Error(whole));
    const size_t last = whole.rfind('>');
    for (size_t size = 0; size <= last; ++size) {
        EXPECT_NE("", Error(whole.substr(0, size))) << size;
    }
}

TEST_F(XmlFolder, LoadAfterFailureAndOnManyThreads) {
    CopyDtd();
    const std::string good = Write("good.xml", Scene("<group/>"));
    const std::string bad = Write("bad.xml", Scene("<group>"));
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&good, &bad] {
            for (int round = 0; round < 50; ++round) {
                XmlDocument document;
                EXPECT_EQ(2, document.Load(bad));
                EXPECT_EQ(0, document.Load(good));
                ASSERT_NE(nullptr, document.Root());
                EXPECT_EQ(2, document.Load(bad));
                EXPECT_EQ(nullptr, document.Root());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

int g_hostErrors = 0;
int g_hostLoads = 0;

TEST_F(XmlFolder, HostsOwnUseOfTheParserLibraryIsNotDisturbed) {
    CopyDtd();
    const xmlExternalEntityLoader before = xmlGetExternalEntityLoader();
    xmlSetStructuredErrorFunc(&g_hostErrors, [](void*, xmlErrorPtr) { ++g_hostErrors; });
    xmlSetExternalEntityLoader([](const char*, const char*, xmlParserCtxtPtr) {
        ++g_hostLoads;
        return static_cast<xmlParserInputPtr>(nullptr);
    });
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_EQ("", Error(Scene("<group/>")));
    EXPECT_NE("", Error(Scene("<nonsense")));
    EXPECT_NE("", Error("<?xml version='1.0' encoding='UTF-16LE'?>\xff\xfe<\xd8\xd8\xd8"));
    EXPECT_NE("", Error("<?xml version='1.0' encoding='EUC-JP'?><a b='\xff\xff\xff'/>"));
    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    EXPECT_EQ(0, g_hostErrors);
    EXPECT_EQ(0, g_hostLoads);

    EXPECT_EQ(nullptr, xmlReadMemory("<a>", 3, "", nullptr, 0));
    EXPECT_GT(g_hostErrors, 0);
    xmlSetExternalEntityLoader(before);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
}

}  // namespace
