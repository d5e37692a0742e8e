#pragma once

/// Benchmarks that go round the steps of a motion.

#include <functional>
#include <memory>
#include <string>

#include "Library.h"

namespace bench {

/// A scene in one library, with a motion that comes round.
class Workload {
  public:
    Workload() = default;
    virtual ~Workload() = default;
    Workload(const Workload&) = delete;
    Workload& operator=(const Workload&) = delete;

    virtual int StepCount() const = 0;
    /// Moves what moves and asks what is asked; the number of findings.
    virtual int Step(int i) = 0;
};

using MakeWorkload = std::function<std::unique_ptr<Workload>(const LibraryKind& kind)>;

/// One benchmark for each library that knows the answer, named "NAME/LIBRARY". Its counter "found"
/// is the number of findings of one round.
void Register(const std::string& name, Question question, MakeWorkload make);

}  // namespace bench
