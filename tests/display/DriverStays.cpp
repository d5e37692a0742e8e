#include <gtest/gtest.h>

#include "../driver/SanitizedDriver.h"
#include "Stage.h"

namespace {

class DriverStays : public testing::Environment {
    void SetUp() override {
        const Stage stage(1, 1);
        KeepLoadedDrivers();
    }
};

[[maybe_unused]] testing::Environment* const kDriverStays =
    testing::AddGlobalTestEnvironment(new DriverStays);

}  // namespace
