#include "platform/maverik/ScreenConnection.h"

#if defined(__linux__)

#include <SDL_syswm.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

namespace screen {

namespace {

constexpr std::chrono::seconds kPatience{1};
/// So often at the most one thread has locked a connection; unlocking it too often does no harm.
constexpr int kMostLocks = 8;
constexpr int kFirstPort = 6000;
constexpr int kMostDisplays = 59535;  // the last has port 65535

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
void (*tellLoss)() noexcept = nullptr;
bool isHandling = false;
/// SDL has several connections; they have in common the thread that uses them.
thread_local bool isWatched = false;

int PassOver(Display* display, XErrorEvent* event) {
    if (display == watched.load()) {
        return 0;
    }
    return former == nullptr ? 0 : former(display, event);
}

int StandStill(Display* display) {
    if (!isWatched) {
        return formerOfLoss == nullptr ? 0 : formerOfLoss(display);
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

/// Connects without waiting longer than until `end`.
bool Connects(const addrinfo& address, std::chrono::steady_clock::time_point end) {
    const int handle =
        socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (handle < 0) {
        return false;
    }
    bool connected = connect(handle, address.ai_addr, address.ai_addrlen) == 0;
    if (!connected && errno == EINPROGRESS) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        pollfd ready = {handle, POLLOUT, 0};
        int error = 0;
        socklen_t size = sizeof error;
        connected = left.count() > 0 && poll(&ready, 1, static_cast<int>(left.count())) == 1 &&
                    getsockopt(handle, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
    }
    close(handle);
    return connected;
}

bool Reaches(const std::string& host, const std::string& port) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), port.c_str(), &hints, &found) != 0) {
        return false;
    }
    bool reached = false;
    for (const addrinfo* address = found; address != nullptr && !reached;
         address = address->ai_next) {
        reached = Connects(*address, end);
    }
    freeaddrinfo(found);
    return reached;
}

/// An answer that may come too late for whoever asked.
struct Question {
    std::mutex mutex;
    std::condition_variable answered;
    bool isAnswered = false;
    bool answer = false;
};

}  // namespace

bool Answers(const char* display) {
    const std::string name = display;
    const std::size_t colon = name.rfind(':');
    if (colon == std::string::npos || colon == 0 || name[0] == '/' ||
        name.compare(0, colon, "unix") == 0) {
        return true;
    }
    const std::string host = name.substr(0, colon);
    int number = 0;
    std::from_chars(name.data() + colon + 1, name.data() + name.size(), number);
    if (number < 0 || number > kMostDisplays) {
        return false;
    }
    const std::string port = std::to_string(kFirstPort + number);
    const auto question = std::make_shared<Question>();
    try {
        // Names are looked up without a limit in time, so not on this thread.
        std::thread([question, host, port] {
            const bool answer = Reaches(host, port);
            const std::lock_guard lock(question->mutex);
            question->answer = answer;
            question->isAnswered = true;
            question->answered.notify_all();
        }).detach();
    } catch (const std::system_error&) {
        return false;
    }
    std::unique_lock lock(question->mutex);
    question->answered.wait_for(lock, kPatience, [&question] { return question->isAnswered; });
    return question->answer;
}

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
    isHandling = true;
}

void Forget() noexcept {
    watched = nullptr;
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
    const Xlib::ErrorHandler present = xlib.setErrorHandler(former);
    if (present != PassOver) {
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

bool Answers(const char* /*display*/) {
    return true;
}

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
