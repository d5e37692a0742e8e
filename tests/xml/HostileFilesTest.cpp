// Files made to read what is not theirs, to fill the memory or to take for ever.

#include <sys/stat.h>

#include "XmlFolder.h"

namespace {

TEST_F(XmlFolder, NoFileButTheDtdBesideTheDocumentIsOpened) {
    CopyDtd();
    std::filesystem::create_directory(Path("sub"));
    std::filesystem::copy_file(KESTRANE_DTD, Path("sub/kestrane.dtd"));
    std::filesystem::create_symlink(Path("kestrane.dtd"), Path("link.dtd"));
    ASSERT_EQ(0, mkfifo(Path("pipe.dtd").c_str(), 0600));
    EXPECT_EQ("", Error("<!DOCTYPE scene SYSTEM 'kestrane.dtd'><scene/>"));
    EXPECT_EQ("", Error("<!DOCTYPE scene PUBLIC '-//x//y' 'kestrane.dtd'><scene/>"));
    for (const std::string& id :
         {std::string("./kestrane.dtd"), std::string("sub/kestrane.dtd"),
          "../" + m_folder.filename().string() + "/kestrane.dtd", Path("kestrane.dtd"),
          "file://" + Path("kestrane.dtd"), "file:" + Path("kestrane.dtd"),
          std::string("http://127.0.0.1:9/kestrane.dtd"),
          std::string("ftp://127.0.0.1/kestrane.dtd"), std::string("kestrane%2Edtd"),
          std::string("link.dtd"), std::string("pipe.dtd"), std::string("sub"), std::string("."),
          std::string(".."), std::string(), std::string("none.dtd"), std::string("C:kestrane.dtd"),
          std::string("sub\\kestrane.dtd")}) {
        const std::string reason = Reason("<!DOCTYPE scene SYSTEM '" + id + "'><scene/>");
        EXPECT_EQ(0u, reason.find("DTD \"" + id + "\": ")) << id << ": " << reason;
    }
}

TEST_F(XmlFolder, ExternalEntitiesAreRefusedWhereTheyAreDeclared) {
    CopyDtd();
    Write("secret.txt", "secret");
    Write("more.dtd", "<!ELEMENT a ANY>");
    for (const std::string& declaration :
         {std::string("<!ENTITY e SYSTEM 'secret.txt'>"),
          std::string("<!ENTITY e SYSTEM 'file:///etc/passwd'>"),
          std::string("<!ENTITY e PUBLIC 'x' 'http://127.0.0.1:9/'>"),
          std::string("<!ENTITY % e SYSTEM 'more.dtd'> %e;"),
          std::string("<!NOTATION n SYSTEM 'n'><!ENTITY e SYSTEM 'secret.txt' NDATA n>")}) {
        const std::string inside =
            "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a x CDATA #IMPLIED>" + declaration + "]>";
        EXPECT_EQ("Entity 'e' is external.", Reason(inside + "<a/>"));
        EXPECT_EQ("Entity 'e' is external.", Reason(inside + "<a>&e;</a>"));
        EXPECT_EQ("Entity 'e' is external.", Reason(inside + "<a x='&e;'/>"));
        Write("a.dtd", "<!ELEMENT a ANY>\n" + declaration);
        EXPECT_EQ("a.dtd: Entity 'e' is external.", Reason("<!DOCTYPE a SYSTEM 'a.dtd'><a/>"));
    }
}

TEST_F(XmlFolder, EntityBombs) {
    std::string laughs = "<!ENTITY l0 'ha! ha! ha!'>";
    std::string parameters = "<!ENTITY % l0 '<!-- ha! ha! ha! -->'>";
    std::string inner = "l0;";
    for (int i = 1; i < 30; ++i) {
        std::string name("l");
        name += std::to_string(i);
        laughs += "<!ENTITY " + name + " '" + Repeat("&" + inner, 10) + "'>";
        parameters += "<!ENTITY % " + name + " '" + Repeat("&#37;" + inner, 10) + "'>";
        inner = name + ";";
    }
    EXPECT_NE("", Error("<!DOCTYPE a [" + laughs + "]><a>&l29;</a>"));
    EXPECT_NE("", Error("<!DOCTYPE a [" + laughs + "]><a x='&l29;'/>"));
    EXPECT_NE(
        "", Error("<!DOCTYPE a [<!ELEMENT a ANY>" + laughs + "<!ATTLIST a x CDATA '&l29;'>]><a/>"));
    EXPECT_NE("", Error("<!DOCTYPE a [" + parameters + "%l29;]><a/>"));
    Write("a.dtd", parameters + "<!ELEMENT a ANY>%l29;");
    EXPECT_NE("", Error("<!DOCTYPE a SYSTEM 'a.dtd'><a/>"));
    EXPECT_NE("", Error("<!DOCTYPE a [<!ENTITY l '&m;'><!ENTITY m '&l;'>]><a x='&l;'/>"));
    // One large entity, many times.
    EXPECT_NE("", Error("<!DOCTYPE a [<!ENTITY e '" + std::string(60'000, 'x') + "'>]><a>" +
                        Repeat("<a x='" + Repeat("&e;", 100) + "'/>", 2000) + "</a>"));
}

TEST_F(XmlFolder, DefaultsThatMakeMuchOfLittle) {
    std::string declarations = "<!ELEMENT a ANY><!ATTLIST a";
    for (int i = 0; i < 60; ++i) {
        declarations += " a" + std::to_string(i) + " CDATA '" + std::string(900, 'x') + "'";
    }
    EXPECT_EQ(
        "The document takes too much memory for its size.",
        Reason("<!DOCTYPE a [" + declarations + ">]><a>" + Repeat("<a/>", 1'000'000) + "</a>"));
    for (int i = 60; i < 100; ++i) {
        declarations += " a" + std::to_string(i) + " CDATA ''";
    }
    EXPECT_EQ("Element 'a' has too many attributes declared.",
              Reason("<!DOCTYPE a [" + declarations + ">]><a/>"));
}

TEST_F(XmlFolder, DeepNesting) {
    EXPECT_EQ("", Error(Repeat("<a>", 256) + Repeat("</a>", 256)));
    EXPECT_EQ("Elements stand more than 256 deep inside each other.",
              Reason(Repeat("<a>", 257) + Repeat("</a>", 257)));
    EXPECT_EQ("Elements stand more than 256 deep inside each other.",
              Reason(Repeat("<a>", 1'000'000) + Repeat("</a>", 1'000'000)));
    EXPECT_NE("", Error(std::string(1'000'000, '<')));
    EXPECT_NE("", Error("<!DOCTYPE a [<!ELEMENT a " + std::string(60'000, '(') + "a" +
                        std::string(60'000, ')') + ">]><a/>"));
}

TEST_F(XmlFolder, GiantPieces) {
    const std::string giant(15'000'000, 'x');
    EXPECT_NE("", Error("<a x='" + std::string(100'000'000, 'x') + "'/>"));
    for (const std::string& text :
         {"<" + giant + "/>", "<a " + giant + "=''/>", "<!DOCTYPE a SYSTEM '" + giant + "'><a/>",
          "<!DOCTYPE a [" + giant + "]><a/>",
          "<!DOCTYPE a [<!-- " + Repeat("--><!-- ", 1'000'000) + " -->]><a/>",
          "<a><!-- " + giant + " --></a>", "<a><?p " + giant + " ?></a>",
          "<a><![CDATA[" + giant + "]]></a>"}) {
        EXPECT_NE("", Error(text)) << text.substr(0, 30);
    }
    Write("a.dtd", "<!ELEMENT a ANY>" + std::string(1'000'000, ' '));
    EXPECT_EQ("DTD \"a.dtd\": The file is too long.", Reason("<!DOCTYPE a SYSTEM 'a.dtd'><a/>"));
}

TEST_F(XmlFolder, ManyPieces) {
    std::string attributes;
    std::string namespaces;
    for (int i = 0; i < 1'000'000; ++i) {
        attributes += " a" + std::to_string(i) + "=''";
        namespaces += " xmlns:a" + std::to_string(i) + "='u:u'";
    }
    EXPECT_EQ("An element has too many attributes.", Reason("<a" + attributes + "/>"));
    EXPECT_EQ("There are too many namespaces.", Reason("<a" + namespaces + "/>"));
    EXPECT_NE("", Error("<!DOCTYPE a [<!ELEMENT a (" + Repeat("a?,", 10'000) + "a?)>]><a/>"));
    EXPECT_NE("", Error("<!DOCTYPE a [<!ELEMENT a (" + Repeat("a?,", 200) + "a?)>]><a/>"));
    EXPECT_NE("", Error("<!DOCTYPE a [<!ELEMENT a (" + Repeat("a|", 20'000) + "a)*>]><a/>"));
}

}  // namespace
