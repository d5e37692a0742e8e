#include "frame/Arguments.h"
#include "frame/CheckerApp.h"
#include "visualiser/VisView.h"

// Views, textures and the select callback are the display's. Where there is none, these methods end
// with success after the tests that hold without one; of the records only the title is kept.

int CCheckerApp::SuspendVisualisation() {
    return KST_ERROR_NOT_RENDERING;
}

int CCheckerApp::ResumeVisualisation() {
    return KST_ERROR_NOT_RENDERING;
}

int CCheckerApp::ShowView(int view, const char* title) {
    if (!IsSecondaryView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    CVisView& record = *m_views[static_cast<std::size_t>(view)];
    if (!record.m_open && title != nullptr) {
        record.m_name = title;
    }
    return KST_OK;
}

int CCheckerApp::HideView(int view) {
    return IsSecondaryView(view) ? KST_OK : KST_ERROR_ARGUMENT;
}

int CCheckerApp::SetViewOptions(int view, int /*options*/) {
    return IsView(view) ? KST_OK : KST_ERROR_ARGUMENT;
}

int CCheckerApp::SetViewParams(int view, const float* eye, const float* point, const float* up) {
    const bool complete = eye != nullptr && point != nullptr && up != nullptr;
    return IsView(view) && complete ? KST_OK : KST_ERROR_ARGUMENT;
}

int CCheckerApp::GetViewParams(int view, float* eyeX, float* eyeY, float* eyeZ, float* pointX,
                               float* pointY, float* pointZ, float* /*upX*/, float* /*upY*/,
                               float* /*upZ*/) {
    for (const float* required : {eyeX, eyeY, eyeZ, pointX, pointY, pointZ}) {
        if (required == nullptr) {
            return KST_ERROR_ARGUMENT;
        }
    }
    return IsView(view) ? KST_OK : KST_ERROR_ARGUMENT;
}

int CCheckerApp::AddViewKeyState(int /*view*/, float /*time*/, const float* /*eye*/,
                                 const float* /*point*/, const float* /*up*/) {
    return KST_OK;
}

int CCheckerApp::SetViewCyclic(int /*view*/, bool /*cyclic*/) {
    return KST_OK;
}

int CCheckerApp::ClearViewKeyStates(int view) {
    return IsView(view) ? KST_OK : KST_ERROR_ARGUMENT;
}

int CCheckerApp::SetBackgroundColor(int view, float r, float g, float b) {
    return IsColor(r, g, b) && IsView(view) ? KST_OK : KST_ERROR_ARGUMENT;
}

int CCheckerApp::ScreenCapture(int /*view*/, const char* /*fileName*/) {
    return KST_OK;
}

int CCheckerApp::LoadTexture(int /*index*/, const char* /*fileName*/, float /*alpha*/) {
    return KST_OK;
}

int CCheckerApp::SetObjectSelectCallback(KstSelectCallback /*callback*/) {
    return KST_OK;
}
