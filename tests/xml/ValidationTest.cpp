// The DTD of scenes, and validation against DTDs in general.

#include "XmlFolder.h"

namespace {

TEST_F(XmlFolder, SceneDtdTakesEveryElementInAnyOrder) {
    CopyDtd();
    const std::string v = "x='1' y='2' z='3'";
    const std::string common =
        "<texture ID='1' sID='0' xTile='1' yTile='1'/><scale " + v + "/><color red='1' green='0' " +
        "blue='0' alpha='1' sID='1'/><motion cyclic='true'><keyState time='0'><quat " + v +
        " w='1'/><pos " + v + "/></keyState><keyState time='1'/></motion><pos " + v + "/><or " + v +
        "/><quat " + v + " w='1'/><color red='1' green='0' blue='0'/><!-- c -->";
    const std::string p = "<point " + v + "/>";
    const std::string items =
        "<bgcolor red='0' green='0' blue='0'/>"
        "<cone label='c' radius='1' height='1'>" +
        common +
        "</cone>"
        "<polygon label='p'>" +
        p + common + p + p +
        "</polygon>"
        "<box label='b' width='1' height='1' depth='1'>" +
        common + common +
        "</box>"
        "<tetrahedron label='t'>" +
        p + common + p + p + common + p + common +
        "</tetrahedron>"
        "<triangles label='s'>" +
        common + "<triangle>" + p + p + p + "</triangle>" + common +
        "</triangles>"
        "<include fileName='x.wrl'/>"
        "<polygonGroup label='g'><polygon>" +
        p + "</polygon>" + common +
        "<polygon/></polygonGroup>"
        "<polyline label='l'>" +
        common + "<line>" + p +
        "</line><line/></polyline>"
        "<defineTexture fileName='a.ppm' ID='1'/><cylinder radius='1' height='1'/>"
        "<viewParams viewID='0'/><viewParams viewID='1'><up " +
        v + "/><view " + v + "/><eye " + v +
        "/><viewMotion cyclic='no'><viewKeyState time='0'><view " + v +
        "/></viewKeyState></viewMotion></viewParams>"
        "<polygon>" +
        p + p + "</polygon><sphere radius='none'/>";
    EXPECT_EQ("", Error(Scene(items + "<group label='' colCheck='TRUE'>" + items + "<group>" +
                              common + "</group>" + common + "</group>" + items)));
}

TEST_F(XmlFolder, SceneDtdRefusesWhatTheFormatHasNot) {
    CopyDtd();
    const std::string p = "<point x='1' y='2' z='3'/>";
    const std::string t = "<triangle>" + p + p + p + "</triangle>";
    EXPECT_EQ("", Error(Scene("<triangles>" + t + t + "</triangles>")));
    for (const std::string& content :
         {std::string("<pos x='1' y='2' z='3'/>"), std::string("text"), std::string("<unknown/>"),
          std::string("<group colour='1'/>"), std::string("<box width='1' height='1'/>"),
          std::string("<sphere/>"), std::string("<group><pos x='1' y='2'/></group>"),
          std::string("<sphere radius='1'><point x='1' y='2' z='3'/></sphere>"),
          std::string("<triangles/>"), std::string("<polyline/>"), std::string("<polygonGroup/>"),
          "<triangles><triangle>" + p + p + "</triangle></triangles>",
          "<triangles>" + t + "<triangle>" + p + p + p + p + "</triangle></triangles>",
          "<tetrahedron>" + p + p + p + "</tetrahedron>",
          "<tetrahedron>" + p + p + p + p + p + "</tetrahedron>", std::string("<scene/>"),
          std::string("<group><keyState time='0'/></group>"),
          std::string("<bgcolor red='0' green='0' blue='0'><!-- --> </bgcolor>"),
          std::string("<viewParams viewID='0'><pos x='1' y='2' z='3'/></viewParams>")}) {
        EXPECT_NE("", Error(Scene(content))) << content;
    }
    EXPECT_EQ("The root element is \"group\", the document type declaration names \"scene\".",
              Reason("<!DOCTYPE scene SYSTEM 'kestrane.dtd'><group/>"));
    EXPECT_EQ("Element sphere lacks attribute radius.", Reason(Scene("\n<sphere/>")));
    EXPECT_NE(std::string::npos, Error(Scene("\n\n<sphere\n/>")).find(" Line number: 6"));
}

TEST_F(XmlFolder, AttributeTypesAndDefaultsOfAnyDtd) {
    const auto check = [this](const std::string& declared, const std::string& attributes) {
        return Error(
            "<!DOCTYPE a [<!ELEMENT a (b*)><!ELEMENT b EMPTY>"
            "<!NOTATION n SYSTEM 'n'><!ATTLIST b " +
            declared + ">]><a>" + attributes + "</a>");
    };
    EXPECT_EQ("", check("k (one|two) 'one' f CDATA #FIXED 'x'", "<b k='two' f='x'/><b/>"));
    EXPECT_NE("", check("k (one|two) 'one'", "<b k='three'/>"));
    EXPECT_NE("", check("k (one|two) 'three'", "<b/>"));
    EXPECT_NE("", check("f CDATA #FIXED 'x'", "<b f='y'/>"));
    EXPECT_NE("", check("f CDATA #REQUIRED", "<b f='y'/><b/>"));
    EXPECT_EQ("", check("i ID #IMPLIED r IDREFS #IMPLIED", "<b r='p q'/><b i='p'/><b i='q'/>"));
    EXPECT_NE("", check("i ID #IMPLIED", "<b i='p'/><b i='p'/>"));
    EXPECT_NE("", check("i ID #IMPLIED r IDREFS #IMPLIED", "<b r='p q'/><b i='p'/>"));
    EXPECT_NE("", check("t NMTOKEN #IMPLIED", "<b t='a b'/>"));
    EXPECT_EQ("", check("t NMTOKENS #IMPLIED", "<b t='a b'/>"));
    EXPECT_NE("", check("t ENTITY #IMPLIED", "<b t='n'/>"));
    EXPECT_EQ("", check("xmlns:p CDATA #IMPLIED p:c CDATA #IMPLIED", "<b xmlns:p='u:p' p:c='1'/>"));
    EXPECT_NE("", check("c CDATA #IMPLIED", "<b xmlns:p='u:p' p:c='1'/>"));
}

TEST_F(XmlFolder, DeclarationsInTheDocumentJoinThoseOfTheFile) {
    Write("a.dtd", "<!ELEMENT a ANY><!ATTLIST a k CDATA 'file' m CDATA 'file'>");
    XmlDocument document;
    ASSERT_EQ(0, document.Load(Write("a.xml",
                                     "<!DOCTYPE a SYSTEM 'a.dtd' [<!ATTLIST a k CDATA 'here'"
                                     " l CDATA #IMPLIED>]><a l='1'/>")))
        << document.GetError();
    EXPECT_EQ("a.dtd", document.GetDocTypeSystemId());
    EXPECT_STREQ("here", document.Root()->GetAttribute("k")->value);
    EXPECT_STREQ("file", document.Root()->GetAttribute("m")->value);
    EXPECT_NE("", Error("<!DOCTYPE a SYSTEM 'a.dtd'><a l='1'/>"));
    EXPECT_NE("", Error("<!DOCTYPE a [<!ATTLIST a k CDATA #IMPLIED>]><a/>"));
    // Nothing to validate against.
    EXPECT_EQ("", Error("<!DOCTYPE a><a l='1'/>"));
}

}  // namespace
