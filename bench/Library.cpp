#include "Library.h"

#include <iterator>
#include <utility>

namespace bench {

namespace {

std::vector<LibraryKind> Collect() {
    std::vector<LibraryKind> all;
    const auto append = [&](std::vector<LibraryKind> kinds) {
        all.insert(all.end(), std::make_move_iterator(kinds.begin()),
                   std::make_move_iterator(kinds.end()));
    };
    append(SolidLibraries());
    append(PublicLibraries());
#ifdef BENCH_FCL
    append(FclLibraries());
#endif
#ifdef BENCH_BULLET
    append(BulletLibraries());
#endif
    return all;
}

}  // namespace

const std::vector<LibraryKind>& AllLibraries() {
    static const std::vector<LibraryKind> all = Collect();
    return all;
}

}  // namespace bench
