#include <algorithm>
#include <cstring>

#include "frame/Arguments.h"
#include "frame/CheckerApp.h"
#include "frame/LoadingScenes.h"
#include "frame/SceneLock.h"
#include "model/Group.h"
#include "scenefiles/VrmlSceneLoader.h"
#include "scenefiles/XmlSceneLoader.h"

namespace {

constexpr std::size_t kErrorTextSize = 256;
char errorBuffer[kErrorTextSize] = "";

/// The last four characters, small; the host's locale has no say in it.
std::string Suffix(const std::string& name) {
    std::string suffix = name.substr(name.size() - std::min<std::size_t>(name.size(), 4));
    for (char& c : suffix) {
        if (c >= 'A' && c <= 'Z') {
            c = static_cast<char>(c - 'A' + 'a');
        }
    }
    return suffix;
}

}  // namespace

char* CCheckerApp::ErrorText() {
    return errorBuffer;
}

void CCheckerApp::SetErrorText(const std::string& text) {
    const std::size_t length = std::min(text.size(), kErrorTextSize - 1);
    std::memcpy(errorBuffer, text.data(), length);
    errorBuffer[length] = '\0';
}

int CCheckerApp::LoadScene(const char* fileName, int group, char** errorText) {
    if (fileName == nullptr) {
        return KST_ERROR_ARGUMENT;
    }
    const CGroup* const target = FindGroup(group);
    if (target == nullptr) {
        return KST_ERROR_UNKNOWN_GROUP;
    }
    const std::string suffix = Suffix(fileName);
    if (suffix != ".xml" && suffix != ".wrl") {
        return KST_OK;
    }
    const auto refuse = [errorText](const std::string& text) {
        SetErrorText(text);
        if (errorText != nullptr) {
            *errorText = ErrorText();
        }
        return KST_ERROR_FILE;
    };
    const std::string file = LoadingScenes::Identity(fileName);
    if (const char* reason = m_loading->Refusal(file)) {
        return refuse(reason + std::string(fileName));
    }
    const LoadingScenes::Entry entry(*m_loading, file);
    const CSceneLock still(m_display.get());
    if (suffix == ".wrl") {
        return VrmlSceneLoader().Load(fileName, group, target->IsCollisionCapable(), errorText);
    }
    return XmlSceneLoader().Load(fileName, group, errorText);
}
