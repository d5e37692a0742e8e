#include "visualiser/VisView.h"

#include <exception>

#include "platform/settings/ProfileStore.h"

std::array<CVisView*, kViewCount> g_views = {};

namespace {

constexpr const char* kSection = "Windows";
constexpr const char* kMaximizedKey = "isMaximized";

constexpr std::array<const char*, kViewCount> kNames = {
    "Kestrane main view", "Kestrane second view", "Kestrane third view", "Kestrane fourth view"};

template <class Value>
struct StoredField {
    const char* key;
    Value CVisView::*field;
};

constexpr StoredField<int> kStoredInts[] = {{"leftMaverik", &CVisView::m_left},
                                            {"topMaverik", &CVisView::m_top},
                                            {"widthMaverik", &CVisView::m_width},
                                            {"heightMaverik", &CVisView::m_height}};

constexpr StoredField<float> kStoredFloats[] = {{"fogStart", &CVisView::m_fogStart},
                                                {"nearClippingDist", &CVisView::m_nearClip},
                                                {"farClippingDist", &CVisView::m_farClip},
                                                {"navigationSpeed", &CVisView::m_navigationSpeed}};

/// Each view has keys of its own: the name and the view's number.
std::string ViewKey(const char* name, int view) {
    return name + std::to_string(view);
}

}  // namespace

CVisView::CVisView(int index, settings::ProfileStore& store)
    : m_index(index),
      m_open(index == 0),
      m_name(kNames.at(static_cast<std::size_t>(index))),
      m_store(store) {
    for (const auto& [name, field] : kStoredInts) {
        this->*field = store.GetProfileInt(kSection, ViewKey(name, index).c_str(), this->*field);
    }
    m_maximized = store.GetProfileInt(kSection, ViewKey(kMaximizedKey, index).c_str(), 0) == 1;
    for (const auto& [name, field] : kStoredFloats) {
        this->*field = settings::ParseStoredFloat(store.GetProfileString(
            kSection, ViewKey(name, index).c_str(), settings::FormatStoredFloat(this->*field)));
    }
}

CVisView::~CVisView() {
    try {
        for (const auto& [name, field] : kStoredInts) {
            m_store.WriteProfileInt(kSection, ViewKey(name, m_index).c_str(), this->*field);
        }
        m_store.WriteProfileInt(kSection, ViewKey(kMaximizedKey, m_index).c_str(),
                                m_maximized ? 1 : 0);
        for (const auto& [name, field] : kStoredFloats) {
            m_store.WriteProfileString(kSection, ViewKey(name, m_index).c_str(),
                                       settings::FormatStoredFloat(this->*field));
        }
    } catch (const std::exception&) {
        // The settings stay as they were in the store, like after any other failure to write.
    }
}
