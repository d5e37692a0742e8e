#include "frame/CheckerApp.h"

#include <utility>

#include "collision/CollisionManager.h"
#include "frame/LoadingScenes.h"
#include "model/Group.h"
#include "model/Registries.h"
#include "model/Rollback.h"
#include "model/SceneObject.h"
#include "model/neighbours.h"
#include "platform/settings/ProfileStore.h"
#include "visualiser/Display.h"
#include "visualiser/VisView.h"

CCheckerApp& Application() {
    // Never destroyed: a host may leave without KST_End while its threads are still calling, and
    // the registries of the scene do not outlive this either.
    static CCheckerApp* const application = std::make_unique<CCheckerApp>().release();
    return *application;
}

CCheckerApp::CCheckerApp() = default;
CCheckerApp::~CCheckerApp() = default;

int CCheckerApp::Initialisation(bool visualise, bool /*showPanel*/, bool /*showTimeControls*/) {
    const std::lock_guard lock(g_modelLock);
    auto loading = std::make_unique<LoadingScenes>();
    auto store = std::make_unique<settings::ProfileStore>(settings::ProfileStore::UserFile());
    std::array<std::unique_ptr<CVisView>, kViewCount> views;
    for (int view = 0; view < kViewCount; ++view) {
        views[static_cast<std::size_t>(view)] = std::make_unique<CVisView>(view, *store);
    }
    auto collision = std::make_unique<CCollisionManager>();

    g_nextGroupId = 0;
    g_nextObjectId = 0;
    g_labels.Clear();
    g_collision = collision.get();
    CRollback undoGlobals([] {
        g_visualiser = nullptr;
        g_views.fill(nullptr);
        g_collision = nullptr;
    });
    for (std::size_t view = 0; view < views.size(); ++view) {
        g_views[view] = views[view].get();
    }
    // Goes before the views do, should the rest fail.
    std::unique_ptr<CDisplay> display = visualise ? StartDisplay() : nullptr;
    g_visualiser = display.get();
    m_rootGroup = CGroup::CreateRoot(true, "Root group");

    undoGlobals.Dismiss();
    m_collision = std::move(collision);
    m_loading = std::move(loading);
    m_settings = std::move(store);
    m_views = std::move(views);
    m_display = std::move(display);
    return KST_OK;
}

int CCheckerApp::End() {
    if (m_display != nullptr) {
        m_display->Stop();
    }
    const std::lock_guard lock(g_modelLock);
    g_visualiser = nullptr;
    m_display.reset();
    g_views.fill(nullptr);
    for (std::unique_ptr<CVisView>& view : m_views) {
        view.reset();
    }
    m_settings->Flush();
    m_settings.reset();
    m_rootGroup.reset();
    g_labels.Clear();
    g_collision = nullptr;
    m_collision.reset();
    CCollisionManager::ClearResults();
    m_loading.reset();
    return KST_OK;
}

int CCheckerApp::SetTime(float time) {
    if (time < 0.0F) {
        return KST_ERROR_ARGUMENT;
    }
    ApplyTimeToScene(time);
    if (g_visualiser != nullptr) {
        for (int view = 0; view < kViewCount; ++view) {
            g_visualiser->ApplyViewTime(view, time);
        }
    }
    g_currentTime = time;
    if (g_controlPanel != nullptr) {
        g_controlPanel->ShowTime(time);
    }
    return KST_OK;
}
