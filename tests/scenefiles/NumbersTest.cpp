#include "scenefiles/Numbers.h"

#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "TemporaryFolder.h"

namespace {

TEST(Numbers, FloatsAsStrtodReadsThem) {
    for (const char* text : {"0",
                             "-0",
                             "1",
                             "+1",
                             " \t\n\v\f\r2.5",
                             "-.5",
                             "+.5",
                             "5.",
                             ".",
                             "",
                             " ",
                             "+",
                             "-",
                             "+-1",
                             "--1",
                             "1e3",
                             "1e",
                             "1e+",
                             "1e3x",
                             "1,5",
                             "abc",
                             "0x1p4",
                             "-0X.8",
                             "0x",
                             "inf",
                             "-Infinity",
                             "nan",
                             "NAN(1)",
                             "1e39",
                             "-1e39",
                             "1e999",
                             "-1e999",
                             "1e-46",
                             "1e-999",
                             "3.4028236e38",
                             "0.1",
                             "16777217",
                             "1.00000005960464477539",
                             "0000000000000000000000000000000001.5",
                             "6.2831855",
                             "1_0",
                             "1 2"}) {
        const float expected = static_cast<float>(std::strtod(text, nullptr));
        const float got = ParseFloat(text);
        if (std::isnan(expected)) {
            EXPECT_TRUE(std::isnan(got)) << text;
        } else {
            EXPECT_EQ(expected, got) << text;
            EXPECT_EQ(std::signbit(expected), std::signbit(got)) << text;
        }
    }
}

TEST(Numbers, IntegersAsStrtolReadsThemButWithinAnInt) {
    EXPECT_EQ(7, ParseInteger("7"));
    EXPECT_EQ(-7, ParseInteger(" \t\n-7.9"));
    EXPECT_EQ(7, ParseInteger("+7e3"));
    EXPECT_EQ(0, ParseInteger("x7"));
    EXPECT_EQ(0, ParseInteger(""));
    EXPECT_EQ(0, ParseInteger("- 7"));
    EXPECT_EQ(0, ParseInteger("0x10"));
    EXPECT_EQ(8, ParseInteger("0008"));
    EXPECT_EQ(INT_MAX, ParseInteger("2147483647"));
    EXPECT_EQ(INT_MAX, ParseInteger("2147483648"));
    EXPECT_EQ(INT_MIN, ParseInteger("-2147483648"));
    EXPECT_EQ(INT_MIN, ParseInteger("-99999999999999999999999999999999999999"));
    EXPECT_EQ(INT_MAX, ParseInteger("99999999999999999999999999999999999999"));
}

TEST(Numbers, HostsLocaleHasNoSay) {
    // A machine need not have any locale with a decimal comma, so that one is made.
    const TemporaryFolder folder;
    const std::string source = folder.Write("comma.src",
                                            "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                            "grouping 3;3\nEND LC_NUMERIC\n");
    const std::string command = "localedef -c -i " + source + " -f ANSI_X3.4-1968 " +
                                (folder / "comma").string() + " >/dev/null 2>&1";
    const int made = std::system(command.c_str());
    setenv("LOCPATH", (folder / "").c_str(), 1);
    const char* const set = setlocale(LC_NUMERIC, "comma");
    EXPECT_EQ(0.5f, ParseFloat("0.5"));
    EXPECT_EQ(0.0f, ParseFloat("0,5"));
    EXPECT_EQ(1.0f, ParseFloat("1,5"));
    EXPECT_EQ(24.0f, ParseFloat("0x1.8p4"));
    EXPECT_EQ(std::numeric_limits<float>::infinity(), ParseFloat("1.5e999"));
    EXPECT_EQ(1, ParseInteger("1.000"));
    if (set != nullptr) {
        EXPECT_STREQ(",", localeconv()->decimal_point);
    }
    setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    (void)made;
}

TEST(Numbers, EveryFloatComesBackFromItsText) {
    std::mt19937 random(1);
    for (int i = 0; i < 100'000; ++i) {
        const unsigned bits = static_cast<unsigned>(random());
        float value;
        static_assert(sizeof(value) == sizeof(bits));
        std::memcpy(&value, &bits, sizeof(value));
        if (!std::isfinite(value)) {
            continue;
        }
        char text[40];
        std::snprintf(text, sizeof(text), "%.9g", static_cast<double>(value));
        ASSERT_EQ(value, ParseFloat(text)) << text;
    }
}

}  // namespace
