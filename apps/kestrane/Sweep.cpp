#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

#include "Camera.h"
#include "Commands.h"
#include "Failure.h"
#include "Numbers.h"
#include "Output.h"
#include "PairQuery.h"
#include "Scene.h"
#include "SweepFrames.h"
#include "SweepReport.h"

namespace {

/// More would run for days; a sweep that asks for more has a slip in one of its numbers.
constexpr std::int64_t kMaxSteps = 10'000'000;

/// The share of a step by which `to` may miss the grid of steps and still counts as lying on it.
constexpr double kGridSlack = 1e-6;

struct SweepOptions {
    std::string file;
    std::string group1;
    std::string group2;
    std::string from;
    std::string to;
    std::string step;
    std::string refine;
    bool distances = false;
    bool json = false;
    bool csv = false;
    std::optional<std::string> frames;
    Camera camera;
};

/// A line on the standard error stream, if that is a terminal, that says how far a sweep is.
class Progress {
  public:
    explicit Progress(const SweepPlan& plan) : m_plan(plan) {
#if defined(_WIN32)
        m_isTerminal = _isatty(_fileno(stderr)) != 0;
#else
        m_isTerminal = isatty(STDERR_FILENO) != 0;
#endif
    }
    ~Progress() {
        Clear();
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Show(std::int64_t step, double time) {
        const auto now = std::chrono::steady_clock::now();
        if (!m_isTerminal || now - m_shown < std::chrono::milliseconds(100))
            return;
        m_shown = now;
        m_isVisible = true;
        const std::int64_t percent = 100 * step / m_plan.stepCount;
        std::fprintf(stderr, "\r\033[K%3d %%, time %s", static_cast<int>(percent),
                     TimeText(time).c_str());
        std::fflush(stderr);
    }

    /// Makes room for a line of the report, which may go to the same terminal.
    void Clear() {
        if (m_isVisible)
            std::fputs("\r\033[K", stderr);
        m_isVisible = false;
    }

  private:
    const SweepPlan& m_plan;
    bool m_isTerminal = false;
    bool m_isVisible = false;
    std::chrono::steady_clock::time_point m_shown{};
};

/// Runs over the steps of a plan, follows the contact and hands to a report what there is.
class Sweep {
  public:
    /// `frames` may be null.
    Sweep(Scene& scene, const SweepPlan& plan, SweepReport& report, SweepFrames* frames)
        : m_scene(scene), m_plan(plan), m_report(report), m_frames(frames), m_progress(plan) {}

    SweepSummary Run() {
        for (std::int64_t i = 0; i < m_plan.stepCount; ++i) {
            const SweepStep step = At(StepTime(i));
            m_progress.Show(i, step.time);
            if (m_frames)
                m_frames->Write(i, step);
            Follow(step);
            m_lastTime = step.time;
        }
        if (m_stretch)
            EndStretch(std::nullopt);
        return m_summary;
    }

  private:
    /// From the number of the step, so that rounding does not add up; the last is `to` itself.
    double StepTime(std::int64_t i) const {
        if (i == m_plan.stepCount - 1)
            return m_plan.to;
        return m_plan.from + static_cast<double>(i) * m_plan.step;
    }

    SweepStep At(double time) {
        m_scene.SetTime(time);
        SweepStep step;
        step.time = time;
        if (!m_plan.distances) {
            step.contacts = m_scene.Contacts(m_plan.group1, m_plan.group2, true);
            return step;
        }
        auto pairs = m_scene.Distances(m_plan.group1, m_plan.group2);
        if (!pairs.empty())
            step.nearest = pairs.front();
        const auto apart = std::find_if(pairs.begin(), pairs.end(),
                                        [](const auto& pair) { return !(pair.value <= 0); });
        step.contacts.assign(pairs.begin(), apart);
        return step;
    }

    bool CollidesAt(double time) {
        m_scene.SetTime(time);
        return !m_scene.Contacts(m_plan.group1, m_plan.group2, false).empty();
    }

