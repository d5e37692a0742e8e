#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Camera.h"
#include "SweepReport.h"

/// A picture of each step of a sweep, step_0000000.bmp and so on in one folder, with the objects in
/// contact in red.
class SweepFrames {
  public:
    /// Makes the folder if it is not there. Throws Failure.
    SweepFrames(const std::string& folder, const Camera& camera);
    void Write(std::int64_t number, const SweepStep& step);

  private:
    void Mark(const std::vector<KstCollisionResult>& contacts);

    std::string m_folder;
    int m_view;
    /// Of the objects that are red now, by id, the surface that they showed before.
    std::map<int, int> m_marked;
};
