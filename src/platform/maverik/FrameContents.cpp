#include "platform/maverik/FrameContentsData.h"

FrameContents::FrameContents() : m_data(std::make_unique<Data>()) {}

FrameContents::~FrameContents() = default;

void FrameContents::Begin(const ViewSetup& setup, const MAV_palette& /*palette*/) {
    m_data->setup = setup;
}

void FrameContents::Collect(const MAV_SMS& /*sms*/, const MAV_palette& /*palette*/,
                            bool /*transparency*/) {}

void FrameContents::AddText(const std::string& /*text*/, const MAV_colour& /*colour*/, float /*x*/,
                            float /*y*/) {}
