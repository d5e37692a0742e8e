#include "platform/maverik/ScreenProbe.h"

#if defined(__linux__)

#include <X11/Xauth.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// X and Wayland may both have to be waited for, and a start takes 2 s at the most.
constexpr std::chrono::milliseconds kPatience{700};
constexpr int kFirstPort = 6000;
constexpr int kMostDisplays = 59535;  // the last has port 65535
constexpr const char* kXSockets = "/tmp/.X11-unix/X";
constexpr std::string_view kCookie = "MIT-MAGIC-COOKIE-1";

enum class Finding { kNobody, kSilence, kAnswer };

struct Place {
    sockaddr_storage address = {};
    socklen_t size = 0;
};

/// False if nothing has happened when it is `end`.
bool Await(int handle, short events, Clock::time_point end) {
    pollfd ready = {handle, events, 0};
    int result = -1;
    do {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        result = poll(&ready, 1, static_cast<int>(std::max<long long>(left.count(), 0)));
    } while (result < 0 && errno == EINTR);
    return result == 1;
}

/// Connects, says `request`, and waits for the first that comes back. A connection that is closed
/// is an answer too: nobody will wait there.
Finding Ask(int handle, const Place& place, const std::string& request, Clock::time_point end) {
    const auto* const address = reinterpret_cast<const sockaddr*>(&place.address);
    int error = connect(handle, address, place.size) == 0 ? 0 : errno;
    if (error == EAGAIN) {
        // So many wait there already that no more may.
        return Finding::kSilence;
    }
    if (error == EINPROGRESS) {
        if (!Await(handle, POLLOUT, end)) {
            return Finding::kSilence;
        }
        socklen_t size = sizeof error;
        getsockopt(handle, SOL_SOCKET, SO_ERROR, &error, &size);
    }
    if (error != 0) {
        return Finding::kNobody;
    }
    send(handle, request.data(), request.size(), MSG_NOSIGNAL);
    return Await(handle, POLLIN, end) ? Finding::kAnswer : Finding::kSilence;
}

/// `path` may begin with a zero, for a name that is in no folder.
std::optional<Place> LocalPlace(const std::string& path) {
    Place place;
    auto* const local = reinterpret_cast<sockaddr_un*>(&place.address);
    if (path.size() >= sizeof local->sun_path) {
        return std::nullopt;
    }
    local->sun_family = AF_UNIX;
    std::memcpy(local->sun_path, path.data(), path.size());
    place.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + path.size());
    if (path[0] != '\0') {
        ++place.size;
    }
    return place;
}

// ---- Addresses in a network --------------------------------------------------------------------

std::vector<Place> LookUp(const std::string& host, int port, int flags) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = flags;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) {
        return {};
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(found, freeaddrinfo);
    std::vector<Place> places;
    for (const addrinfo* one = found; one != nullptr; one = one->ai_next) {
        std::memcpy(&places.emplace_back().address, one->ai_addr, one->ai_addrlen);
        places.back().size = one->ai_addrlen;
    }
    return places;
}

/// Places that may be found too late for whoever asked.
struct Question {
    std::mutex mutex;
    std::condition_variable answered;
    std::optional<std::vector<Place>> answer;
};

std::vector<Place> NetworkPlaces(const std::string& host, int port, Clock::time_point end) {
    std::vector<Place> places = LookUp(host, port, AI_NUMERICHOST);
    if (!places.empty()) {
        return places;
    }
    // Names are looked up without a limit in time, so not on this thread. Nobody waits for the
    // other one: the library is never unloaded.
    const auto question = std::make_shared<Question>();
    try {
        std::thread([question, host, port] {
            std::optional<std::vector<Place>> found(std::in_place);
            try {
                found = LookUp(host, port, 0);
            } catch (const std::bad_alloc&) {
                // As good as none.
            }
            const std::lock_guard lock(question->mutex);
            question->answer.swap(found);
            question->answered.notify_all();
        }).detach();
    } catch (const std::system_error&) {
        return places;
    }
    std::unique_lock lock(question->mutex);
    if (question->answered.wait_until(lock, end, [&] { return question->answer.has_value(); })) {
        places.swap(*question->answer);
    }
    return places;
}

// ---- X -----------------------------------------------------------------------------------------

/// [protocol/][host]:number[.screen]
struct XDisplay {
    std::string protocol;
    std::string host;
    int number = 0;
};

std::optional<XDisplay> ParseXDisplay(const std::string& name) {
    const std::size_t colon = name.rfind(':');
    if (colon == std::string::npos) {
        return std::nullopt;
    }
    XDisplay display;
    const char* const end = name.data() + name.size();
    if (std::from_chars(name.data() + colon + 1, end, display.number).ec != std::errc() ||
        display.number < 0 || display.number > kMostDisplays) {
        return std::nullopt;
    }
    display.host = name.substr(0, colon);
    const std::size_t slash = display.host.rfind('/');
    if (slash != std::string::npos) {
        display.protocol = display.host.substr(0, slash);
        display.host.erase(0, slash + 1);
    }
    if (display.host.size() > 2 && display.host.front() == '[' && display.host.back() == ']') {
        display.host = display.host.substr(1, display.host.size() - 2);
    }
    return display;
}

