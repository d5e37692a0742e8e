#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Output.h"
#include "Scene.h"

/// Options that all queries about a scene at one time share.
struct QueryOptions {
    std::string file;
    std::string time = "0";
    bool first = false;
    bool json = false;

    void AddFile(CLI::App& command);
    void AddRest(CLI::App& command, const char* firstHelp);
};

/// A question about two groups: its arguments, and the report that is common to the answers.
class PairQuery {
  public:
    QueryOptions options;
    std::string name1;
    std::string name2;

    void AddTo(CLI::App& command, const char* firstHelp);

    /// Loads the scene, sets the time and finds the groups.
    Scene& Open();
    int Group1() const { return m_group1; }
    int Group2() const { return m_group2; }

    /// `value` names the value of the results ("distance"); empty if they have none.
    void Report(const std::string& command, const std::string& headline, const std::string& value,
                bool collision, const std::vector<KstCollisionResult>& results) const;

  private:
    std::optional<Scene> m_scene;
    int m_group1 = 0;
    int m_group2 = 0;
};

/// `group 4 "robot" (25 objects)`.
std::string CheckedGroupName(int group);
/// As GroupJson, with "checkedObjects" and "uncheckedObjects".
Json CheckedGroupJson(int group);
/// A line for each reason for which objects of the group are not checked though they could be.
std::string UncheckedNote(int group);
/// Throws Failure if no object of the group is checked: that is no answer.
void RequireChecked(int group);

/// {"object1", "object2"}, and for a named value that with "point1" and "point2".
Json PairJson(const KstCollisionResult& result, const std::string& value);
/// `object 14 "forearm" of ... and object 51 "door_edge" of ...`
std::string PairName(const KstCollisionResult& result);

/// "1 pair", "2 pairs".
std::string Count(std::size_t count, const std::string& noun);
