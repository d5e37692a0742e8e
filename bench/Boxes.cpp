#include "Boxes.h"

#include <cmath>

#include "Pairs.h"

namespace bench {

float RangeOf(int count) {
    return 0.5f * std::cbrt(10.0f * static_cast<float>(count));
}

oracle::Point RandomPoint(oracle::Random& random, float range) {
    oracle::Point p;
    for (float& coordinate : p) {
        coordinate = range * static_cast<float>(random.Uniform(-1, 1));
    }
    return p;
}

oracle::Spec RandomBox(oracle::Random& random, const oracle::Point& middle) {
    oracle::Point size;
    for (float& edge : size) {
        edge = static_cast<float>(random.Uniform(0.5, 1.5));
    }
    oracle::Spec box = oracle::Box(size[0], size[1], size[2]);
    box.matrix = RandomTurn(random);
    return MovedBy(box, middle[0], middle[1], middle[2]);
}

std::vector<oracle::Spec> RandomBoxes(oracle::Random& random, int count) {
    const float range = RangeOf(count);
    std::vector<oracle::Spec> boxes;
    for (int i = 0; i < count; ++i) {
        boxes.push_back(RandomBox(random, RandomPoint(random, range)));
    }
    return boxes;
}

}  // namespace bench
