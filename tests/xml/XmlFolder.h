#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "scenefiles/xml/XmlDocument.h"

/// Tests on files in a folder of their own.
class XmlFolder : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "xml_XXXXXX").string();
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        m_folder = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::string Path(const std::string& name) const { return (m_folder / name).string(); }
    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
        return Path(name);
    }
    void CopyDtd() const {
        std::filesystem::copy_file(KESTRANE_DTD, m_folder / "kestrane.dtd",
                                   std::filesystem::copy_options::overwrite_existing);
    }

    /// Empty if the text loads, else the error.
    std::string Error(const std::string& text) const {
        XmlDocument document;
        const int result = document.Load(Write("test.xml", text));
        EXPECT_EQ(result == 0, document.Root() != nullptr);
        EXPECT_EQ(result == 0, document.GetError().empty());
        EXPECT_TRUE(result == 0 || result == 2) << result;
        return document.GetError();
    }
    /// The error between path and line number.
    std::string Reason(const std::string& text) const {
        const std::string error = Error(text);
        const std::string head = "Failed to load " + Path("test.xml") + ": ";
        const size_t tail = error.rfind(" Line number: ");
        if (error.compare(0, head.size(), head) != 0 || tail == std::string::npos) {
            return "not in the form of an error: " + error;
        }
        return error.substr(head.size(), tail - head.size());
    }

    std::filesystem::path m_folder;
};

inline std::string Scene(const std::string& content) {
    return "<?xml version=\"1.0\"?>\n<!DOCTYPE scene SYSTEM \"kestrane.dtd\">\n<scene>" + content +
           "</scene>\n";
}

inline std::string Repeat(const std::string& text, size_t times) {
    std::string all;
    all.reserve(text.size() * times);
    for (size_t i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}
