#include <functional>
#include <map>

#include "WindowTest.h"

namespace {

std::string ran;
std::map<char, std::function<void()>> what;

void RunNamed(void* argument) {
    const char name = *static_cast<char*>(argument);
    ran += name;
    if (what[name]) {
        what[name]();
    }
}

/// The argument of the function of that name; the same each time.
char* Named(char name) {
    static std::map<char, char> names;
    return &(names[name] = name);
}

struct List {
    void (*add)(MAV_frameFn, void*);
    void (*remove)(MAV_frameFn, void*) noexcept;

    void Add(const std::string& names) const {
        for (const char name : names)
            add(RunNamed, Named(name));
    }
    void Remove(const std::string& names) const {
        for (const char name : names)
            remove(RunNamed, Named(name));
    }
};

constexpr List kLists[] = {{mav_frameFn0Add, mav_frameFn0Rmv},
                           {mav_frameFn1Add, mav_frameFn1Rmv},
                           {mav_frameFn2Add, mav_frameFn2Rmv}};
const std::string kMany(100, 'd');

class FrameFunctionsTest : public WindowTest {
  protected:
    void TearDown() override {
        Clear();
        WindowTest::TearDown();
    }
    static void Clear() {
        what.clear();
        for (const List& list : kLists)
            list.Remove("aabbccdd" + kMany);
    }
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
    what['c'] = [] { kLists[1].Remove("a"); };
    what['b'] = [] { kLists[2].Add("a"); };
    EXPECT_EQ("cbda", RanInFrame());
}

TEST_F(FrameFunctionsTest, MayChangeTheListThatRuns) {
    struct Case {
        char who;
        std::string removes, adds;
        std::string first, second;  ///< what runs in two frames
    };
    for (const List& list : kLists) {
        for (const auto& [who, removes, adds, first, second] :
             {Case{'a', "a", "", "abc", "bc"}, Case{'c', "c", "", "abc", "ab"},
              Case{'a', "b", "", "ac", "ac"}, Case{'c', "a", "", "abc", "bc"},
              Case{'a', "abc", "", "a", ""}, Case{'b', "", "d", "abc", "abcd"},
              Case{'b', "b", "b", "abc", "acb"}, Case{'a', "b", "b", "ac", "ac"},
              Case{'a', "a", kMany, "abc", "bc" + kMany}}) {
            list.Add("abc");
            what[who] = [&] { list.Remove(removes), list.Add(adds); };
            const std::string frame = RanInFrame();
            EXPECT_EQ(first + ", " + second, frame + ", " + RanInFrame()) << who;
            Clear();
        }
    }
}

}  // namespace
