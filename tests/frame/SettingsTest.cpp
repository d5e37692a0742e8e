#include <gtest/gtest.h>
#include <locale.h>
#include <sys/stat.h>

#include <iterator>
#include <locale>

#include "TemporaryFolder.h"
#include "kestrane.h"
#include "platform/settings/ProfileStore.h"
#include "visualiser/VisView.h"

namespace {

using settings::ProfileStore;

constexpr const char* kFile = "Tamsfield Institute/kestrane.ini";

/// Sets a variable of the environment, or takes it away, and puts it back.
class Environment {
  public:
    Environment(const char* name, const char* value) : m_name(name) {
        const char* former = getenv(name);
        m_had = former != nullptr;
        m_former = m_had ? former : "";
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
    }
    ~Environment() { m_had ? setenv(m_name, m_former.c_str(), 1) : unsetenv(m_name); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

  private:
    const char* m_name;
    bool m_had;
    std::string m_former;
};

void RunHeadless() {
    ASSERT_EQ(KST_OK, KST_Initialisation(false, false, false));
    ASSERT_EQ(KST_OK, KST_End());
}

TEST(ProfileStore, KeepsWhatWasWritten) {
    const TemporaryFolder folder;
    {
        ProfileStore store(folder / kFile);
        EXPECT_EQ(7, store.GetProfileInt("Windows", "a", 7));
        EXPECT_EQ("x", store.GetProfileString("Windows", "b", "x"));
        store.WriteProfileInt("Windows", "a", -12);
        store.WriteProfileString("Interface", "b", "two words");
        store.WriteProfileString("Interface", "c", "no\nbreaks");
        EXPECT_EQ(-12, store.GetProfileInt("Windows", "a", 7));
        EXPECT_FALSE(std::filesystem::exists(folder / kFile));
        store.Flush();
    }
    const ProfileStore store(folder / kFile);
    EXPECT_EQ(-12, store.GetProfileInt("Windows", "a", 7));
    EXPECT_EQ("two words", store.GetProfileString("Interface", "b", "x"));
    EXPECT_EQ("x", store.GetProfileString("Interface", "c", "x"));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(folder / "Tamsfield Institute"),
                               std::filesystem::directory_iterator()));
}

TEST(ProfileStore, ReadsIntegersLikeText) {
    const TemporaryFolder folder;
    const ProfileStore store(folder.Write(
        "s.ini", "[S]\na= 5 \nb=+6\nc=7up\nd=x\ne=99999999999\nf=\ng=-0\nh=+-1\ni=-2147483648\n"));
    const std::pair<const char*, int> values[] = {{"a", 5},  {"b", 6},  {"c", 7},
                                                  {"d", 42}, {"e", 42}, {"f", 42},
                                                  {"g", 0},  {"h", 42}, {"i", -2147483647 - 1}};
    for (const auto& [key, value] : values) {
        EXPECT_EQ(value, store.GetProfileInt("S", key, 42)) << key;
    }
}

TEST(ProfileStore, WritesOfOthersSurvive) {
    const TemporaryFolder folder;
    ProfileStore ours(folder / kFile);
    ProfileStore theirs(folder / kFile);
    ours.WriteProfileInt("Windows", "a", 1);
    theirs.WriteProfileInt("Interface", "b", 2);
    theirs.Flush();
    ours.Flush();
    const ProfileStore store(folder / kFile);
    EXPECT_EQ(1, store.GetProfileInt("Windows", "a", 0));
    EXPECT_EQ(2, store.GetProfileInt("Interface", "b", 0));
}

TEST(ProfileStore, UnreadableStoresGiveDefaultsAndAreLeftAlone) {
    const TemporaryFolder folder;
    ASSERT_EQ(0, mkfifo((folder / "pipe.ini").c_str(), 0600));
    std::filesystem::create_directory(folder / "folder.ini");
    const std::string large = "[S]\na=1\n" + std::string(2 * 1024 * 1024, ';');
    folder.Write("large.ini", large);
    for (const char* name : {"pipe.ini", "folder.ini", "large.ini"}) {
        SCOPED_TRACE(name);
        ProfileStore store(folder / name);
        EXPECT_EQ(3, store.GetProfileInt("S", "a", 3));
        store.WriteProfileInt("S", "a", 4);
        store.Flush();
    }
    EXPECT_EQ(large, folder.Read("large.ini"));
}

