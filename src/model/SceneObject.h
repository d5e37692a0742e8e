#pragma once

#include <array>
#include <memory>
#include <string>
#include <utility>

#include "model/Group.h"
#include "model/Motion.h"
#include "model/Surface.h"
#include "platform/maverik/Records.h"
#include "platform/solid/Solid.h"

struct KstObjectInfo;

/// Codes as the host sees them.
enum ObjectType : int {
    kTypeBox = 1,
    kTypeSphere = 2,
    kTypeCylinder = 3,
    kTypeCone = 4,
    kTypeTriangles = 5,
    kTypePolygon = 6,
    kTypePolygonGroup = 7,
    kTypePolyline = 8,
    kTypeTetrahedron = 9,
};

/// A leaf of the scene tree: one geometric shape in one group.
///
/// An object is made in two steps: the constructor of a shape holds geometry only, and Register
/// makes it part of the scene. Operations that may fail for lack of memory throw std::bad_alloc and
/// have then changed nothing.
class CSceneObject {
  public:
    virtual ~CSceneObject();
    CSceneObject(const CSceneObject&) = delete;
    CSceneObject& operator=(const CSceneObject&) = delete;

    /// Enters the object into its group, the registries, the display and the collision world, with
    /// copies of its group's surfaces. Its label, unless empty, then means this object.
    static CSceneObject* Register(std::unique_ptr<CSceneObject> object);
    /// Takes the object out of everything and destroys it.
    static void Destroy(CSceneObject* object) noexcept;

    int Id() const noexcept { return m_id; }
    CGroup* Group() const noexcept { return m_group; }
    const std::string& Label() const noexcept { return m_label; }
    ObjectType Type() const noexcept { return m_type; }
    int PrimitiveCount() const noexcept { return m_primitiveCount; }
    bool IsAnimated() const noexcept { return m_animated; }
    const CSurface& Surface(int index) const noexcept {
        return *m_surface[static_cast<std::size_t>(index)];
    }
    int ActiveSurface() const noexcept { return m_activeSurface; }
    /// Null until a key state or the cyclic flag was set.
    const CMotion* Motion() const noexcept { return m_motion.get(); }
    const MAV_matrix& LocalMatrix() const noexcept { return m_localMatrix; }
    const MAV_matrix& PoseMatrix() const noexcept { return m_poseMatrix; }
    const MAV_matrix& ScaleMatrix() const noexcept { return m_scaleMatrix; }
    void GetWorldMatrix(MAV_matrix& out) const noexcept;

    /// Whether the object stands in the collision world: its group is capable, and it is no
    /// polyline.
    bool IsInCollisionWorld() const noexcept { return m_solidObject != nullptr; }
    DT_ObjectHandle SolidObject() const noexcept { return m_solidObject; }
    DT_ShapeHandle SolidShape() const noexcept { return m_solidShape; }
    /// For the collision world, when it enters the object.
    void SetSolidObject(DT_ObjectHandle object) noexcept { m_solidObject = object; }
    /// Null without a display.
    MAV_object* MavObject() const noexcept { return m_mavObject.get(); }

    /// As CGroup::GetExportName, with "object" in place of "group".
    void GetExportName(std::string& out) const;

    /// Shows the surface and notes it as the active one; nothing if the shape cannot show it.
    void ApplySurface(int index) noexcept;
    /// For the display, under its frame lock.
    virtual void SetDisplayMatrix(const MAV_matrix& matrix) noexcept = 0;
    /// A copy in `target` that stands and looks like this object, without motion and margin. The
    /// label then means the copy.
    CSceneObject* Clone(CGroup* target) const;
    /// Fills the record. Arrays in it are allocated with malloc and belong to the caller. They are
    /// never null, even if empty. On std::bad_alloc nothing was written or kept.
    virtual void GetInfo(KstObjectInfo* info) const;

