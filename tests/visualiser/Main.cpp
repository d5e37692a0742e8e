#include <gtest/gtest.h>

#include "../frame/TemporaryFolder.h"

/// No test touches the settings of whoever runs it.
int main(int argc, char** argv) {
    const TemporaryFolder settings;
    settings.MakeConfigHome();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
