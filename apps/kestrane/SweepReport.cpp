#include "SweepReport.h"

#include <cstdio>

#include "Names.h"
#include "Numbers.h"
#include "Output.h"
#include "PairQuery.h"

namespace {

/// Lines for people: the stretches of contact, or the nearest pair at each step.
class TextReport : public SweepReport {
  public:
    void Start(const SweepPlan& plan) override {
        m_plan = plan;
        Write("sweep: " + CheckedGroupName(plan.group1) + " and " + CheckedGroupName(plan.group2) +
              ", time " + TimeText(plan.from) + " to " + TimeText(plan.to) + " in " +
              Count(static_cast<std::size_t>(plan.stepCount), "step") + "\n");
        Write(UncheckedNote(plan.group1) + UncheckedNote(plan.group2));
    }

    void Step(const SweepStep& step) override {
        if (m_plan.distances)
            Write(DistanceLine(step));
    }

    void RefinedEnd(const SweepStep&, bool) override {}

    void Stretch(const ContactStretch& stretch) override {
        std::string text = "collision from " + TimeText(stretch.begin) + " to " +
                           TimeText(stretch.end) + Bracket(stretch) + "\n";
        for (const KstCollisionResult& pair : stretch.firstContacts)
            text += "  first contact: " + PairName(pair) + "\n";
        for (const PairSpan& span : stretch.spans) {
            text.append("  seen from ").append(TimeText(span.first));
            text.append(" to ").append(TimeText(span.last));
            text.append(": ").append(ObjectName(span.id1));
            text.append(" and ").append(ObjectName(span.id2)).append("\n");
        }
        Write(text);
    }

    void Finish(const SweepSummary& summary) override {
        if (summary.nearest)
            Write("nearest at time " + TimeText(summary.nearestTime) + ": distance " +
                  ShortText(summary.nearest->value) + ", " + PairName(*summary.nearest) + "\n");
        if (summary.stretches == 0)
            Write("free at all steps\n");
        else
            Write(Count(static_cast<std::size_t>(summary.stretches), "stretch") +
                  (summary.stretches == 1 ? "" : "es") + " of contact\n");
    }

  private:
    static std::string DistanceLine(const SweepStep& step) {
        const std::string time = TimeText(step.time) + "  ";
        if (!step.nearest)
            return time + "nothing to measure\n";
        return time + ShortText(step.nearest->value) + "  " + PairName(*step.nearest) + "\n";
    }

    static std::string Bracket(const ContactStretch& stretch) {
        const std::string before =
            stretch.freeBefore ? "free at " + TimeText(*stretch.freeBefore) : "from the start on";
        const std::string after =
            stretch.freeAfter ? "free at " + TimeText(*stretch.freeAfter) : "up to the end";
        return " (" + before + ", " + after + ")";
    }

    SweepPlan m_plan;
};

/// A line for each pair in contact at each step, or for the nearest pair; an empty pair where there
/// is none.
class CsvReport : public SweepReport {
  public:
    void Start(const SweepPlan& plan) override {
        m_distances = plan.distances;
        // Whoever reads the table does not expect it there.
        const std::string note = UncheckedNote(plan.group1) + UncheckedNote(plan.group2);
        std::fputs(note.c_str(), stderr);
        Write(std::string("time,event,") + (m_distances ? "distance" : "collision") +
              ",object1,label1,object2,label2\n");
    }

    void Step(const SweepStep& step) override { Rows(step, ""); }

    void RefinedEnd(const SweepStep& step, bool isBegin) override {
        Rows(step, isBegin ? "begin" : "end");
    }

    void Stretch(const ContactStretch&) override {}
    void Finish(const SweepSummary&) override {}

  private:
    void Rows(const SweepStep& step, const std::string& event) const {
        const std::string start = TimeText(step.time) + "," + event + ",";
        if (m_distances) {
            if (step.nearest)
                Write(start + ExactText(step.nearest->value) + Pair(*step.nearest));
            else
                Write(start + ",,,,\n");
            return;
        }
        for (const KstCollisionResult& contact : step.contacts)
            Write(start + "1" + Pair(contact));
        if (step.contacts.empty())
            Write(start + "0,,,,\n");
    }

