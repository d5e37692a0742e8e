#include "nodes/nodes/Clock.h"
#include "nodes/nodes/NodeClasses.h"

namespace nodes {

void AudioClipNode::initialise() {
    setIsActive(false);
    lastTime = -1.0;
}

void AudioClipNode::eventReceived() {
    const double time = lastTime < 0 ? currentTime() : lastTime;
    const double start = startTime();
    const double stop = stopTime();
    const bool plays = (loop() && stop <= start) || start < stop;
    if (!isActive() && time <= start && plays) {
        // Nothing plays here: the start alone is told, and the clip is ready for the next one.
        setIsActive(true);
        sendEvent(isActiveField());
        setIsActive(false);
    }
    lastTime = currentTime();
}

}  // namespace nodes
