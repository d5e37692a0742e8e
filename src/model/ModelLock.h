#pragma once

#include <mutex>

/// The model lock. Whoever touches the scene or the collision world holds it: every exported
/// function, every action of the panel. Never held while waiting for a thread to end. The render
/// thread only tries it.
extern std::recursive_mutex g_modelLock;
