// Files packed by gzip: what goes in comes out, and what is damaged does not.

#include "nodes/writer/GzFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>

#include "TemporaryFolder.h"

namespace nodes {
namespace {

/// Text that packs about as well as a world does.
std::string coordinates(int lines) {
    std::string text;
    unsigned state = 1;
    for (int i = 0; i < lines; ++i) {
        for (int axis = 0; axis < 3; ++axis) {
            state = state * 1664525U + 1013904223U;
            text += std::to_string(state / 4294967296.0);
            text += axis < 2 ? " " : ",\n";
        }
    }
    return text;
}

TEST(GzFile, ReadsBackWhatItWrites) {
    const TemporaryFolder folder;
    const std::string path = (folder / "a.gz").string();
    const std::string text = coordinates(50'000);
    GzFile file;
    EXPECT_FALSE(file.isOpen());
    EXPECT_FALSE(file.close());
    ASSERT_TRUE(file.open(path.c_str(), GzFile::kWrite));
    EXPECT_FALSE(file.open(path.c_str(), GzFile::kWrite));
    EXPECT_TRUE(file.isOpen());
    EXPECT_TRUE(file.writeText(text));
    EXPECT_TRUE(file.write(text.data(), 0));
    char byte = 0;
    EXPECT_EQ(file.read(&byte, 1), 0);
    std::string read = "?";
    EXPECT_FALSE(file.readText(read));
    EXPECT_EQ(read, "");
    EXPECT_TRUE(file.close());
    EXPECT_EQ(file.mode(), GzFile::kClosed);
    EXPECT_FALSE(file.writeText(text));

    EXPECT_TRUE(folder.Read("a.gz").starts_with("\x1F\x8B"));
    EXPECT_LT(std::filesystem::file_size(path), text.size());
    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    ASSERT_TRUE(file.open(path.c_str(), GzFile::kRead));
    EXPECT_EQ(file.fileLength(), std::filesystem::file_size(path));
    EXPECT_FALSE(file.writeText(text));
    EXPECT_EQ(file.read(&byte, 1), 1);
    std::unique_ptr<char[]> rest;
    std::size_t size = 0;
    ASSERT_TRUE(file.readAll(rest, size));
    EXPECT_EQ(byte + std::string(rest.get(), size), text);
    EXPECT_FALSE(file.readAll(rest, size));
    EXPECT_EQ(rest, nullptr);
    EXPECT_EQ(size, 0U);
    EXPECT_TRUE(file.close());
}

TEST(GzFile, LevelsMakeTheirOwnBytesOfTheSameText) {
    const TemporaryFolder folder;
    const std::string text = coordinates(2'000);
    std::size_t lengths[2];
    for (const int level : {0, 9}) {
        const std::string path = (folder / "a.gz").string();
        GzFile file;
        file.level = level;
        ASSERT_TRUE(file.open(path.c_str(), GzFile::kWrite));
        EXPECT_TRUE(file.writeText(text) && file.close());
        lengths[level == 9] = std::filesystem::file_size(path);
        std::string read;
        ASSERT_TRUE(file.open(path.c_str(), GzFile::kRead) && file.readText(read));
        EXPECT_EQ(read, text);
        EXPECT_FALSE(file.applyParams());
    }
    EXPECT_GT(lengths[0], text.size());
    EXPECT_LT(lengths[1], text.size());
}

TEST(GzFile, DoesNotOpenWhatIsNotThere) {
    const TemporaryFolder folder;
    GzFile file;
    for (const int mode : {GzFile::kClosed, GzFile::kWrite, GzFile::kRead, GzFile::Mode{3}}) {
        EXPECT_FALSE(file.open((folder / "missing/a.gz").c_str(), mode));
        EXPECT_FALSE(file.open(nullptr, mode));
        EXPECT_FALSE(file.isOpen());
        EXPECT_EQ(file.mode(), GzFile::kClosed);
    }
    std::string text;
    EXPECT_TRUE(file.open(folder.Write("empty", "").c_str(), GzFile::kRead));
    EXPECT_FALSE(file.readText(text));
    EXPECT_TRUE(file.close());
    EXPECT_TRUE(file.open(folder.Write("plain", "#VRML").c_str(), GzFile::kRead));
    EXPECT_TRUE(file.readText(text));
    EXPECT_EQ(text, "#VRML");
}

TEST(GzFile, AFileThatEndsEarlyOrIsDamagedIsNotRead) {
    const TemporaryFolder folder;
    const std::string path = (folder / "a.gz").string();
    GzFile file;
    ASSERT_TRUE(file.open(path.c_str(), GzFile::kWrite));
    ASSERT_TRUE(file.writeText(coordinates(5)) && file.close());
    const std::string whole = folder.Read("a.gz");
    std::string text;
    // The first bytes alone do not say that the file is packed.
    for (std::size_t length = 2; length < whole.size(); ++length) {
        folder.Write("a.gz", whole.substr(0, length));
        ASSERT_TRUE(file.open(path.c_str(), GzFile::kRead));
        EXPECT_FALSE(file.readText(text)) << length;
        EXPECT_EQ(text, "");
        file.close();
    }
    std::string damaged = whole;
    damaged[whole.size() / 2] = static_cast<char>(~damaged[whole.size() / 2]);
    folder.Write("a.gz", damaged);
    ASSERT_TRUE(file.open(path.c_str(), GzFile::kRead));
    EXPECT_FALSE(file.readText(text));
    EXPECT_EQ(text, "");
}

TEST(GzFile, AFullDiskIsTold) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no /dev/full here";
    }
    GzFile file;
    ASSERT_TRUE(file.open("/dev/full", GzFile::kWrite));
    const bool taken = file.writeText(coordinates(10'000));
    EXPECT_FALSE(file.close() && taken);
}

}  // namespace
}  // namespace nodes
