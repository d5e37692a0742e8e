#include <array>
#include <filesystem>
#include <string>
#include <system_error>

#include "frame/Arguments.h"
#include "frame/CheckerApp.h"
#include "frame/TimeScale.h"
#include "model/Rollback.h"
#include "model/neighbours.h"
#include "visualiser/Display.h"
#include "visualiser/VisView.h"

// Views, textures and the select callback are the display's. Where there is none, these methods end
// with success after the tests that hold without one; of the records only the title is kept.

int CCheckerApp::SuspendVisualisation() {
    return m_display == nullptr ? KST_ERROR_NOT_RENDERING : m_display->Pause(/*internal=*/false);
}

int CCheckerApp::ResumeVisualisation() {
    return m_display == nullptr ? KST_ERROR_NOT_RENDERING : m_display->Resume(/*internal=*/false);
}

bool CCheckerApp::IsOpen(int view) const noexcept {
    return m_views[static_cast<std::size_t>(view)]->m_open;
}

int CCheckerApp::ShowView(int view, const char* title) {
    if (!IsSecondaryView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    if (IsOpen(view)) {
        return KST_OK;
    }
    if (m_display != nullptr && (m_display->IsStandingStill() || IsRenderThread())) {
        return KST_ERROR_NOT_RENDERING;
    }
    std::string& name = m_views[static_cast<std::size_t>(view)]->m_name;
    std::string wanted = title != nullptr ? title : name;
    const auto exchangeNames = [&name, &wanted] {
        const CFrameGuard guard;
        name.swap(wanted);
    };
    exchangeNames();
    CRollback undo(exchangeNames);
    const int status = m_display == nullptr ? KST_OK : m_display->AddView(view);
    if (status == KST_OK) {
        undo.Dismiss();
    }
    return status;
}

int CCheckerApp::HideView(int view) {
    if (!IsSecondaryView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    return m_display == nullptr || !IsOpen(view) ? KST_OK : m_display->RemoveView(view);
}

int CCheckerApp::SetViewOptions(int view, int options) {
    if (!IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_display != nullptr) {
        m_display->SetViewOptions(view, options);
    }
    return KST_OK;
}

int CCheckerApp::SetViewParams(int view, const float* eye, const float* point, const float* up) {
    const bool complete = eye != nullptr && point != nullptr && up != nullptr;
    if (!IsView(view) || !complete) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_display == nullptr) {
        return KST_OK;
    }
    if (!IsOpen(view)) {
        return KST_ERROR_VIEW_NOT_OPEN;
    }
    m_display->ApplyViewParams(view, eye, point, up);
    return KST_OK;
}

int CCheckerApp::GetViewParams(int view, float* eyeX, float* eyeY, float* eyeZ, float* pointX,
                               float* pointY, float* pointZ, float* upX, float* upY, float* upZ) {
    for (const float* required : {eyeX, eyeY, eyeZ, pointX, pointY, pointZ}) {
        if (required == nullptr) {
            return KST_ERROR_ARGUMENT;
        }
    }
    if (!IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_display == nullptr) {
        return KST_OK;
    }
    if (!IsOpen(view)) {
        return KST_ERROR_VIEW_NOT_OPEN;
    }
    std::array<float, 3> eye{};
    std::array<float, 3> point{};
    std::array<float, 3> up{};
    m_display->GetViewParams(view, eye.data(), point.data(), up.data());
    *eyeX = eye[0];
    *eyeY = eye[1];
    *eyeZ = eye[2];
    *pointX = point[0];
    *pointY = point[1];
    *pointZ = point[2];
    if (upX != nullptr && upY != nullptr && upZ != nullptr) {
        *upX = up[0];
        *upY = up[1];
        *upZ = up[2];
    }
    return KST_OK;
}

int CCheckerApp::AddViewKeyState(int view, float time, const float* eye, const float* point,
                                 const float* up) {
    if (m_display == nullptr) {
        return KST_OK;
    }
    if (!IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    m_display->AddViewKeyState(view, time, eye, point, up);
    ExtendTimeScale(time);
    return KST_OK;
}

int CCheckerApp::SetViewCyclic(int view, bool cyclic) {
    if (m_display == nullptr) {
        return KST_OK;
    }
    if (!IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    m_display->SetViewCyclic(view, cyclic);
    return KST_OK;
}

int CCheckerApp::ClearViewKeyStates(int view) {
    if (!IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_display != nullptr) {
        m_display->ClearViewKeyStates(view);
    }
    return KST_OK;
}

int CCheckerApp::SetBackgroundColor(int view, float r, float g, float b) {
    if (!IsColor(r, g, b) || !IsView(view)) {
        return KST_ERROR_ARGUMENT;
    }
    if (m_display != nullptr) {
        m_display->SetBackgroundColor(view, r, g, b);
    }
    return KST_OK;
}

int CCheckerApp::ScreenCapture(int view, const char* fileName) {
    if (m_display == nullptr) {
        return KST_OK;
    }
    if (!IsView(view) || fileName == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    if (!IsOpen(view)) {
        return KST_ERROR_VIEW_NOT_OPEN;
    }
    return m_display->CaptureView(view, fileName);
}

int CCheckerApp::LoadTexture(int index, const char* fileName, float alpha) {
    if (m_display == nullptr) {
        return KST_OK;
    }
    if (!IsTexture(index) || fileName == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    std::error_code error;
    if (!std::filesystem::exists(fileName, error)) {
        return KST_ERROR_FILE;
    }
    m_display->LoadTexture(index, fileName, alpha);
    return KST_OK;
}

int CCheckerApp::SetObjectSelectCallback(KstSelectCallback callback) {
    if (m_display != nullptr) {
        m_display->SetSelectCallback(callback);
    }
    return KST_OK;
}