    void Follow(const SweepStep& step) {
        const bool contact = !step.contacts.empty();
        if (contact && !m_stretch)
            BeginStretch(step);
        else if (!contact && m_stretch)
            EndStretch(step.time);
        if (contact) {
            ++m_summary.stepsInContact;
            Extend(step);
        }
        if (step.nearest &&
            (!m_summary.nearest || step.nearest->value < m_summary.nearest->value)) {
            m_summary.nearest = step.nearest;
            m_summary.nearestTime = step.time;
        }
        m_report.Step(step);
    }

    void BeginStretch(const SweepStep& step) {
        m_stretch.emplace();
        m_stretch->freeBefore = m_lastTime;
        SweepStep first = step;
        if (m_plan.refine && m_lastTime) {
            auto [free, colliding] = Narrow(*m_lastTime, step.time);
            m_stretch->freeBefore = free;
            first = At(colliding);
            m_progress.Clear();
            m_report.RefinedEnd(first, true);
        }
        m_stretch->begin = first.time;
        m_stretch->firstContacts = first.contacts;
        Extend(first);
    }

    void EndStretch(std::optional<double> freeAfter) {
        m_stretch->freeAfter = freeAfter;
        if (m_plan.refine && freeAfter) {
            auto [free, colliding] = Narrow(*freeAfter, m_stretch->end);
            m_stretch->freeAfter = free;
            const SweepStep last = At(colliding);
            Extend(last);
            m_progress.Clear();
            m_report.RefinedEnd(last, false);
        }
        m_progress.Clear();
        m_report.Stretch(*m_stretch);
        m_stretch.reset();
        m_currentSpans.clear();
        ++m_summary.stretches;
    }

    /// A pair that was free at the previous step begins a new span.
    void Extend(const SweepStep& step) {
        std::vector<PairSpan>& spans = m_stretch->spans;
        std::map<std::pair<int, int>, std::size_t> current;
        for (const KstCollisionResult& contact : step.contacts) {
            const std::pair ids(contact.id1, contact.id2);
            const auto previous = m_currentSpans.find(ids);
            if (previous == m_currentSpans.end()) {
                current[ids] = spans.size();
                spans.push_back({contact.id1, contact.id2, step.time, step.time});
            } else {
                current.insert(*previous);
                spans[previous->second].last = step.time;
            }
        }
        m_currentSpans = std::move(current);
        m_stretch->end = step.time;
    }

    /// Bisects between a free and a colliding time, in either order, until they are no further
    /// apart than asked for, or as near as the library's times can be.
    std::pair<double, double> Narrow(double free, double colliding) {
        while (std::abs(colliding - free) > *m_plan.refine) {
            const double middle = 0.5 * (free + colliding);
            const auto asFloat = static_cast<float>(middle);
            if (asFloat == static_cast<float>(free) || asFloat == static_cast<float>(colliding))
                break;
            (CollidesAt(middle) ? colliding : free) = middle;
        }
        return {free, colliding};
    }

