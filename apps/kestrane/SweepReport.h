#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "kestrane.h"

/// What is known before the first step of a sweep.
struct SweepPlan {
    std::string file;
    int group1 = 0;
    int group2 = 0;
    double from = 0;
    double to = 0;
    double step = 0;
    std::int64_t stepCount = 0;  ///< of times that are checked; `from` and `to` are among them
    bool distances = false;
    std::optional<double> refine;  ///< width to which the ends of contact are narrowed down
};

/// The groups at one time.
struct SweepStep {
    double time = 0;
    std::vector<KstCollisionResult> contacts;   ///< all pairs in contact
    std::optional<KstCollisionResult> nearest;  ///< in a sweep of distances, if there is any pair
};

/// A time over which two objects were seen in contact, at each step and refined end within it.
struct PairSpan {
    int id1 = 0;
    int id2 = 0;
    double first = 0;
    double last = 0;
};

/// A stretch of time in which there is contact. Both ends are times that were checked and collide.
struct ContactStretch {
    double begin = 0;
    double end = 0;
    std::optional<double> freeBefore;  ///< checked and free; none if the sweep starts in contact
    std::optional<double> freeAfter;   ///< none if the sweep ends in contact
    std::vector<KstCollisionResult> firstContacts;
    std::vector<PairSpan> spans;  ///< in the order of `first`
};

struct SweepSummary {
    std::int64_t stretches = 0;
    std::int64_t stepsInContact = 0;
    /// The step at which the groups are nearest, in a sweep of distances.
    std::optional<KstCollisionResult> nearest;
    double nearestTime = 0;
};

/// Writes what a sweep finds, as it finds it; keeps no step.
class SweepReport {
  public:
    virtual ~SweepReport() = default;

    virtual void Start(const SweepPlan& plan) = 0;
    virtual void Step(const SweepStep& step) = 0;
    /// The ends of contact, where they were refined; between the two steps around them.
    virtual void RefinedEnd(const SweepStep& step, bool isBegin) = 0;
    virtual void Stretch(const ContactStretch& stretch) = 0;
    virtual void Finish(const SweepSummary& summary) = 0;
};

enum class SweepFormat { kText, kCsv, kJson };

std::unique_ptr<SweepReport> MakeSweepReport(SweepFormat format);
