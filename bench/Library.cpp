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
#ifdef BENCH_OURS
    append(SolidLibraries());
    append(PublicLibraries());
#endif
#ifdef BENCH_FCL
    append(FclLibraries());
#endif
#if defined(BENCH_BULLET) || defined(BENCH_BULLET64)
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