/// Where Xlib looks for the server, one after the other.
std::vector<Place> XPlaces(const XDisplay& display, Clock::time_point end) {
    const auto& [protocol, host, number] = display;
    if (!host.empty() && host != "unix" && protocol != "unix") {
        return NetworkPlaces(host, kFirstPort + number, end);
    }
    const std::string path = kXSockets + std::to_string(number);
    std::vector<Place> places = {*LocalPlace('\0' + path), *LocalPlace(path)};
    if (host.empty() && protocol.empty()) {
        for (const char* self : {"127.0.0.1", "::1"}) {
            const std::vector<Place> found = LookUp(self, kFirstPort + number, AI_NUMERICHOST);
            places.insert(places.end(), found.begin(), found.end());
        }
    }
    return places;
}

bool IsLoopback(const Place& place) {
    const auto* const v4 = reinterpret_cast<const sockaddr_in*>(&place.address);
    const auto* const v6 = reinterpret_cast<const sockaddr_in6*>(&place.address);
    return place.address.ss_family == AF_INET6 ? IN6_IS_ADDR_LOOPBACK(&v6->sin6_addr)
                                               : ntohl(v4->sin_addr.s_addr) == INADDR_LOOPBACK;
}

/// The secret that the server at this place wants to be told; empty if none is known.
std::string CookieFor(const Place& place, int number) {
    constexpr unsigned short kInternet = 0;
    constexpr unsigned short kInternet6 = 6;
    std::array<char, 256> host = {};
    gethostname(host.data(), host.size() - 1);
    // Servers on this machine go by its name.
    auto family = static_cast<unsigned short>(FamilyLocal);
    std::string_view address = host.data();
    if (place.address.ss_family != AF_UNIX && !IsLoopback(place)) {
        const bool isV6 = place.address.ss_family == AF_INET6;
        family = isV6 ? kInternet6 : kInternet;
        address = {reinterpret_cast<const char*>(&place.address) +
                       (isV6 ? offsetof(sockaddr_in6, sin6_addr) : offsetof(sockaddr_in, sin_addr)),
                   isV6 ? sizeof(in6_addr) : sizeof(in_addr)};
    }
    // Xlib needs this library as well: nothing new is linked.
    void* const library = dlopen("libXau.so.6", RTLD_LAZY);
    if (library == nullptr) {
        return {};
    }
    const auto get =
        reinterpret_cast<decltype(&XauGetAuthByAddr)>(dlsym(library, "XauGetAuthByAddr"));
    const auto dispose =
        reinterpret_cast<decltype(&XauDisposeAuth)>(dlsym(library, "XauDisposeAuth"));
    std::string cookie;
    if (get != nullptr && dispose != nullptr) {
        const std::string digits = std::to_string(number);
        const auto size = [](std::string_view text) {
            return static_cast<unsigned short>(text.size());
        };
        Xauth* const entry = get(family, size(address), address.data(), size(digits), digits.data(),
                                 size(kCookie), kCookie.data());
        if (entry != nullptr) {
            cookie.assign(entry->data, entry->data_length);
            dispose(entry);
        }
    }
    dlclose(library);
    return cookie;
}

/// The first that a client of X says.
std::string XGreeting(const std::string& cookie) {
    constexpr bool kBig = std::endian::native == std::endian::big;
    const bool hasCookie = !cookie.empty();
    const std::uint16_t greeting[] = {kBig ? 'B' << 8 : 'l',
                                      11,  // version 11.0
                                      0,
                                      static_cast<std::uint16_t>(hasCookie ? kCookie.size() : 0),
                                      static_cast<std::uint16_t>(cookie.size()),
                                      0};
    std::string text(reinterpret_cast<const char*>(greeting), sizeof greeting);
    for (const std::string_view part : {hasCookie ? kCookie : "", std::string_view(cookie)}) {
        text += part;
        text.resize((text.size() + 3) / 4 * 4);
    }
    return text;
}

}  // namespace

ScreenProbe::~ScreenProbe() {
    Close();
}

void ScreenProbe::Close() noexcept {
    if (m_handle >= 0) {
        close(m_handle);
        m_handle = -1;
    }
}

bool ScreenProbe::XAnswers(const char* name) {
    const auto end = Clock::now() + kPatience;
    const std::optional<XDisplay> display = ParseXDisplay(name);
    if (!display) {
        return false;
    }
    for (const Place& place : XPlaces(*display, end)) {
        const std::string greeting = XGreeting(CookieFor(place, display->number));
        Open(place.address.ss_family);
        const Finding finding = Ask(m_handle, place, greeting, end);
        if (finding != Finding::kNobody) {
            return finding == Finding::kAnswer;
        }
    }
    return false;
}

bool ScreenProbe::WaylandAnswers(const char* name) {
    std::string path = *name == '\0' ? "wayland-0" : name;
    if (path[0] != '/') {
        const char* const folder = std::getenv("XDG_RUNTIME_DIR");
        path = std::string(folder == nullptr ? "" : folder) + '/' + path;
    }
    // wl_display.sync with the new object 2, 12 bytes in the machine's own order.
    constexpr std::uint32_t kSync[] = {1, 12 << 16, 2};
    const std::string request(reinterpret_cast<const char*>(kSync), sizeof kSync);
    const std::optional<Place> place = LocalPlace(path);
    if (!place) {
        return false;
    }
    Open(AF_UNIX);
    return Ask(m_handle, *place, request, Clock::now() + kPatience) == Finding::kAnswer;
}

void ScreenProbe::Open(int family) noexcept {
    Close();
    m_handle = socket(family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
}

#else

ScreenProbe::~ScreenProbe() = default;

bool ScreenProbe::XAnswers(const char* /*display*/) {
    return true;
}

bool ScreenProbe::WaylandAnswers(const char* /*display*/) {
    return true;
}

#endif
