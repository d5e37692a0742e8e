#pragma once

/// Asks whoever shows windows for a sign of life: Xlib and Wayland's library wait for an answer
/// without a limit. On other systems than Linux it always answers. Private to the windows' code.
///
/// The connection stays open as long as the probe stands, if it was answered: a server that goes
/// with its last client must not take the probe for it.
class ScreenProbe {
  public:
    ScreenProbe() = default;
    ~ScreenProbe();
    ScreenProbe(const ScreenProbe&) = delete;
    ScreenProbe& operator=(const ScreenProbe&) = delete;

    /// Whether somebody answers at the X display of this name, within less than a second.
    bool XAnswers(const char* name);
    /// The same for the Wayland display of this name.
    bool WaylandAnswers(const char* name);

  private:
    void Open(int family) noexcept;
    void Close() noexcept;

    int m_handle = -1;
};
