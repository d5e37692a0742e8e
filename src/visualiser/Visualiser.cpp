#include "visualiser/Visualiser.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "model/SceneObject.h"
#include "visualiser/Lights.h"
#include "visualiser/Navigation.h"
#include "visualiser/Overlays.h"

namespace {

/// Materials that the palette is opened for. It grows beyond them, but first takes back the places
/// of surfaces that have gone.
constexpr int kPaletteMaterials = 100000;
constexpr float kShininess = 15.0F;
constexpr float kSpecular = 0.5F;

MAV_SMS* NewList() {
    MAV_SMS* const list = mav_SMSObjListNew();
    if (list == nullptr) {
        throw std::bad_alloc();
    }
    return list;
}

}  // namespace

CVisualiser::CVisualiser() : m_allObjects(NewList()), m_thread(*this) {
    mav_opt_maxMaterials = kPaletteMaterials;
    mav_opt_maxLights = kLightCount;
}

CVisualiser::~CVisualiser() {
    CVisualiser::Stop();
    while (!m_allObjects->objects.empty()) {
        mav_objectDelete(m_allObjects->objects.back());
    }
    mav_SMSDelete(m_allObjects);
}

bool CVisualiser::Start() {
    return m_thread.Start();
}

void CVisualiser::Stop() noexcept {
    m_thread.Stop();
}

// ---- Objects of the scene ----------------------------------------------------------------------

MAV_object* CVisualiser::NewObject(MAV_class shape, void* record) {
    const std::lock_guard lock(m_frameLock);
    MAV_object* const object = mav_objectNew(shape, record);
    try {
        mav_SMSObjectAdd(m_allObjects, object);
    } catch (...) {
        mav_objectDelete(object);
        throw;
    }
    return object;
}

void CVisualiser::DeleteObject(MAV_object* object) noexcept {
    const std::lock_guard lock(m_frameLock);
    mav_objectDelete(object);
}

void CVisualiser::AddObject(CSceneObject* object) {
    {
        const std::lock_guard lock(m_frameLock);
        try {
            EnterLists(object);
        } catch (...) {
            RemoveObject(object);
            throw;
        }
        MAV_matrix world;
        object->GetWorldMatrix(world);
        UpdateObjectMatrix(object, world);
    }
    Redraw();
}

void CVisualiser::EnterLists(CSceneObject* object) {
    for (CVisView* view : g_views) {
        if (view->m_sms != nullptr && object->Group()->IsVisibleInView(view->m_index)) {
            mav_SMSObjectAdd(view->m_sms, object->MavObject());
        }
    }
    LeaveLists(object, *object->Group());
}

void CVisualiser::LeaveLists(CSceneObject* object, const CGroup& group) noexcept {
    for (CVisView* view : g_views) {
        if (view->m_sms != nullptr && !group.IsVisibleInView(view->m_index)) {
            mav_SMSObjectRmv(view->m_sms, object->MavObject());
        }
    }
}

void CVisualiser::RemoveObject(CSceneObject* object) noexcept {
    {
        const std::lock_guard lock(m_frameLock);
        for (CVisView* view : g_views) {
            if (view->m_sms != nullptr) {
                mav_SMSObjectRmv(view->m_sms, object->MavObject());
            }
        }
    }
    Redraw();
}

void CVisualiser::MoveObject(CSceneObject* object, const CGroup& former) {
    const std::lock_guard lock(m_frameLock);
    try {
        EnterLists(object);
    } catch (...) {
        LeaveLists(object, former);
        throw;
    }
    Redraw();
}

void CVisualiser::UpdateObjectMatrix(CSceneObject* object, const MAV_matrix& world) noexcept {
    if (object->Type() != kTypeCylinder && object->Type() != kTypeCone) {
        object->SetDisplayMatrix(world);
        return;
    }
    // They stand along z when drawn, along y in the scene: the product with a turn by -90 degrees
    // about x.
    MAV_matrix turned = world;
    for (std::size_t row = 0; row < 12; row += 4) {
        turned[row + 1] = -std::exchange(turned[row + 2], turned[row + 1]);
    }
    object->SetDisplayMatrix(turned);
}

void CVisualiser::Redraw() noexcept {
    m_thread.Redraw();
}

void CVisualiser::ShowGroup(CGroup* group, int view) {
    std::vector<CSceneObject*> objects;
    group->CollectObjects(objects);
    {
        const std::lock_guard lock(m_frameLock);
        MAV_SMS* const sms = g_views[static_cast<std::size_t>(view)]->m_sms;
        std::size_t entered = 0;
        try {
            for (; sms != nullptr && entered < objects.size(); ++entered) {
                mav_SMSObjectAdd(sms, objects[entered]->MavObject());
            }
        } catch (...) {
            for (std::size_t i = 0; i < entered; ++i) {
                if (!objects[i]->Group()->IsVisibleInView(view)) {
                    mav_SMSObjectRmv(sms, objects[i]->MavObject());
                }
            }
            throw;
        }
        group->SetViewVisibility(view, true);
    }
    Redraw();
}

void CVisualiser::HideGroup(CGroup* group, int view) {
    std::vector<CSceneObject*> objects;
    group->CollectObjects(objects);
    {
        const std::lock_guard lock(m_frameLock);
        if (MAV_SMS* const sms = g_views[static_cast<std::size_t>(view)]->m_sms) {
            for (CSceneObject* object : objects) {
                mav_SMSObjectRmv(sms, object->MavObject());
            }
        }
        group->SetViewVisibility(view, false);
    }
    Redraw();
}