    static std::string Pair(const KstCollisionResult& pair) {
        return "," + std::to_string(pair.id1) + "," + CsvField(ObjectLabel(pair.id1)) + "," +
               std::to_string(pair.id2) + "," + CsvField(ObjectLabel(pair.id2)) + "\n";
    }

    bool m_distances = false;
};

Json OptionalTime(const std::optional<double>& time) {
    return time ? Json(TimeNumber(*time)) : Json();
}

/// One object, with an array of stretches or of steps that takes a line for each.
class JsonReport : public SweepReport {
  public:
    void Start(const SweepPlan& plan) override {
        m_distances = plan.distances;
        const Json head = {{"command", "sweep"},
                           {"file", plan.file},
                           {"group1", CheckedGroupJson(plan.group1)},
                           {"group2", CheckedGroupJson(plan.group2)},
                           {"from", TimeNumber(plan.from)},
                           {"to", TimeNumber(plan.to)},
                           {"step", TimeNumber(plan.step)},
                           {"stepCount", plan.stepCount},
                           {"refine", OptionalTime(plan.refine)}};
        std::string text = JsonText(head);
        text.pop_back();
        Write(text + (m_distances ? ", \"steps\": [" : ", \"stretches\": ["));
    }

    void Step(const SweepStep& step) override {
        if (m_distances)
            Element(StepJson(step, nullptr));
    }

    void RefinedEnd(const SweepStep& step, bool isBegin) override {
        if (m_distances)
            Element(StepJson(step, isBegin ? "begin" : "end"));
    }

    void Stretch(const ContactStretch& stretch) override {
        if (m_distances)
            return;
        Json json = {{"begin", TimeNumber(stretch.begin)},
                     {"end", TimeNumber(stretch.end)},
                     {"freeBefore", OptionalTime(stretch.freeBefore)},
                     {"freeAfter", OptionalTime(stretch.freeAfter)},
                     {"firstContacts", Json::array()},
                     {"pairs", Json::array()}};
        for (const KstCollisionResult& pair : stretch.firstContacts)
            json["firstContacts"].push_back(PairJson(pair, ""));
        for (const PairSpan& span : stretch.spans) {
            json["pairs"].push_back({{"first", TimeNumber(span.first)},
                                     {"last", TimeNumber(span.last)},
                                     {"object1", ObjectJson(span.id1)},
                                     {"object2", ObjectJson(span.id2)}});
        }
        Element(json);
    }

    void Finish(const SweepSummary& summary) override {
        Json tail = {{"collision", summary.stretches > 0},
                     {"stretchCount", summary.stretches},
                     {"stepsInContact", summary.stepsInContact}};
        if (summary.nearest) {
            tail["nearest"] = PairJson(*summary.nearest, "distance");
            tail["nearest"]["time"] = TimeNumber(summary.nearestTime);
        }
        Write("\n], " + JsonText(tail).substr(1) + "\n");
    }

  private:
    static Json StepJson(const SweepStep& step, const char* event) {
        Json json = {{"time", TimeNumber(step.time)}};
        if (event)
            json["event"] = event;
        if (step.nearest)
            json.update(PairJson(*step.nearest, "distance"));
        return json;
    }

    void Element(const Json& json) {
        Write((m_isFirst ? "\n" : ",\n") + JsonText(json));
        m_isFirst = false;
    }

    bool m_distances = false;
    bool m_isFirst = true;
};

}  // namespace

std::unique_ptr<SweepReport> MakeSweepReport(SweepFormat format) {
    switch (format) {
        case SweepFormat::kCsv:
            return std::make_unique<CsvReport>();
        case SweepFormat::kJson:
            return std::make_unique<JsonReport>();
        case SweepFormat::kText:
            break;
    }
    return std::make_unique<TextReport>();
}
