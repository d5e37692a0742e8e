#include "SanitizedDriver.h"

#if defined(__SANITIZE_THREAD__)

extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions() {
    return "race:_dri.so\nrace:libLLVM\nrace:libgallium\n";
}

#endif

#if defined(__SANITIZE_ADDRESS__)

#include <dlfcn.h>
#include <link.h>

#include <string>

namespace {

constexpr const char* kDrivers[] = {"_dri.so", "libLLVM", "libEGL", "libGLX", "libgallium"};

int Keep(dl_phdr_info* library, std::size_t, void*) {
    const std::string name = library->dlpi_name;
    for (const char* const part : kDrivers) {
        if (name.find(part) != std::string::npos)
            dlopen(name.c_str(), RTLD_LAZY | RTLD_NODELETE);
    }
    return 0;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
    return "leak:_dri.so\nleak:libLLVM\nleak:libEGL\nleak:libGLX\nleak:libgallium\n";
}

void KeepLoadedDrivers() {
    dl_iterate_phdr(Keep, nullptr);
}

#else

void KeepLoadedDrivers() {}

#endif
