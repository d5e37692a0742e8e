#include "nodes/fields/Field.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "nodes/fields/Lists.h"
#include "nodes/fields/Matrix.h"
#include "nodes/fields/Numbers.h"
#include "nodes/nodes/Node.h"
#include "nodes/writer/TextStream.h"

namespace nodes {
namespace {

std::string textOf(const Field& field) {
    std::string out;
    return field.toText(out);
}

std::string streamed(const Field& field) {
    std::string out;
    StringStream stream(out);
    writeValue(stream, field);
    stream.finish();
    return out;
}

std::string general(float value) {
    char text[kGeneralLength];
    return {text, putGeneral(text, value)};
}

std::string printed(const char* format, double value) {
    char text[400];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

TEST(Fields, TypesHaveNamesAndNumbers) {
    EXPECT_EQ(kMFRotation, fieldTypeFromName("MFRotation"));
    EXPECT_EQ(kMFChar, fieldTypeFromName("MFChar"));
    for (const char* const unknown : {"None", "sfbool", "SFBool ", ""}) {
        EXPECT_EQ(kNoField, fieldTypeFromName(unknown)) << unknown;
    }
    EXPECT_EQ(kNoField, fieldTypeFromName(nullptr));
    EXPECT_STREQ("SFImage", SFImage().typeName());
    EXPECT_EQ(nullptr, SFMatrix().typeName());
    EXPECT_EQ(nullptr, fieldTypeName(kFieldTypeCount));
    EXPECT_EQ(nullptr, fieldTypeName(-1));
    std::string lists;
    for (std::int32_t type = -1; type <= kFieldTypeCount; ++type) {
        lists += isSingleValueType(type) ? "" : std::to_string(type) + " ";
    }
    EXPECT_EQ("17 19 20 21 24 25 26 27 29 ", lists);
}

TEST(Fields, StartWithTheDefaultsOfTheirClass) {
    EXPECT_EQ("TRUE", textOf(SFBool()));
    EXPECT_EQ("0", textOf(SFFloat()));
    EXPECT_EQ("-1.000000", textOf(SFTime()));
    EXPECT_EQ("1 1 1", textOf(SFColor()));
    EXPECT_EQ("0 0 1 0", textOf(SFRotation()));
    EXPECT_EQ("", textOf(SFNode()));
    EXPECT_STREQ("", SFFloat().name());
}

TEST(Fields, OwnTheirNames) {
    SFFloat field;
    std::string name = "height";
    field.setName(name.c_str());
    name = "other";
    field.setName(field.name());
    EXPECT_STREQ("height", field.name());
    field.setNameOfTable("table");
    EXPECT_STREQ("table", field.name());
    field.setName(nullptr);
    EXPECT_STREQ("", field.name());
}

TEST(Fields, KeepTheirValueWhereATextDoesNotConvert) {
    SFBool flag;
    for (const char* const text : {"maybe", "True", "", static_cast<const char*>(nullptr)}) {
        flag.fromText(text);
        EXPECT_TRUE(flag.value());
    }
    flag.fromText("false");
    EXPECT_FALSE(flag.value());
    SFVec3f vector(7, 8, 9);
    for (const char* const text : {"1 2", "1,2,3", "a 2 3", "1 - 3", ""}) {
        vector.fromText(text);
        EXPECT_EQ("7 8 9", textOf(vector)) << text;
    }
    vector.fromText("\t1e1 +.5\n-2.and more");
    EXPECT_EQ("10 0.5 -2", textOf(vector));
    SFRotation rotation;
    rotation.fromText("0 2 0 1.5 9");
    EXPECT_EQ("0 1 0 1.5", textOf(rotation));
    rotation.fromText("1 0 0");
    EXPECT_EQ("0 1 0 1.5", textOf(rotation));
    SFFloat number(3);
    number.fromText("none");
    EXPECT_EQ(0, number.value());
}

TEST(Fields, AreEqualOnlyToTheSameValueOfTheSameClass) {
    EXPECT_TRUE(SFVec3f(1, 1, 1).equals(SFVec3f(1, 1, 1)));
    EXPECT_FALSE(SFVec3f(1, 1, 1).equals(SFVec3f(1, 1, std::nextafter(1.0F, 2.0F))));
    EXPECT_FALSE(SFVec3f(1, 1, 1).equals(SFColor()));
    EXPECT_FALSE(SFRotation(0, 0, 1, 1).equals(SFRotation(0, 0, 1, 2)));
    EXPECT_TRUE(SFString("a").equals(SFString("a")));
    EXPECT_FALSE(SFMatrix().equals(SFMatrix()));
    EXPECT_FALSE(MFFloat().equals(MFFloat()));
    SFFloat renamed;
    renamed.setTypeByName("SFString");
    EXPECT_FALSE(SFString().equals(renamed));
    EXPECT_EQ("", streamed(renamed));
}

TEST(Fields, PrintIntoBuffersOfAnySize) {
    char buffer[4] = "xyz";
    EXPECT_STREQ("xyz", SFString("longer").print(buffer, 0));
    EXPECT_STREQ("lo", SFString("longer").print(buffer, 3));
    EXPECT_STREQ("", SFMatrix().print(buffer, 1));
    const std::string text(1000, 'x');
    EXPECT_EQ(text, textOf(SFString(text)));
    EXPECT_EQ(printed("%f", -1e300), textOf(SFTime(-1e300)));
    EXPECT_STREQ("0.500000", SFTime(0.5).asText());
    const std::unique_ptr<Node> node = makeNode(kGroup);
    node->setName("left_arm");
    EXPECT_EQ("left_arm", textOf(SFNode(node.get())));
}

TEST(Fields, HaveAStreamForm) {
    EXPECT_EQ("FALSE", streamed(SFBool(false)));
    EXPECT_EQ("1.23457e+06", streamed(SFFloat(1234567)));
    EXPECT_EQ("1.23457e+09", streamed(SFTime(1234567890.5)));
    EXPECT_EQ("-2147483648", streamed(SFInt32(std::numeric_limits<std::int32_t>::min())));
    EXPECT_EQ("0 1 0 0.1", streamed(SFRotation(0, 3, 0, 0.1F)));
    EXPECT_EQ("\"say \"hi\"\\\"", streamed(SFString("say \"hi\"\\")));
    EXPECT_EQ("", streamed(SFNode()) + streamed(MFFloat()) + streamed(SFMatrix()));
}

TEST(Rotations, AreKeptNormalised) {
    EXPECT_EQ("0 0 1 1.5", textOf(SFRotation(0, 0, 2, 1.5F)));
    EXPECT_EQ("0 0 0 1", textOf(SFRotation(0, 0, 0, 1)));
    EXPECT_EQ("0.707107 0.707107 0 1", textOf(SFRotation(3e38F, 3e38F, 0, 1)));
    EXPECT_EQ("1 0 0 1", textOf(SFRotation(1e-45F, 0, 0, 1)));
    const float axis[] = {0, -4, 0};
    SFRotation rotation;
    rotation.set(axis, 2);
    EXPECT_EQ("0 -1 0 2", textOf(rotation));
    for (int i = 1; i < 1000; ++i) {
        const SFRotation once(1, 0.37F * static_cast<float>(i), 3.1F, 1);
        EXPECT_EQ(once.value(), SFRotation(once.value()).value());
    }
}

TEST(Numbers, AreReadAsTheCLibraryReadsThem) {
    const std::string zeros(400, '0');
    const std::string texts[] = {
        "1.5",
        " \t\n\v\f\r-2",
        "+3",
        "+-3",
        "--3",
        "- 3",
        "1e",
        "1e+",
        "1e5x",
        ".",
        ".5",
        "5.",
        "-.e1",
        "0x1F",
        "-0X.8p1",
        "0x",
        "0xg",
        "0x-1",
        "0xinf",
        "0x.",
        "0x1p-2000",
        "0x1p2000",
        "inf",
        "-Infinity",
        "infin",
        "nan",
        "1e400",
        "-1e400",
        "1e-400",
        "-1e-400",
        "1" + zeros,
        "1" + zeros + "e-5",
        "1" + zeros + "e-400",
        "0." + zeros + "1",
        "0." + zeros + "1e5",
        "0." + zeros + "1e400",
        "1e99999999999999999999",
        "1e-99999999999999999999",
        "4.9e-324",
        "3.4028236e38",
        "1e-46",
        "16777217.0000001",
        "",
        "e5",
        "1,5",
        "0x" + zeros + "1" + zeros,
    };
    for (const std::string& text : texts) {
        char* end = nullptr;
        const double expected = std::strtod(text.c_str(), &end);
        const bool isNumber = end != text.c_str();
        std::string_view rest = text;
        double value = 0;
        EXPECT_EQ(isNumber, takeNumber(rest, value)) << text;
        EXPECT_STREQ(end, std::string(rest).c_str()) << text;
        EXPECT_EQ(printed("%a", expected), printed("%a", value)) << text;
        float single = 0;
        rest = text;
        takeNumber(rest, single);
        EXPECT_EQ(printed("%a", static_cast<double>(std::strtof(text.c_str(), nullptr))),
                  printed("%a", static_cast<double>(single)))
            << text;
    }
    EXPECT_EQ(-12, toInt32(" -12.9"));
    EXPECT_EQ(7, toInt32("+7"));
    EXPECT_EQ(0, toInt32("+-7"));
    EXPECT_EQ(0, toInt32("x"));
    EXPECT_EQ(std::numeric_limits<std::int32_t>::max(), toInt32("2147483648"));
    EXPECT_EQ(std::numeric_limits<std::int32_t>::min(), toInt32("-99999999999999999999"));
}

// Every 997th float of both signs, and all that lie next to a number of few digits or to the middle
// between two numbers of six.
TEST(Numbers, FloatsArePrintedAsTheCLibraryPrintsThem) {
    const auto expectSame = [](float value) {
        char expected[kGeneralLength];
        char* const end = putGeneral(expected, static_cast<double>(value));
        ASSERT_EQ(std::string(expected, end), general(value));
    };
    for (std::uint64_t bits = 0; bits <= 0xFFFFFFFF; bits += 997) {
        expectSame(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }
    for (float scale = 1e-10F; scale < 1e7F; scale *= 10) {
        for (int number = 1; number < 20'000; ++number) {
            for (const double tail : {0.0, 0.5}) {
                const auto value = static_cast<float>((number + tail) * static_cast<double>(scale));
                expectSame(std::nextafter(value, 0.0F));
                expectSame(value);
                expectSame(std::nextafter(value, 1e30F));
            }
        }
    }
    for (const float value :
         {1e-4F, 999999.5F, 999999.4F, 100000.5F, 100001.5F, 99999.95F, -0.0F,
          std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::quiet_NaN()}) {
        EXPECT_EQ(printed("%g", static_cast<double>(value)), general(value));
    }
}

}  // namespace
}  // namespace nodes
