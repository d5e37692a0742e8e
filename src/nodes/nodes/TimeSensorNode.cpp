#include <algorithm>
#include <cmath>

#include "nodes/nodes/Clock.h"
#include "nodes/nodes/NodeClasses.h"

namespace nodes {
namespace {

/// Of the cycles that have passed since the last evaluation, those that are reported: their events
/// are all the same, and a sensor that nobody asked for years would send for years.
constexpr double kReportedCycles = 1000;

double g_now = 0;

bool startsNow(double start, double stop) {
    return start <= g_now && (stop <= start || g_now <= stop);
}

bool stopsNow(double start, double stop, double interval, bool loop) {
    if (loop) {
        return start < stop && stop < g_now;
    }
    double end = start + interval;
    if (stop > start && stop < end) {
        end = stop;
    }
    return end < g_now;
}

/// How far the cycle is; 1 rather than 0 exactly at the end of a cycle.
float fractionOfCycle(double start, double interval) {
    const double x = std::fmod(g_now - start, interval);
    if (!std::isfinite(x)) {
        return 0;
    }
    return x == 0 && start < g_now ? 1.0F : static_cast<float>(x / interval);
}

}  // namespace

double latestEvaluation() {
    return g_now;
}

void setLatestEvaluation(double time) {
    g_now = time;
}

void TimeSensorNode::initialise() {
    setCycleTime(-1.0);
    setIsActive(false);
}

void TimeSensorNode::eventReceived() {
    const double start = startTime();
    const double stop = stopTime();
    const double interval = cycleInterval();
    const bool repeats = loop();
    // A cycle without a length cannot run.
    const bool on = enabled() && interval > 0 && std::isfinite(interval);
    bool active = isActive();
    if (g_now == 0) {
        g_now = currentTime();
    }
    if (!on && active) {
        setIsActive(false);
        sendEvent(isActiveField());
        return;
    }
    if (!active && on && startsNow(start, stop)) {
        setIsActive(true);
        sendEvent(isActiveField());
        setCycleTime(g_now);
        sendEvent(cycleTimeField());
        active = true;
    }
    g_now = currentTime();
    if (active && on && stopsNow(start, stop, interval, repeats)) {
        setIsActive(false);
        sendEvent(isActiveField());
    }
    if (!on || !isActive()) {
        return;
    }
    setFraction(fractionOfCycle(start, interval));
    sendEvent(fractionField());
    const double passed = std::ceil((g_now - (cycleTime() + interval)) / interval);
    for (double i = 0, reported = std::min(passed, kReportedCycles); i < reported; ++i) {
        setCycleTime(g_now);
        sendEvent(cycleTimeField());
    }
    setTime(g_now);
    sendEvent(timeField());
}

}  // namespace nodes
