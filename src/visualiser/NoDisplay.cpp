// In place of the visualiser where the library is built without windows.

#include "visualiser/Display.h"

std::unique_ptr<CDisplay> StartDisplay() {
    return nullptr;
}

bool IsRenderThread() noexcept {
    return false;
}
