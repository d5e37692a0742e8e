#include "visualiser/Display.h"

#include "visualiser/Visualiser.h"

std::unique_ptr<CDisplay> StartDisplay() {
    auto visualiser = std::make_unique<CVisualiser>();
    if (!visualiser->Start()) {
        return nullptr;
    }
    return visualiser;
}
