#pragma once

#include "collision/CollisionManager.h"

/// Runs a query on an empty store. One that fails half-way leaves it empty, so that the host never
/// gets more records than the last count that it was told.
template <class Body>
auto RunQuery(Body&& body) {
    CCollisionManager::ClearResults();
    try {
        return body();
    } catch (...) {
        CCollisionManager::ClearResults();
        throw;
    }
}
