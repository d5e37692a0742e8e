// What groups, objects and views have beside their shape: surfaces, motion, cameras.

#include "frame/CheckerApp.h"
#include "scenefiles/AttributeReader.h"
#include "scenefiles/XmlSceneLoader.h"

namespace {

/// The first child of a name as floats, if there is one: three, or four of a quaternion.
class OptionalVector {
  public:
    OptionalVector(const XmlElement& parent, const char* name, bool isQuaternion = false) {
        const XmlElement* const child = parent.FirstChild(name);
        m_present = child != nullptr;
        m_complete = !m_present || (isQuaternion ? ReadQuaternion(*child, m_values)
                                                 : ReadVector(*child, m_values));
    }

    /// Null if there is no such child.
    const float* Get() const { return m_present ? m_values : nullptr; }
    const float* GetOr(const float* byDefault) const { return m_present ? m_values : byDefault; }
    bool IsComplete() const { return m_complete; }

  private:
    float m_values[4] = {};
    bool m_present = false;
    bool m_complete = true;
};

}  // namespace

// ---- Surfaces and motion of groups and objects ----

int XmlSceneLoader::ReadColors(const XmlElement& element, Owner owner, int id) {
    int status = KST_OK;
    for (const XmlElement* color = element.FirstChild("color");
         color != nullptr && status == KST_OK; color = color->NextSibling("color")) {
        AttributeReader attributes(*color);
        const float red = attributes.Float("red");
        const float green = attributes.Float("green");
        const float blue = attributes.Float("blue");
        const float alpha = attributes.Float("alpha", 1.0f);
        const int surface = attributes.Integer("sID", 0);
        if (!attributes.IsComplete()) {
            status = KST_ERROR_ARGUMENT;
        } else if (owner == Owner::kGroup) {
            status = m_app.SetGroupColor(id, red, green, blue, alpha, false, surface);
        } else {
            status = m_app.SetObjectColor(id, red, green, blue, alpha, surface);
        }
    }
    return status;
}

int XmlSceneLoader::ReadTextures(const XmlElement& element, Owner owner, int id) {
    int status = KST_OK;
    for (const XmlElement* texture = element.FirstChild("texture");
         texture != nullptr && status == KST_OK; texture = texture->NextSibling("texture")) {
        AttributeReader attributes(*texture);
        const int slot = attributes.Integer("ID");
        const float xTile = attributes.Float("xTile", 1.0f);
        const float yTile = attributes.Float("yTile", 1.0f);
        const int surface = attributes.Integer("sID", 0);
        if (!attributes.IsComplete()) {
            status = KST_ERROR_ARGUMENT;
        } else if (owner == Owner::kGroup) {
            status = m_app.SetGroupTexture(id, slot, xTile, yTile, false, surface);
        } else {
            status = m_app.SetObjectTexture(id, slot, xTile, yTile, surface);
        }
    }
    return status;
}

int XmlSceneLoader::ReadMotion(const XmlElement& element, Owner owner, int id) {
    const bool ofGroup = owner == Owner::kGroup;
    const bool cyclic = AttributeReader(element).Bool("cyclic");
    if (ofGroup) {
        m_app.SetGroupCyclic(id, cyclic);
    } else {
        m_app.SetObjectCyclic(id, cyclic);
    }
    int status = KST_OK;
    for (const XmlElement* state = element.FirstChild("keyState");
         state != nullptr && status == KST_OK; state = state->NextSibling("keyState")) {
        const OptionalVector position(*state, "pos");
        const OptionalVector orientation(*state, "or");
        const OptionalVector quaternion(*state, "quat", true);
        const OptionalVector scale(*state, "scale");
        const bool isQuaternion = quaternion.Get() != nullptr;
        const float* const rotation = quaternion.GetOr(orientation.Get());
        AttributeReader attributes(*state);
        const float time = attributes.Float("time");
        if (!attributes.IsComplete() || !position.IsComplete() || !orientation.IsComplete() ||
            !quaternion.IsComplete() || !scale.IsComplete()) {
            status = KST_ERROR_ARGUMENT;
        } else if (ofGroup) {
            status = m_app.AddGroupKeyState(id, time, position.Get(), rotation, scale.Get(),
                                            isQuaternion);
        } else {
            status = m_app.AddObjectKeyState(id, time, position.Get(), rotation, scale.Get(),
                                             isQuaternion);
        }
    }
    return status;
}

// ---- Views ----

int XmlSceneLoader::ReadViewParams(const XmlElement& element, int /*group*/) {
    static constexpr float kEye[3] = {20.0f, 10.0f, 20.0f};
    static constexpr float kPoint[3] = {0.0f, 0.0f, 0.0f};
    static constexpr float kUp[3] = {0.0f, 1.0f, 0.0f};
    AttributeReader attributes(element);
    const int view = attributes.Integer("viewID");
    if (!attributes.IsComplete()) {
        return KST_ERROR_ARGUMENT;
    }
    const OptionalVector eye(element, "eye");
    const OptionalVector point(element, "view");
    const OptionalVector up(element, "up");
    int status = KST_ERROR_ARGUMENT;
    if (eye.IsComplete() && point.IsComplete() && up.IsComplete()) {
        status = m_app.SetViewParams(view, eye.GetOr(kEye), point.GetOr(kPoint), up.GetOr(kUp));
    }
    if (const XmlElement* const motion = element.FirstChild("viewMotion")) {
        status = ReadViewMotion(*motion, view);
    }
    return status;
}

int XmlSceneLoader::ReadViewMotion(const XmlElement& element, int view) {
    m_app.SetViewCyclic(view, AttributeReader(element).Bool("cyclic"));
    int status = KST_OK;
    for (const XmlElement* state = element.FirstChild("viewKeyState");
         state != nullptr && status == KST_OK; state = state->NextSibling("viewKeyState")) {
        const OptionalVector eye(*state, "eye");
        const OptionalVector point(*state, "view");
        const OptionalVector up(*state, "up");
        AttributeReader attributes(*state);
        const float time = attributes.Float("time");
        if (!attributes.IsComplete() || !eye.IsComplete() || !point.IsComplete() ||
            !up.IsComplete()) {
            status = KST_ERROR_ARGUMENT;
        } else {
            status = m_app.AddViewKeyState(view, time, eye.Get(), point.Get(), up.Get());
        }
    }
    return status;
}
