#include <functional>

#include "WindowTest.h"

namespace {

char letters[128];  // the argument of a function stands for its letter
std::string ran;
char actor = 0;
std::function<void()> act;

void Run(void* argument) {
    const auto letter = static_cast<char>(static_cast<char*>(argument) - letters);
    ran += letter;
    if (letter == actor)
        act();
}

struct List {
    void (*add)(MAV_frameFn, void*);
    void (*remove)(MAV_frameFn, void*) noexcept;

    void Add(const std::string& names) const {
        for (const char name : names)
            add(Run, &letters[static_cast<int>(name)]);
    }
    void Remove(const std::string& names) const {
        for (const char name : names)
            remove(Run, &letters[static_cast<int>(name)]);
    }
};

constexpr List kLists[] = {{mav_frameFn0Add, mav_frameFn0Rmv},
                           {mav_frameFn1Add, mav_frameFn1Rmv},
                           {mav_frameFn2Add, mav_frameFn2Rmv}};
const std::string kMany(100, 'd');

struct FrameFunctionsTest : WindowTest {
    static std::string RanInFrame() {
        ran.clear();
        Frame();
        return ran;
    }
};

TEST_F(FrameFunctionsTest, RunListByListInTheOrderOfTheirAdding) {
    kLists[2].Add("d");
    kLists[1].Add("bab");
    kLists[0].Add("c");
    EXPECT_EQ("cbabd", RanInFrame());
    // The oldest of equal ones goes; what stands in another list, or in none, stays.
    kLists[1].Remove("bd");
    EXPECT_EQ("cabd", RanInFrame());
    // A list whose turn comes later has what was changed before.
    actor = 'c';
    act = [] { kLists[1].Remove("a"), kLists[2].Add("a"); };
    EXPECT_EQ("cbda", RanInFrame());
    kLists[0].Remove("c");
    kLists[1].Remove("b");
    kLists[2].Remove("da");
}

TEST_F(FrameFunctionsTest, MayChangeTheListThatRuns) {
    struct Case {
        char who;
        std::string removes, adds, first, second;  ///< the last two: what runs in two frames
    };
    for (const List& list : kLists) {
        for (const auto& [who, removes, adds, first, second] :
             {Case{'a', "a", "", "abc", "bc"}, Case{'c', "c", "", "abc", "ab"},
              Case{'a', "b", "", "ac", "ac"}, Case{'c', "a", "", "abc", "bc"},
              Case{'a', "abc", "", "a", ""}, Case{'b', "", "d", "abc", "abcd"},
              Case{'b', "b", "b", "abc", "acb"}, Case{'a', "b", "b", "ac", "ac"},
              Case{'a', "a", kMany, "abc", "bc" + kMany}}) {
            list.Add("abc");
            actor = who;
            act = [&] { list.Remove(removes), list.Add(adds); };
            EXPECT_EQ(first, RanInFrame()) << who << " without " << removes;
            EXPECT_EQ(second, RanInFrame()) << who << " without " << removes;
            list.Remove("abbcdd" + kMany);
        }
    }
}

}  // namespace