TEST(ProfileStore, HostileTextDoesNoHarm) {
    const TemporaryFolder folder;
    std::string names = "[S]\n";
    for (int i = 0; i < 50000; ++i) {
        names.append("k").append(std::to_string(i)).append("=1\n");
    }
    const std::string texts[] = {std::string("\0\0[S]\0a=1", 9),
                                 "[",
                                 "[S",
                                 "[S]\n=1\n==\na",
                                 "\xff\xfe\x00[",
                                 names,
                                 "[S]\na=<<<END\nnever ends",
                                 std::string(1000000, '['),
                                 "[S]\na=" + std::string(100000, '9')};
    for (const std::string& text : texts) {
        ProfileStore store(folder.Write("s.ini", text));
        EXPECT_EQ(3, store.GetProfileInt("T", "a", 3));
        store.WriteProfileInt("T", "a", 4);
        store.Flush();
    }
}

TEST(ProfileStore, AStoreThatIsALinkStaysOne) {
    const TemporaryFolder folder;
    folder.Write("real.ini", "");
    std::filesystem::create_symlink(folder / "real.ini", folder / "link.ini");
    ProfileStore store(folder / "link.ini");
    store.WriteProfileInt("S", "a", 4);
    store.Flush();
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.ini"));
    EXPECT_NE(std::string::npos, folder.Read("real.ini").find("a = 4"));
}

TEST(ProfileStore, FindsTheFileOfTheUser) {
    const Environment home("HOME", "/home/someone");
    {
        const Environment config("XDG_CONFIG_HOME", "/etc/theirs");
        EXPECT_EQ("/etc/theirs/Tamsfield Institute/kestrane.ini", ProfileStore::UserFile());
    }
    for (const char* useless : {static_cast<const char*>(nullptr), "", "relative"}) {
        const Environment config("XDG_CONFIG_HOME", useless);
        EXPECT_EQ("/home/someone/.config/Tamsfield Institute/kestrane.ini",
                  ProfileStore::UserFile());
        const Environment noHome("HOME", useless);
        EXPECT_EQ("", ProfileStore::UserFile());
        RunHeadless();
    }
}

TEST(ProfileStore, FloatsAreTextOfSixDecimals) {
    const std::pair<float, const char*> values[] = {
        {1.5F, "1.500000"},
        {0.1F, "0.100000"},
        {-400, "-400.000000"},
        {1e-9F, "0.000000"},
        {3.4028235e38F, "340282346638528859811704183484516925440.000000"}};
    for (const auto& [value, text] : values) {
        EXPECT_EQ(text, settings::FormatStoredFloat(value));
    }
    const std::pair<const char*, float> texts[] = {
        {" 2.5xyz", 2.5F}, {"+1e2", 100}, {"", 0}, {"x", 0}, {"1,5", 1}, {"-.5", -0.5F}};
    for (const auto& [text, value] : texts) {
        EXPECT_EQ(value, settings::ParseStoredFloat(text)) << text;
    }
}

