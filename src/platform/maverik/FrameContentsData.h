#pragma once

#include "platform/maverik/Renderer.h"

struct FrameContents::Data {
    ViewSetup setup;
};
