#include "nodes/nodes/Clock.h"

#include <chrono>

namespace nodes {
namespace {

ClockSource g_source = nullptr;

double systemTime() {
    using std::chrono::milliseconds;
    using std::chrono::seconds;
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    const auto whole = std::chrono::floor<seconds>(since);
    const auto rest = std::chrono::floor<milliseconds>(since - whole);
    return static_cast<double>(whole.count()) + static_cast<double>(rest.count()) * 0.001;
}

}  // namespace

double currentTime() {
    return g_source ? g_source() : systemTime();
}

void setClockSource(ClockSource source) {
    g_source = source;
}

}  // namespace nodes
