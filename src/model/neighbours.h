#pragma once

/// What the tree of groups tells the collision world, the display and the control panel, and asks
/// of them. The tree never looks behind these classes, so it stands and is tested without the
/// three.
///
/// Operations marked noexcept must cope with a lack of memory themselves. The others may throw
/// std::bad_alloc, and then have changed nothing.

#include "platform/maverik/Records.h"

class CGroup;
class CSceneObject;

/// The collision world. Present from before the root group is made until after it is gone.
class CCollisionNeighbour {
  public:
    virtual ~CCollisionNeighbour() = default;

    /// A response class that no other group has; not below 0.
    virtual int GenResponseClass() = 0;
    /// Gives back the class of a group that has no object in the world any more.
    virtual void ReleaseResponseClass(int responseClass) noexcept = 0;
    /// Enters an object whose m_solidShape is built, with its present world matrix and the response
    /// class of its group, and sets its m_solidObject.
    virtual void AddObject(CSceneObject* object) = 0;
    /// Takes the object out and destroys its m_solidObject and m_solidShape.
    virtual void RemoveObject(CSceneObject* object) noexcept = 0;
    /// `world` is the object's world matrix, which has changed.
    virtual void UpdateObject(CSceneObject* object, const MAV_matrix& world) noexcept = 0;
    /// The object now belongs to another group, and takes that group's response class.
    virtual void UpdateResponseClass(CSceneObject* object) noexcept = 0;
    virtual void SetObjectMargin(CSceneObject* object, float margin) noexcept = 0;
};

/// The display. Absent (null) when the library runs without one.
class CDisplayNeighbour {
  public:
    virtual ~CDisplayNeighbour() = default;

    /// A drawable of the record, whose type `shape` names and which must outlive it. In no view
    /// yet.
    virtual MAV_object* NewObject(MAV_class shape, void* record) = 0;
    virtual void DeleteObject(MAV_object* object) noexcept = 0;

    /// Enters the object into the views in which its group is visible, with its present matrix.
    virtual void AddObject(CSceneObject* object) = 0;
    /// Takes the object out of all views; when the call returns, no frame reads its record any
    /// more.
    virtual void RemoveObject(CSceneObject* object) noexcept = 0;
    /// The object has moved here from the group `former`: brings the views in which it stands in
    /// line with its present group.
    virtual void MoveObject(CSceneObject* object, const CGroup& former) = 0;
    /// `world` is the object's world matrix, which has changed. Called under the frame lock; a
    /// frame is asked for when all that moves has moved.
    virtual void UpdateObjectMatrix(CSceneObject* object, const MAV_matrix& world) noexcept = 0;
    /// Asks for a new frame.
    virtual void Redraw() noexcept = 0;

    /// While locked no frame is being drawn. Recursive on one thread.
    virtual void LockFrame() noexcept = 0;
    virtual void UnlockFrame() noexcept = 0;

    /// A fresh material of the default palette.
    virtual int NewMaterial(float r, float g, float b, float a) = 0;
    /// The surface that the material was made for is gone.
    virtual void ReleaseMaterial(int index) noexcept = 0;
    /// Diffuse colour and alpha.
    virtual void GetMaterial(int index, float* r, float* g, float* b, float* a) noexcept = 0;
    virtual void SetMaterialAlpha(int index, float alpha) = 0;
    virtual void SetTextureAlpha(int index, float alpha) = 0;

    /// Enter or remove the objects of the whole subtree, and call CGroup::SetViewVisibility.
    virtual void ShowGroup(CGroup* group, int view) = 0;
    virtual void HideGroup(CGroup* group, int view) = 0;
    /// Puts the camera of the view where its key states say.
    virtual void ApplyViewTime(int view, float time) = 0;
};

/// The control panel. Absent (null) when there is none.
class CPanelNeighbour {
  public:
    virtual ~CPanelNeighbour() = default;

    virtual void AddGroupRow(CGroup* group, bool collapsed) noexcept = 0;
    /// The row, if there is one, and all rows below it go.
    virtual void RemoveGroupRow(int groupId) noexcept = 0;
    /// Counts, capability or visibility of the group, and perhaps of its ancestors, have changed.
    virtual void UpdateGroupRow(CGroup* group) noexcept = 0;
    /// The group's visibility in this view has changed, and that of its subtree.
    virtual void SetGroupVisibleInView(CGroup* group, int view) noexcept = 0;
    /// The range of the time slider is 0 to `time`.
    virtual void SetTimeRange(float time) noexcept = 0;
    /// The global time has changed.
    virtual void ShowTime(float time) noexcept = 0;
};

/// Owned by the application object.
extern CCollisionNeighbour* g_collision;
extern CDisplayNeighbour* g_visualiser;
extern CPanelNeighbour* g_controlPanel;

/// Holds the frame lock, where there is a display.
class CFrameGuard {
  public:
    CFrameGuard() noexcept : m_display(g_visualiser) {
        if (m_display)
            m_display->LockFrame();
    }
    ~CFrameGuard() {
        if (m_display)
            m_display->UnlockFrame();
    }
    CFrameGuard(const CFrameGuard&) = delete;
    CFrameGuard& operator=(const CFrameGuard&) = delete;

  private:
    CDisplayNeighbour* m_display;
};
