#include <gtest/gtest.h>

#include "../driver/SanitizedDriver.h"
#include "../frame/TemporaryFolder.h"
#include "kestrane.h"

/// No test touches the settings of whoever runs it.
int main(int argc, char** argv) {
    const TemporaryFolder settings;
    settings.MakeConfigHome();
    if (KST_Initialisation(true, false, false) == KST_OK) {
        KeepLoadedDrivers();
        KST_End();
    }
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