    Scene& m_scene;
    const SweepPlan& m_plan;
    SweepReport& m_report;
    SweepFrames* m_frames;
    Progress m_progress;
    std::optional<double> m_lastTime;
    std::optional<ContactStretch> m_stretch;
    /// Of the pairs in contact at the last step, by their ids the numbers in the stretch's list.
    std::map<std::pair<int, int>, std::size_t> m_currentSpans;
    SweepSummary m_summary;
};

/// Tests the numbers that were given, before a file is read.
SweepPlan MakePlan(const SweepOptions& options) {
    SweepPlan plan;
    plan.file = options.file;
    plan.distances = options.distances;
    plan.from = ParseTime(options.from, "--from");
    plan.to = ParseTime(options.to, "--to");
    plan.step = ParseNumber(options.step, "--step");
    if (plan.to < plan.from)
        throw Failure("--to: the end of the sweep lies before its start");
    if (plan.step <= 0)
        throw Failure("--step: the step must be above 0");
    if (!options.refine.empty()) {
        plan.refine = ParseNumber(options.refine, "--refine");
        if (*plan.refine <= 0)
            throw Failure("--refine: the width must be above 0");
    }
    const double steps = (plan.to - plan.from) / plan.step;
    if (steps > static_cast<double>(kMaxSteps))
        throw Failure("--step: more than " + std::to_string(kMaxSteps) +
                      " steps; take a larger step or a shorter time");
    if (plan.to > plan.from &&
        static_cast<float>(plan.to) == static_cast<float>(plan.to - plan.step))
        throw Failure("--step: times about " + TimeText(plan.to) + " have no steps as small as " +
                      TimeText(plan.step));
    // The steps on the grid, and `to`, which may be the last of them.
    plan.stepCount = 1;
    if (plan.to > plan.from)
        plan.stepCount += std::max(1LL, std::llround(std::ceil(steps - kGridSlack)));
    return plan;
}

ExitStatus RunSweep(SweepOptions& options) {
    SweepPlan plan = MakePlan(options);
    options.camera.Parse();
    const bool withFrames = options.frames.has_value();
    Scene scene(options.file, withFrames ? Showing::kInMemory : Showing::kNowhere);
    plan.group1 = scene.FindGroup(options.group1);
    plan.group2 = scene.FindGroup(options.group2);
    const auto format = options.csv    ? SweepFormat::kCsv
                        : options.json ? SweepFormat::kJson
                                       : SweepFormat::kText;
    const auto report = MakeSweepReport(format);
    // Groups that cannot be checked against each other are refused before anything is printed.
    scene.SetTime(plan.from);
    scene.Contacts(plan.group1, plan.group2, false);
    RequireChecked(plan.group1);
    RequireChecked(plan.group2);
    std::optional<SweepFrames> frames;
    if (withFrames)
        frames.emplace(*options.frames, options.camera);
    report->Start(plan);
    const SweepSummary summary = Sweep(scene, plan, *report, frames ? &*frames : nullptr).Run();
    report->Finish(summary);
    return summary.stretches > 0 ? kCollision : kFree;
}

}  // namespace

void AddSweepCommand(CLI::App& program, Action& action) {
    CLI::App& command = *program.add_subcommand(
        "sweep",
        "Check two groups at A, A + D, A + 2 D, ... and B, and report the stretches of time in\n"
        "which they collide, which objects touch first, and when each pair was seen in contact.");
    command.footer(
        "Contact that comes and goes between two steps stays unseen: let the step be shorter "
        "than\n"
        "what you need to find. The times of a pair are those at which it was seen: steps, and "
        "the\n"
        "refined ends of the stretch.\n"
        "\nExamples:\n"
        "  kestrane sweep robot_cell.xml robot cell --from 0 --to 20 --step 0.01 --refine\n"
        "  kestrane sweep robot_cell.xml robot cell --from 7 --to 9 --step 0.1 --distance --csv\n"
        "  kestrane sweep robot_cell.xml robot cell --from 0 --to 20 --step 0.05 --refine=1e-5 "
        "--json\n"
        "  kestrane sweep robot_cell.xml robot cell --from 7 --to 9 --step 0.1 --frames "
        "pictures\n" +
        std::string(kStatusHelp));
    auto options = std::make_shared<SweepOptions>();
    command.add_option("FILE", options->file, "Scene file (.xml, .wrl)")->required();
    command.add_option("GROUP1", options->group1, "Label or id of a group")->required();
    command.add_option("GROUP2", options->group2, "Label or id of another group")->required();
    command.add_option("--from", options->from, "Time of the first step")
        ->required()
        ->option_text("A");
    command.add_option("--to", options->to, "Time of the last step")->required()->option_text("B");
    command.add_option("--step", options->step, "Time between two steps")
        ->required()
        ->option_text("D");
    command.add_flag("--distance", options->distances,
                     "Report the distance and the nearest pair of objects at each step");
    command
        .add_flag("--refine{0.001}", options->refine,
                  "Narrow both ends of each stretch down by bisection, to 0.001 or to another\n"
                  "width")
        ->option_text("[=TOL]");
    CLI::Option* json = command.add_flag("--json", options->json, "Answer in JSON");
    command.add_flag("--csv", options->csv, "Answer in comma-separated values")->excludes(json);
    CLI::Option* const frames =
        command
            .add_option("--frames", options->frames,
                        "Write a picture of each step to DIR, objects in contact in red; needs no\n"
                        "screen")
            ->option_text("DIR");
    options->camera.AddTo(command, frames);
    command.callback([options, &action] { action = [options] { return RunSweep(*options); }; });
}