TEST(StoredViews, FirstRunWritesTheDefaultsAndTheSecondRunNothing) {
    const TemporaryFolder folder;
    const Environment config("XDG_CONFIG_HOME", (folder / "").c_str());
    RunHeadless();
    const std::string text = folder.Read(kFile);
    EXPECT_NE(std::string::npos, text.find("[Windows]"));
    for (const char* line :
         {"leftMaverik0 = 0", "topMaverik1 = 0", "widthMaverik2 = 300", "heightMaverik3 = 300",
          "isMaximized0 = 0", "fogStart1 = 400.000000", "nearClippingDist2 = 0.100000",
          "farClippingDist3 = 500.000000", "navigationSpeed2 = 1.000000"}) {
        EXPECT_NE(std::string::npos, text.find(line)) << line;
    }
    std::filesystem::permissions(folder / kFile, std::filesystem::perms::owner_read);
    struct stat before = {};
    struct stat after = {};
    ASSERT_EQ(0, stat((folder / kFile).c_str(), &before));
    RunHeadless();
    ASSERT_EQ(0, stat((folder / kFile).c_str(), &after));
    EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST(StoredViews, ValuesAreReadPerViewAndWrittenBack) {
    const TemporaryFolder folder;
    const Environment config("XDG_CONFIG_HOME", (folder / "").c_str());
    folder.Write(kFile,
                 "[Windows]\nleftMaverik2 = -20\nwidthMaverik2 = 0\nisMaximized1 = 1\n"
                 "isMaximized2 = 2\nnavigationSpeed2 = 1.5\n[Interface]\nxPosInterface = 9\n");
    ASSERT_EQ(KST_OK, KST_Initialisation(false, false, false));
    EXPECT_EQ(-20, g_views[2]->m_left);
    EXPECT_EQ(0, g_views[2]->m_width);
    EXPECT_EQ(300, g_views[1]->m_width);
    EXPECT_TRUE(g_views[1]->m_maximized);
    EXPECT_FALSE(g_views[2]->m_maximized);
    EXPECT_EQ(1.5F, g_views[2]->m_navigationSpeed);
    g_views[3]->m_farClip = 250;
    ASSERT_EQ(KST_OK, KST_End());
    EXPECT_EQ(nullptr, g_views[0]);
    const std::string text = folder.Read(kFile);
    for (const char* line :
         {"leftMaverik2 = -20", "widthMaverik2 = 0", "isMaximized1 = 1",
          "navigationSpeed2 = 1.500000", "farClippingDist3 = 250.000000", "xPosInterface = 9"}) {
        EXPECT_NE(std::string::npos, text.find(line)) << line;
    }
}

TEST(StoredViews, TheLocaleOfTheHostDoesNotMatter) {
    const TemporaryFolder folder;
    const Environment config("XDG_CONFIG_HOME", (folder / "").c_str());
    folder.Write(kFile, "[Windows]\nfogStart0 = 12.5\n");
    // Of the C locales with a decimal comma a machine may have none; C++ needs no help of the
    // machine.
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale former = std::locale::global(std::locale(std::locale(), new Comma));
    setlocale(LC_ALL, "de_DE.UTF-8");
    ASSERT_EQ(KST_OK, KST_Initialisation(false, false, false));
    EXPECT_EQ(12.5F, g_views[0]->m_fogStart);
    ASSERT_EQ(KST_OK, KST_End());
    std::locale::global(former);
    EXPECT_NE(std::string::npos, folder.Read(kFile).find("fogStart0 = 12.500000"));
}

TEST(ViewRecords, StartAsDocumented) {
    ASSERT_EQ(KST_OK, KST_Initialisation(false, false, false));
    const char* names[] = {"Kestrane main view", "Kestrane second view", "Kestrane third view",
                           "Kestrane fourth view"};
    for (int i = 0; i < 4; ++i) {
        const CVisView& view = *g_views[static_cast<std::size_t>(i)];
        EXPECT_EQ(i, view.m_index);
        EXPECT_EQ(i == 0, view.m_open);
        EXPECT_EQ(names[i], view.m_name);
        EXPECT_TRUE(view.m_showCompass);
        EXPECT_TRUE(view.m_showGrid);
        EXPECT_FALSE(view.m_showStatus || view.m_orthogonal || view.m_backfaceCull);
    }
    EXPECT_EQ(KST_OK, KST_ShowView(2, "from above"));
    EXPECT_EQ("from above", g_views[2]->m_name);
    EXPECT_EQ(KST_OK, KST_ShowView(2, nullptr));
    EXPECT_EQ("from above", g_views[2]->m_name);
    EXPECT_EQ(KST_OK, KST_End());
}

}  // namespace
