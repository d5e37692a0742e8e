#pragma once

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "Library.h"
#include "TemporaryFolder.h"

/// A running library, a folder with the DTD of scenes, and a group to load into.
class SceneFiles : public Library {
  protected:
    void SetUp() override {
        Library::SetUp();
        std::filesystem::copy_file(KESTRANE_DTD, m_folder / "kestrane.dtd");
        m_group = Group();
    }

    static std::string Scene(const std::string& content, const std::string& subset = "") {
        return "<?xml version='1.0'?>\n<!DOCTYPE scene SYSTEM 'kestrane.dtd' " + subset +
               ">\n<scene>\n" + content + "\n</scene>";
    }
    int LoadFile(const std::string& file) {
        m_text = nullptr;
        return KST_LoadScene(file.c_str(), m_group, &m_text);
    }
    int Load(const std::string& content, const std::string& subset = "") {
        return LoadFile(m_folder.Write("scene.xml", Scene(content, subset)));
    }

    static KstGroupInfo Info(int group) {
        KstGroupInfo info = {};
        EXPECT_EQ(KST_OK, KST_GetGroup(group, &info));
        return info;
    }
    static std::vector<int> Objects(int group) {
        std::vector<int> ids(static_cast<std::size_t>(Info(group).objectCount));
        for (std::size_t i = 0; i < ids.size(); ++i) {
            EXPECT_EQ(KST_OK, KST_GetGroupObjectID(group, static_cast<int>(i), &ids[i]));
        }
        return ids;
    }
    static int Child(int group, int index = 0) {
        int id = -1;
        EXPECT_EQ(KST_OK, KST_GetGroupChildID(group, index, &id));
        return id;
    }
    static void FreeArrays(int object, const KstObjectInfo& info) {
        int type = 0;
        EXPECT_EQ(KST_OK, KST_GetObjectType(object, &type));
        if (type == KST_TRIANGLES || type == KST_POLYGON) {
            std::free(info.p2.floats);
        } else if (type == KST_POLYGON_GROUP || type == KST_POLYLINE) {
            std::free(info.p2.ints);
            std::free(info.p3.floats);
        } else if (type == KST_TETRAHEDRON) {
            std::free(info.p1.floats);
        }
    }
    /// Where the object's frame puts a point, to four digits.
    static std::array<float, 3> Place(int object, float x = 0, float y = 0, float z = 0) {
        KstObjectInfo info = {};
        EXPECT_EQ(KST_OK, KST_GetObject(object, &info));
        FreeArrays(object, info);
        const float* const m = info.matrix;
        std::array<float, 3> place;
        for (std::size_t i = 0; i < 3; ++i) {
            const float sum = m[4 * i] * x + m[4 * i + 1] * y + m[4 * i + 2] * z + m[4 * i + 3];
            place[i] =
                static_cast<float>(static_cast<int>(sum * 1e4f + (sum < 0 ? -.5f : .5f))) / 1e4f;
        }
        return place;
    }

    using Vector = std::array<float, 3>;

    TemporaryFolder m_folder;
    int m_group = -1;
    char* m_text = nullptr;
};
