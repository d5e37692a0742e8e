#include "SweepFrames.h"

#include <cstdio>
#include <filesystem>
#include <set>
#include <system_error>

#include "Failure.h"
#include "model/Registries.h"
#include "model/SceneObject.h"

SweepFrames::SweepFrames(const std::string& folder, const Camera& camera)
    : m_folder(folder), m_view(camera.View()) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error))
        throw Failure("--frames: " + folder + " is no folder, and none can be made there");
    camera.Apply();
}

void SweepFrames::Write(std::int64_t number, const SweepStep& step) {
    Mark(step.contacts);
    char name[32];
    std::snprintf(name, sizeof name, "step_%07lld.bmp", static_cast<long long>(number));
    WritePicture(m_view, (std::filesystem::path(m_folder) / name).string());
}

void SweepFrames::Mark(const std::vector<KstCollisionResult>& contacts) {
    std::set<int> touching;
    for (const KstCollisionResult& contact : contacts) {
        touching.insert(contact.id1);
        touching.insert(contact.id2);
    }
    for (auto it = m_marked.begin(); it != m_marked.end();) {
        if (touching.count(it->first) > 0) {
            ++it;
            continue;
        }
        KST_SetObjectActiveSurface(it->first, it->second);
        it = m_marked.erase(it);
    }
    for (const int id : touching) {
        const int shown = g_objects.at(id)->ActiveSurface();
        if (!m_marked.emplace(id, shown).second)
            continue;
        // The surface that is not shown takes the colour, so that the other one is still there.
        KST_SetObjectColor(id, 1, 0, 0, 1, 1 - shown);
        KST_SetObjectActiveSurface(id, 1 - shown);
    }
}
