#pragma once

/// The connection to an X server, so far as a host has to be kept from harm: Xlib ends the process
/// when the server goes or reports an error, unless told otherwise. On other systems all of this
/// does nothing. Private to the windows' code.

#include <SDL.h>

#include <cstdint>

namespace screen {

/// Whether the X display of this name can be reached within a second. True for what is no address
/// in a network.
bool Answers(const char* display);

/// From now on errors on the connection of this window end nothing; a loss is noted.
void Watch(SDL_Window* window) noexcept;
/// The connection is about to be closed.
void Forget() noexcept;
/// After Forget: the process's handlers are what they were before Watch.
void Restore() noexcept;
bool IsLost() noexcept;

/// 0 where the window has none.
std::uintptr_t NativeHandle(SDL_Window* window) noexcept;

}  // namespace screen