    void SetPosition(float x, float y, float z) noexcept;
    /// Angles in radians about x, y and z.
    void SetOrientation(float x, float y, float z) noexcept;
    void SetScaling(float x, float y, float z) noexcept;
    void SetQuaternion(float x, float y, float z, float w) noexcept;
    void UpdateLocalMatrix() noexcept;
    /// Brings first the display, then the collision world in line with the matrices, and asks for a
    /// frame.
    void UpdateTransforms() noexcept;
    /// The same without a frame, for many objects at once. Needs the frame lock.
    void PassTransforms() noexcept;
    /// Nothing unless the object stands in the collision world.
    void SetClearance(float margin) noexcept;

    void SetSurface(std::unique_ptr<CSurface> surface, int index) noexcept;
    void SetColor(float r, float g, float b, float a, int index);
    void SetTexture(int texture, float xTile, float yTile, int index);
    /// Nothing for a polyline.
    void SetSurfaceAlpha(float alpha, int index);

    void SetCyclic(bool cyclic);
    /// Arguments as for CMotion::AddKeyState. The object takes the pose of its track at once.
    void AddKeyState(float time, const float* pos, const float* orient, const float* scale,
                     bool isQuaternion);
    /// The track goes, a cyclic flag without key states included; the matrices stay.
    void ClearKeyStates() noexcept;
    /// Needs an animated object.
    void ApplyTime(float time) noexcept;
    /// Matrices of the track at `time` alone, without what follows from them.
    void EvaluateMotion(float time) noexcept;

    /// The place relative to the group stays.
    void MoveTo(CGroup* group);

  protected:
    CSceneObject(ObjectType type, CGroup* group, std::string label, int primitiveCount = 1);

    /// For constructors of shapes: the drawable of the shape's record, if there is a display.
    void MakeDrawable(MAV_class shape, void* record);

  private:
    friend class CGroup;
    friend class CGroupCloner;

    struct DrawableDeleter {
        void operator()(MAV_object* object) const noexcept;
    };

    /// How far up an object that enters its group is counted.
    enum class CountReach { kAllAncestors, kGroupOnly };

    /// Builds the shape for the collision world.
    virtual DT_ShapeHandle BuildSolidShape() const = 0;
    /// Copies the surface into the display record; false, and nothing done, if the shape cannot
    /// show it.
    virtual bool ShowSurface(const CSurface& surface) noexcept = 0;
    /// A copy of the geometry and label in `target`, not registered.
    virtual std::unique_ptr<CSceneObject> Copy(CGroup* target) const = 0;

    static CSceneObject* Enter(std::unique_ptr<CSceneObject> object, CountReach reach);
    std::unique_ptr<CSceneObject> CopyWithState(CGroup* target) const;
    void TakeGroupSurfaces();
    void CopyStateFrom(const CSceneObject& source);
    void ClaimLabel() noexcept;
    void EnterCollisionWorld();
    void LeaveCollisionWorld() noexcept;
    /// All of destruction that others can see, but for leaving the group.
    void LeaveScene() noexcept;

    int m_id;
    CGroup* m_group;
    std::string m_label;
    DT_ObjectHandle m_solidObject = nullptr;
    DT_ShapeHandle m_solidShape = nullptr;
    MAV_matrix m_localMatrix = MAV_ID_MATRIX;
    MAV_matrix m_poseMatrix = MAV_ID_MATRIX;
    MAV_matrix m_scaleMatrix = MAV_ID_MATRIX;
    std::unique_ptr<MAV_object, DrawableDeleter> m_mavObject;
    std::array<std::unique_ptr<CSurface>, kSurfaceCount> m_surface;
    /// A surface that has been replaced by one that the shape cannot show, and which it goes on
    /// showing.
    std::unique_ptr<CSurface> m_formerSurface;
    /// The surface that the display record points to.
    const CSurface* m_shownSurface = nullptr;
    std::unique_ptr<CMotion> m_motion;
    ObjectType m_type;
    int m_primitiveCount;
    unsigned char m_activeSurface = 0;
    /// The label was new when the object entered the scene.
    bool m_broughtLabel = false;
    bool m_animated = false;
};

/// Makes an object of class Shape in `group` and registers it:
/// `CreateObject<CBox>(group, label, width, height, depth)`.
template <class Shape, class... Geometry>
CSceneObject* CreateObject(CGroup* group, const std::string& label, const Geometry&... geometry) {
    return CSceneObject::Register(std::make_unique<Shape>(group, label, geometry...));
}
