#pragma once

/// The connection to an X server, so far as a host has to be kept from harm: Xlib ends the process
/// when the server goes or reports an error, unless told otherwise. On other systems all of this
/// does nothing. Private to the windows' code.

#include <SDL.h>

#include <cstdint>

namespace screen {

/// From now on errors on the connection of this window end nothing. If the connection is lost,
/// `onLoss` is called and the calling thread, which must be the one that uses the connection,
/// stands still for ever: Xlib ends the process as soon as it is given back control.
void Watch(SDL_Window* window, void (*onLoss)() noexcept) noexcept;
/// The connection is about to be closed.
void Forget() noexcept;
/// After Forget: the process's handlers are what they were before Watch.
void Restore() noexcept;
/// A connection has been lost. That cannot be mended: what SDL and the driver had locked stays so.
bool IsLost() noexcept;

/// 0 where the window has none.
std::uintptr_t NativeHandle(SDL_Window* window) noexcept;

}  // namespace screen