// ---- Palette -----------------------------------------------------------------------------------
// The palette goes with the windows; what comes later finds none.

int CVisualiser::NewMaterial(float r, float g, float b, float a) {
    const std::lock_guard lock(m_frameLock);
    if (mav_palette_default == nullptr) {
        return 0;
    }
    const bool takeBack = m_nextMaterial >= kPaletteMaterials && !m_freeMaterials.empty();
    const int index = takeBack ? m_freeMaterials.back() : m_nextMaterial;
    mav_paletteMaterialSet(*mav_palette_default, index,
                           {{0, 0, 0, a},
                            {r, g, b, a},
                            {kSpecular, kSpecular, kSpecular, a},
                            {0, 0, 0, a},
                            kShininess});
    if (takeBack) {
        m_freeMaterials.pop_back();
    } else {
        ++m_nextMaterial;
    }
    if (a < 1) {
        mav_opt_trans = 1;
    }
    return index;
}

void CVisualiser::ReleaseMaterial(int index) noexcept {
    const std::lock_guard lock(m_frameLock);
    try {
        m_freeMaterials.push_back(index);
    } catch (const std::bad_alloc&) {
        // The place stays taken.
    }
}

void CVisualiser::GetMaterial(int index, float* r, float* g, float* b, float* a) noexcept {
    const std::lock_guard lock(m_frameLock);
    if (mav_palette_default != nullptr) {
        mav_paletteMaterialGet(*mav_palette_default, index, r, g, b, a);
        return;
    }
    *r = 1;
    *g = 0;
    *b = 0;
    *a = 1;
}

void CVisualiser::SetMaterialAlpha(int index, float alpha) {
    {
        const std::lock_guard lock(m_frameLock);
        mav_opt_trans = 1;
        if (mav_palette_default != nullptr) {
            mav_paletteMaterialAlphaSet(*mav_palette_default, index, alpha);
        }
    }
    Redraw();
}

void CVisualiser::SetTextureAlpha(int index, float alpha) {
    mav_opt_trans = 1;
    // Behind the image, if that is still on its way.
    QueueWork([index, alpha] { mav_paletteTextureAlphaSet(*mav_palette_default, index, alpha); });
}

/// A picture that is to become a texture. Read by the render thread, without the frame lock.
class CVisualiser::TextureOrder {
  public:
    explicit TextureOrder(std::string path) : m_path(std::move(path)) {}
    /// Null for what is no picture. The file is read at the first call.
    std::shared_ptr<const MAV_image> Image() {
        if (!std::exchange(m_isRead, true)) {
            try {
                m_image = mav_imageRead(m_path);
            } catch (const std::bad_alloc&) {
                // Too large: the place stays as it is.
            }
        }
        return m_image;
    }

  private:
    std::string m_path;
    bool m_isRead = false;
    std::shared_ptr<const MAV_image> m_image;
};

void CVisualiser::LoadTexture(int index, const std::string& path, float alpha) {
    if (m_thread.HasEnded()) {
        return;
    }
    const auto order = std::make_shared<TextureOrder>(path);
    {
        const std::lock_guard lock(m_frameLock);
        m_textureOrders.push_back(order);
        m_work.push_back([order, index, alpha] {
            if (mav_paletteTextureSet(*mav_palette_default, index, order->Image()) &&
                alpha != 1.0F) {
                mav_opt_trans = 1;
                mav_paletteTextureAlphaSet(*mav_palette_default, index, alpha);
            }
        });
    }
    Redraw();
}

void CVisualiser::ReadTextures() {
    std::vector<std::shared_ptr<TextureOrder>> orders;
    {
        const std::lock_guard lock(m_frameLock);
        orders.swap(m_textureOrders);
    }
    for (const std::shared_ptr<TextureOrder>& order : orders) {
        order->Image();
    }
}

void CVisualiser::SetHeadlight(bool on) {
    QueueWork([on] { SetUpHeadlight(*mav_palette_default, on); });
}

// ---- Work of the render thread -----------------------------------------------------------------

void CVisualiser::QueueWork(Work work) {
    if (m_thread.HasEnded()) {
        return;
    }
    {
        const std::lock_guard lock(m_frameLock);
        m_work.push_back(std::move(work));
    }
    Redraw();
}

void CVisualiser::RunWork() {
    const std::vector<Work> work = std::exchange(m_work, {});
    for (const Work& step : work) {
        try {
            step();
        } catch (const std::exception&) {
            // Memory is short: this step is not done, the others are.
        }
    }
}

void CVisualiser::DrawFrame() {
    ReadTextures();
    std::vector<Work> after;
    {
        const std::lock_guard lock(m_frameLock);
        after.swap(m_workAfterFrame);
        if (!after.empty()) {
            mav_frameStill();
        }
        RunWork();
        mav_frameBegin();
        EndFlights();
        for (const CVisView* view : g_views) {
            if (view->m_window != nullptr) {
                mav_SMSDisplay(view->m_window, view->m_sms);
                mav_SMSDisplay(view->m_window, view->m_overlaySms);
            }
        }
    }
    mav_frameEnd();
    for (const Work& step : after) {
        step();
    }
}

void CVisualiser::SetSelectCallback(KstSelectCallback callback) noexcept {
    const std::lock_guard lock(m_frameLock);
    m_selectCallback = callback;
}
