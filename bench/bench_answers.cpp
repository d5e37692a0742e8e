/// Counts wrong answers: of this library and its peers, about the pairs of W1 to W3 and about pairs
/// in which libraries are known to go wrong. What is right says the oracle of the accuracy tests,
/// which has no method in common with any of them.
///
/// One line for each set, question and library: names, wrong answers, answers, with tabs between.
/// "fails" stands for a library that crashes, or that does not come back.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "HardPairs.h"
#include "Library.h"
#include "Pairs.h"
#include "tests/solid/accuracy/Convex.h"
#include "tests/solid/accuracy/Depth.h"
#include "tests/solid/accuracy/Distance.h"
#include "tests/solid/accuracy/Engine.h"

namespace {

using bench::Library;
using bench::Points;

/// Distances and depths may be off by this part of themselves ...
constexpr double kAllowed = 1e-3;
/// ... or by this part of the sizes of the two shapes, and yes or no is free where they are no
/// further than that from just touching. To this comes what it costs to write a point in floats.
constexpr double kAllowedOfSize = 1e-6;
constexpr double kFloat = 0x1p-23;

/// Seconds in which a set has to be answered.
constexpr unsigned kPatience = 5;

struct Truth {
    oracle::Distance distance;
    double depth = 0;
    /// What is free, in units of length.
    double slack = 0;

    bool Touching() const { return distance.inside >= 0; }
};

/// The engine tells where to search first for the least depth: a search may miss a narrow one.
solid::Vec3 GuessOf(const oracle::Pair& pair) {
    const oracle::Answers answers = Ask(pair.a, pair.b);
    const auto along = [&](std::size_t i) {
        return static_cast<double>(answers.depth2[i]) - static_cast<double>(answers.depth1[i]);
    };
    return {along(0), along(1), along(2)};
}

Truth TruthOf(const oracle::Pair& pair) {
    const std::vector<oracle::Convex> a = Pieces(pair.a), b = Pieces(pair.b);
    Truth truth;
    truth.distance = DistanceOf(a, b);
    truth.slack = kAllowedOfSize * (Radius(a) + Radius(b)) +
                  kFloat * (Length(a[0].centre) + Length(b[0].centre));
    if (truth.Touching()) {
        truth.depth = DepthOf(a[0], b[0], GuessOf(pair)).value;
    }
    return truth;
}

struct Case {
    int object1, object2;
    Truth truth;
};

bool ContactIsWrong(Library& library, const Case& c) {
    const bool answer = library.InContact(c.object1, c.object2);
    if (c.truth.Touching()) {
        return !answer && c.truth.depth > c.truth.slack;
    }
    return answer && c.truth.distance.lower > c.truth.slack;
}

bool DistanceIsWrong(Library& library, const Case& c) {
    Points points;
    const double answer = library.Distance(c.object1, c.object2, points);
    const double allowed = kAllowed * c.truth.distance.upper + c.truth.slack;
    return !(answer >= c.truth.distance.lower - allowed &&
             answer <= c.truth.distance.upper + allowed);
}

bool DepthIsWrong(Library& library, const Case& c) {
    Points points;
    const double answer = library.Depth(c.object1, c.object2, points);
    return !(std::abs(answer - c.truth.depth) <= kAllowed * c.truth.depth + c.truth.slack);
}

struct Question {
    const char* name;
    bench::Question bit;
    bool ofTouching;
    bool ofApart;
    bool (*isWrong)(Library& library, const Case& c);
};
constexpr Question kQuestions[] = {{"yes-no", bench::kContact, true, true, ContactIsWrong},
                                   {"distance", bench::kDistance, false, true, DistanceIsWrong},
                                   {"depth", bench::kDepth, true, false, DepthIsWrong}};

bool IsAsked(const Question& question, const Case& c) {
    return c.truth.Touching() ? question.ofTouching : question.ofApart;
}

int CountWrong(const std::vector<Case>& cases, const Question& question, Library& library) {
    int wrong = 0;
    for (const Case& c : cases) {
        if (!IsAsked(question, c)) {
            continue;
        }
        try {
            wrong += question.isWrong(library, c) ? 1 : 0;
        } catch (const std::exception&) {
            ++wrong;  // gives up with an exception
        }
    }
    return wrong;
}

/// In a process of its own, for a library may hang or crash; that counts as "fails".
void PrintWrong(const std::string& set, const std::vector<Case>& cases, const Question& question,
                const bench::LibraryKind& kind, Library& library) {
    const auto asked = std::count_if(cases.begin(), cases.end(),
                                     [&](const Case& c) { return IsAsked(question, c); });
    const auto print = [&](const std::string& wrong) {
        std::printf("%s\t%s\t%s\t%s\t%d\n", set.c_str(), question.name, kind.name.c_str(),
                    wrong.c_str(), static_cast<int>(asked));
        std::fflush(stdout);
    };
    const pid_t child = fork();
    if (child == 0) {
        alarm(kPatience);
        print(std::to_string(CountWrong(cases, question, library)));
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status)) {
        print("fails");
    }
}

/// Of each pair the first a sphere or a box and the second a box.
bool SpheresAndBoxesAlone(const std::vector<oracle::Pair>& pairs) {
    return std::all_of(pairs.begin(), pairs.end(), [](const oracle::Pair& pair) {
        return (pair.a.kind == oracle::Kind::kBox || pair.a.kind == oracle::Kind::kSphere) &&
               pair.b.kind == oracle::Kind::kBox;
    });
}

/// The questions from the first to before the last.
void CountOfSet(const std::string& set, const std::vector<oracle::Pair>& pairs,
                const Question* first, const Question* last) {
    std::vector<Case> cases;
    for (const oracle::Pair& pair : pairs) {
        const int object = 2 * static_cast<int>(cases.size());
        cases.push_back({object, object + 1, TruthOf(pair)});
    }
    for (const bench::LibraryKind& kind : bench::AllLibraries()) {
        if (kind.spheresAndBoxesAlone && !SpheresAndBoxesAlone(pairs)) {
            continue;
        }
        const auto library = kind.make();
        for (const oracle::Pair& pair : pairs) {
            library->AddObject(pair.a, library->AddGroup(bench::kNoGroup));
            library->AddObject(pair.b, library->AddGroup(bench::kNoGroup));
        }
        for (const Question* question = first; question != last; ++question) {
            if ((kind.questions & question->bit) != 0) {
                PrintWrong(set, cases, *question, kind, *library);
            }
        }
    }
}

}  // namespace

int main() {
    constexpr const char* kWorkloads[] = {"W1", "W2", "W3"};
    constexpr bench::Touching kPools[] = {bench::Touching::kEverySecond, bench::Touching::kNever,
                                          bench::Touching::kAlways};
    for (int i = 0; i < 3; ++i) {
        for (const bench::PairCase pairCase : bench::kPairCases) {
            CountOfSet(std::string(kWorkloads[i]).append("/").append(Name(pairCase)),
                       MakePool(pairCase, kPools[i]), kQuestions + i, kQuestions + i + 1);
        }
    }
    for (const bench::HardSet& set : bench::HardSets()) {
        CountOfSet(set.name, set.pairs, kQuestions, kQuestions + 3);
    }
    return 0;
}
