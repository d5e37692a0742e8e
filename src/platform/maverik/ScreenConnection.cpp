#include "platform/maverik/ScreenConnection.h"

#if defined(__linux__)

#include <SDL_syswm.h>
#include <dlfcn.h>
#include <unistd.h>

#include <atomic>
#include <utility>

namespace screen {

namespace {

/// So often at the most one thread has locked a connection; unlocking it too often does no harm.
constexpr int kMostLocks = 8;

/// Xlib's functions, found in the copy that SDL has loaded: nothing new is linked.
struct Xlib {
    using ErrorHandler = int (*)(Display*, XErrorEvent*);
    using LossHandler = int (*)(Display*);
    ErrorHandler (*setErrorHandler)(ErrorHandler) = nullptr;
    LossHandler (*setLossHandler)(LossHandler) = nullptr;
    void (*unlockDisplay)(Display*) = nullptr;

    Xlib() {
        void* const library = dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
        if (library == nullptr) {
            return;
        }
        setErrorHandler =
            reinterpret_cast<ErrorHandler (*)(ErrorHandler)>(dlsym(library, "XSetErrorHandler"));
        setLossHandler =
            reinterpret_cast<LossHandler (*)(LossHandler)>(dlsym(library, "XSetIOErrorHandler"));
        unlockDisplay = reinterpret_cast<void (*)(Display*)>(dlsym(library, "XUnlockDisplay"));
        dlclose(library);
    }
};

std::atomic<bool> lost{false};
std::atomic<Display*> watched{nullptr};
Xlib::ErrorHandler former = nullptr;
Xlib::LossHandler formerOfLoss = nullptr;
/// Those before the first watch. A host's handler that was set during one may call this library's
/// again, and has then become the former one of the next.
Xlib::ErrorHandler first = nullptr;
Xlib::LossHandler firstOfLoss = nullptr;
/// What a host has set since, or the one of this library.
Xlib::ErrorHandler latest = nullptr;
void (*tellLoss)() noexcept = nullptr;
bool isHandling = false;
/// SDL has several connections; they have in common the thread that uses them.
thread_local bool isWatched = false;

/// Calls `handler`, or `last` if it has led here.
template <class Handler, class... Arguments>
int PassOn(Handler handler, Handler last, Arguments... arguments) {
    thread_local bool isPassing = false;
    const Handler next = isPassing ? last : handler;
    const bool wasPassing = std::exchange(isPassing, true);
    const int answer = next == nullptr ? 0 : next(arguments...);
    isPassing = wasPassing;
    return answer;
}

int PassOver(Display* display, XErrorEvent* event) {
    return display == watched.load() ? 0 : PassOn(former, first, display, event);
}

int StandStill(Display* display) {
    if (!isWatched) {
        return PassOn(formerOfLoss, firstOfLoss, display);
    }
    lost = true;
    // The end of the process takes this lock once more, and may not wait for it.
    const Xlib xlib;
    for (int level = 0; level < kMostLocks && xlib.unlockDisplay != nullptr; ++level) {
        xlib.unlockDisplay(display);
    }
    tellLoss();
    for (;;) {
        pause();
    }
}

Display* DisplayOf(SDL_Window* window, Window* handle) {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    if (SDL_GetWindowWMInfo(window, &info) != SDL_TRUE || info.subsystem != SDL_SYSWM_X11) {
        return nullptr;
    }
    if (handle != nullptr) {
        *handle = info.info.x11.window;
    }
    return info.info.x11.display;
}

}  // namespace

void Watch(SDL_Window* window, void (*onLoss)() noexcept) noexcept {
    Display* const display = DisplayOf(window, nullptr);
    if (display == nullptr) {
        return;
    }
    const Xlib xlib;
    if (xlib.setErrorHandler == nullptr || xlib.setLossHandler == nullptr) {
        return;
    }
    watched = display;
    tellLoss = onLoss;
    isWatched = true;
    former = xlib.setErrorHandler(PassOver);
    formerOfLoss = xlib.setLossHandler(StandStill);
    static const bool isFirst [[maybe_unused]] = [] {
        first = former;
        firstOfLoss = formerOfLoss;
        return true;
    }();
    isHandling = true;
}

void Forget() noexcept {
    watched = nullptr;
    if (isHandling) {
        // SDL is about to put back the one that it found, whoever has set another.
        latest = Xlib().setErrorHandler(PassOver);
    }
}

void Restore() noexcept {
    if (!isHandling) {
        return;
    }
    isHandling = false;
    isWatched = false;
    const Xlib xlib;
    if (xlib.setErrorHandler == nullptr || xlib.setLossHandler == nullptr) {
        return;
    }
    // A host that has set one of its own meanwhile keeps it.
    const bool isHosts = latest != PassOver;
    const Xlib::ErrorHandler present = xlib.setErrorHandler(isHosts ? latest : former);
    if (!isHosts && present != PassOver) {
        xlib.setErrorHandler(present);
    }
    const Xlib::LossHandler presentOfLoss = xlib.setLossHandler(formerOfLoss);
    if (presentOfLoss != StandStill) {
        xlib.setLossHandler(presentOfLoss);
    }
}

bool IsLost() noexcept {
    return lost;
}

std::uintptr_t NativeHandle(SDL_Window* window) noexcept {
    Window handle = 0;
    DisplayOf(window, &handle);
    return handle;
}

}  // namespace screen

#else

namespace screen {

void Watch(SDL_Window* /*window*/, void (* /*onLoss*/)() noexcept) noexcept {}

void Forget() noexcept {}

void Restore() noexcept {}

bool IsLost() noexcept {
    return false;
}

std::uintptr_t NativeHandle(SDL_Window* /*window*/) noexcept {
    return 0;
}

}  // namespace screen

#endif
