#include "nodes/reader/Lexer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nodes/nodes/NodeType.h"

namespace nodes {
namespace {

/// Writes down what the text rules tell.
class Client final : public LexerClient {
  public:
    void setPendingDefName(std::string name) override { told.push_back("DEF " + name); }
    void addReference(std::string_view name) override {
        told.push_back("USE " + std::string(name));
    }
    void addRoute(const std::string& fromName, const std::string& fromField,
                  const std::string& toName, const std::string& toField) override {
        told.push_back("ROUTE " + fromName + " " + fromField + " " + toName + " " + toField);
    }
    void addProto(std::unique_ptr<ProtoDefinition> proto) override {
        protos.push_back(std::move(proto));
    }
    ProtoDefinition* findProto(std::string_view name) override {
        for (const auto& proto : protos) {
            if (proto->name() == name) {
                return proto.get();
            }
        }
        return nullptr;
    }

    std::vector<std::string> told;
    std::vector<std::unique_ptr<ProtoDefinition>> protos;
};

std::string describe(const Lexer& lexer, Token token) {
    switch (token.kind) {
        case TokenKind::kInt:
            return "int " + std::to_string(lexer.intValue());
        case TokenKind::kFloat: {
            char text[32];
            std::snprintf(text, sizeof text, "float %g", static_cast<double>(lexer.floatValue()));
            return text;
        }
        case TokenKind::kString:
            return "string " + std::string(lexer.text());
        case TokenKind::kName:
            return "name " + std::string(lexer.text());
        case TokenKind::kNode:
            return "node " + std::string(lexer.tokenText());
        case TokenKind::kField:
            return "field " + std::string(lexer.tokenText());
        case TokenKind::kType:
            return "type " + std::string(lexer.tokenText());
        default:
            return std::string(lexer.tokenText());
    }
}

struct LexerTest : testing::Test {
    using Texts = std::vector<std::string>;

    Texts scan(std::string text) {
        lexer.attachText(std::move(text), nullptr, nullptr);
        Texts tokens;
        for (Token token = lexer.nextToken(); !token.is(TokenKind::kEnd);
             token = lexer.nextToken()) {
            tokens.push_back(describe(lexer, token));
        }
        return tokens;
    }
    float number(const std::string& text) {
        lexer.attachText(text, nullptr, nullptr);
        lexer.nextToken();
        return lexer.floatValue();
    }

