#pragma once

namespace nodes {

/// Seconds since 1 January 1970, in steps of a millisecond.
double currentTime();

/// Where currentTime() comes from, so that a program can run on a time of its own.
using ClockSource = double (*)();
/// Null stands for the system's clock.
void setClockSource(ClockSource source);

/// The time of the latest evaluation of any time sensor; 0 before the first one.
double latestEvaluation();
void setLatestEvaluation(double time);

}  // namespace nodes
