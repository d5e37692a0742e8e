// What the sanitizers say about the threads and the memory of OpenGL's driver, which they see only
// parts of, is not about us.

#if defined(__SANITIZE_THREAD__)

extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "race:_dri.so\nrace:libLLVM\nrace:libgallium\n";
}

#endif

#if defined(__SANITIZE_ADDRESS__)

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <string>

#include "Stage.h"

extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:_dri.so\nleak:libLLVM\nleak:libEGL\nleak:libGLX\nleak:libgallium\n";
}

namespace {

/// Leaks are passed over by the name of a library, which must still be loaded at the end.
int Keep(dl_phdr_info* library, std::size_t, void*) {
    const std::string name = library->dlpi_name;
    for (const char* const part : {"_dri.so", "libLLVM", "libEGL", "libGLX", "libgallium"}) {
        if (name.find(part) != std::string::npos)
            dlopen(name.c_str(), RTLD_LAZY | RTLD_NODELETE);
    }
    return 0;
}

class DriverStays : public testing::Environment {
    void SetUp() override {
        const Stage stage(1, 1);
        dl_iterate_phdr(Keep, nullptr);
    }
};

[[maybe_unused]] testing::Environment* const kDriverStays =
    testing::AddGlobalTestEnvironment(new DriverStays);

}  // namespace

#endif