    Client client;
    Lexer lexer{client};
};

TEST_F(LexerTest, NumbersTakeTheLongestMatch) {
    EXPECT_EQ((Texts{"int 1", "float 1", "float 100", "int 31", "int -7"}),
              scan("1 1. 1e2 0x1F -7"));
    EXPECT_EQ((Texts{"int 0", "name X1F", "int 0", "name x", "int 0", "name x1F"}),
              scan("0X1F 0x -0x1F"));
    EXPECT_EQ((Texts{"float 0", "float 0", "float 0", "float 0", "name e5", "int 1", "name e"}),
              scan("- . -. -e5 e5 1e"));
    EXPECT_EQ((Texts{"float 1.5", "float 0.25", "int 1", "int -2", "float 0", "int -3"}),
              scan("1.5.25 1-2 --3"));
    EXPECT_EQ((Texts{"float 0.5", "float -1e-05", "float 1e+10", "int 1", "name e+"}),
              scan(".5 -1E-5 1.e+10 1e+"));
}

TEST_F(LexerTest, IntegersBeyondTheirRangeAreTheNearestButKeepTheirFloat) {
    EXPECT_EQ((Texts{"int 2147483647", "int -2147483648", "int 2147483647", "int -1", "int -1"}),
              scan("2147483648 -99999999999 99999999999999999999999999 0xFFFFFFFF 0x1FFFFFFFF"));
    EXPECT_EQ(3e9F, number("3000000000"));
    EXPECT_EQ(-1e26F, number("-100000000000000000000000000"));
    EXPECT_FALSE(std::signbit(number("-0")));
    EXPECT_TRUE(std::signbit(number("-0.0")));
}

TEST_F(LexerTest, NumbersAreRoundedAsTheWholeTextSays) {
    EXPECT_EQ(0.1F, number("0.1"));
    EXPECT_EQ(123456.789F, number("123456.789"));
    EXPECT_EQ(1.17549435e-38F, number("1.17549435e-38"));
    EXPECT_EQ(static_cast<float>(9007199254740993.0), number("9007199254740993.0"));
    EXPECT_EQ(0.1F, number("0.1000000000000000000000000000000000000000000001"));
    EXPECT_EQ(1e30F, number("1000000000000000000000000000000.0"));
    EXPECT_EQ(1.0F, number("0.000000000000000000000000000001e30"));
    const float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(infinity, number("1e39"));
    EXPECT_EQ(-infinity, number("-1e999999999999"));
    EXPECT_EQ(infinity, number("1" + std::string(400, '0') + "e-5"));
    EXPECT_EQ(0.0F, number("0." + std::string(400, '0') + "1e5"));
    EXPECT_EQ(0.0F, number("1e-999999999999"));
}

TEST_F(LexerTest, WordsAreKeywordsOnlyAsAWhole) {
    EXPECT_EQ((Texts{"node Anchor", "name Anchor1", "field point", "name points", "name _a-b+c"}),
              scan("Anchor Anchor1 point points _a-b+c"));
    EXPECT_EQ((Texts{"int 1", "int 0", "int 0", "int 1", "NULL"}), scan("TRUE FALSE ON OFF NULL"));
    EXPECT_EQ((Texts{"name Root", "name exposedField", "name IS", "name EXTERNPROTO", "field url",
                     "name directOutput", "name SFBool"}),
              scan("Root exposedField IS EXTERNPROTO url directOutput SFBool"));
}

TEST_F(LexerTest, AScriptHasWordsOfItsOwnUpToTheFirstClosingBrace) {
    EXPECT_EQ((Texts{"node Script", "{", "field field", "type SFBool", "name ON", "int 1",
                     "field eventIn", "type MFVec3f", "name point", "name SFImage", "USE",
                     "name Box", "}", "name field", "field point"}),
              scan("Script { field SFBool ON TRUE eventIn MFVec3f point SFImage USE Box } "
                   "field point"));
}

TEST_F(LexerTest, StringsRunOverLinesWhichTheyDoNotCount) {
    EXPECT_EQ((Texts{"string a\\", "string \n#{", "string "}), scan("\"a\\\" \"\n#{\" \"\""));
    EXPECT_EQ(1, lexer.line());
}

TEST_F(LexerTest, LinesAreCountedAndTheTextOfTheLastOneKept) {
    int progress = 0;
    lexer.attachText(
        "1 # one\r\n2 x\n\r\n  4 y # four",
        [](int line, void* last) { *static_cast<int*>(last) = line; }, &progress);
    lexer.nextToken();
    EXPECT_EQ("", lexer.currentLineText());
    lexer.nextToken();
    EXPECT_EQ(2, lexer.line());
    // A comment takes its line end with it, so that no line is looked at behind it.
    EXPECT_EQ("", lexer.currentLineText());
    lexer.nextToken();
    lexer.nextToken();
    EXPECT_EQ(4, lexer.line());
    EXPECT_EQ(4, progress);
    EXPECT_EQ("  4 y # four", lexer.currentLineText());
    lexer.nextToken();
    EXPECT_EQ("y", lexer.tokenText());
    EXPECT_TRUE(lexer.nextToken().is(TokenKind::kEnd));
    EXPECT_TRUE(lexer.nextToken().is(TokenKind::kEnd));
}

TEST_F(LexerTest, UnknownCharactersAreEchoedUpToALimit) {
    testing::internal::CaptureStdout();
    EXPECT_EQ((Texts{"int 1", "int 2", "int 3"}), scan("+1;*\r2\xC3\xA4 3\""));
    EXPECT_EQ("+;*\r\xC3\xA4\"", testing::internal::GetCapturedStdout());

    testing::internal::CaptureStdout();
    EXPECT_EQ((Texts{"int 1", "int 2"}), scan(std::string(100'000, '!') + "1!2" + '\0'));
    EXPECT_EQ(Lexer::kEchoLimit, testing::internal::GetCapturedStdout().size());
}

TEST_F(LexerTest, DefGivesBackTheTypeAndTheBrace) {
    EXPECT_EQ((Texts{"node Transform", "{", "}"}), scan("DEF x\nTransform\n {}"));
    EXPECT_EQ(1, lexer.line());
    // The brace that is glued to the type is doubled.
    EXPECT_EQ((Texts{"node Transform", "{", "{", "}"}), scan("DEF x Transform{}"));
    EXPECT_EQ((Texts{"node Box", "{"}), scan("DEF " + std::string(300, 'n') + " Box"));
    EXPECT_EQ((Texts{"{"}), scan("DEF"));
    EXPECT_EQ((Texts{"DEF x", "DEF x", "DEF " + std::string(255, 'n'), "DEF "}), client.told);
    EXPECT_EQ((Texts{"name " + std::string(255, 't'), "{"}),
              scan("DEF x " + std::string(300, 't') + "{"));
}

TEST_F(LexerTest, AStringGoesOnFromPushedBackTextIntoTheFile) {
    EXPECT_EQ((Texts{"string a { b"}), scan("DEF x \"a { b\""));
}

TEST_F(LexerTest, UseTakesANameOnTheSameLine) {
    EXPECT_EQ((Texts{"USE", "}", "USE", "name b", "USE", "float 0.5"}),
              scan("USE \t a-1} USE \n b USE .5"));
    EXPECT_EQ((Texts{"USE a-1", "USE "}), Texts(client.told.begin(), client.told.begin() + 2));
    EXPECT_EQ(2, lexer.line());
}

TEST_F(LexerTest, ARouteTakesItsWholeLine) {
    EXPECT_EQ((Texts{"int 5"}), scan("ROUTE a.b TO c.d Box\n5 ROUTE a b TO c d\nROUTE a.b to c.d\n"
                                     "ROUTE"));
    EXPECT_EQ((Texts{"ROUTE a b c d", "ROUTE a b c d"}), client.told);
    EXPECT_EQ(4, lexer.line());
    client.told.clear();
    scan("ROUTE " + std::string(5000, 'a') + ".b TO c.d");
    EXPECT_EQ((Texts{"ROUTE " + std::string(2047, 'a') + " b c d"}), client.told);
}

TEST_F(LexerTest, TheLineOfAnErrorOutlivesWhatIsPushedBackOverIt) {
    scan("\n1 DEF long_name_of_a_node Box { } foo\n");
    lexer.attachText("\n1 DEF long_name_of_a_node Box { } foo bar\nnext", nullptr, nullptr);
    while (lexer.tokenText() != "foo") {
        lexer.nextToken();
    }
    EXPECT_EQ("1 DEF long_name_of_a_node Box { } foo bar", lexer.currentLineText());
}

}  // namespace
}  // namespace nodes
