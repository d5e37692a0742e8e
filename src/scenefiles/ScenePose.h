#pragma once

#include "frame/CheckerApp.h"
#include "scenefiles/AttributeReader.h"

/// Sets the pose of a group or an object from the children of an element. Each operation takes the
/// first child of its name and gives the model's code, 0 if there is no such child.
template <int (CCheckerApp::*SetPosition)(int, float, float, float),
          int (CCheckerApp::*SetOrientation)(int, float, float, float),
          int (CCheckerApp::*SetQuaternion)(int, float, float, float, float),
          int (CCheckerApp::*SetScaling)(int, float, float, float)>
struct ScenePose {
    CCheckerApp& app;
    int id;

    int Position(const XmlElement& parent) const { return Set<SetPosition>(parent, "pos"); }
    int Orientation(const XmlElement& parent) const { return Set<SetOrientation>(parent, "or"); }
    int Scaling(const XmlElement& parent) const { return Set<SetScaling>(parent, "scale"); }
    int Quaternion(const XmlElement& parent) const {
        const XmlElement* const child = parent.FirstChild("quat");
        float q[4];
        if (child == nullptr) {
            return KST_OK;
        }
        return ReadQuaternion(*child, q) ? (app.*SetQuaternion)(id, q[0], q[1], q[2], q[3])
                                         : KST_ERROR_ARGUMENT;
    }

  private:
    template <int (CCheckerApp::*Setter)(int, float, float, float)>
    int Set(const XmlElement& parent, const char* name) const {
        const XmlElement* const child = parent.FirstChild(name);
        float v[3];
        if (child == nullptr) {
            return KST_OK;
        }
        return ReadVector(*child, v) ? (app.*Setter)(id, v[0], v[1], v[2]) : KST_ERROR_ARGUMENT;
    }
};

using GroupPose = ScenePose<&CCheckerApp::SetGroupPosition, &CCheckerApp::SetGroupOrientation,
                            &CCheckerApp::SetGroupQuaternion, &CCheckerApp::SetGroupScaling>;
using ObjectPose = ScenePose<&CCheckerApp::SetObjectPosition, &CCheckerApp::SetObjectOrientation,
                             &CCheckerApp::SetObjectQuaternion, &CCheckerApp::SetObjectScaling>;
