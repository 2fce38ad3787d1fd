// SPDX-License-Identifier: MIT
#include "platform/linux/windows/toplevels/ToplevelConnection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <foreign_toplevel-client.h>
#include <poll.h>
#include <string_view>
#include <sys/ioctl.h>
#include <utility>
#include <wayland-client.h>

namespace vantle {

using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds longestTurn{10};
constexpr std::uint32_t latestVersion = 3; // that is known here
// Requests without arguments that are sent at a time: 8 bytes each, of which the library keeps 4096 for a
// compositor that does not read, and ends the program when there are more.
constexpr std::size_t mostAtATime = 100;

// The longest message there can be: its length has 16 bits. From 1.23 on the library would wait without end
// for the rest of what is none, and keep all that comes meanwhile.
void boundWaitingBytes([[maybe_unused]] wl_display* display) {
#if WAYLAND_VERSION_MAJOR > 1 || WAYLAND_VERSION_MINOR >= 23
  constexpr std::size_t longestMessage = 64 * 1024;
  wl_display_set_max_buffer_size(display, longestMessage);
#endif
}

// When its place is full, the library reads no more and says nothing. More may have come while it read, but
// not time after time.
constexpr int mostTurnsUnread = 3;
int bytesWaiting(int descriptor) {
  int count = 0;
  return ::ioctl(descriptor, FIONREAD, &count) == 0 ? count : 0;
}

bool holdsActivated(const wl_array& states) {
  const std::string_view bytes(static_cast<const char*>(states.data), states.size);
  for (std::size_t at = 0; at + sizeof(std::uint32_t) <= bytes.size(); at += sizeof(std::uint32_t)) {
    std::uint32_t state = 0;
    std::memcpy(&state, bytes.data() + at, sizeof state);
    if (state == ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) return true;
  }
  return false;
}

// Without a word to the compositor.
void dropProxy(zwlr_foreign_toplevel_handle_v1* proxy) {
  wl_proxy_destroy(reinterpret_cast<wl_proxy*>(proxy)); // NOLINT: every object is one
}

} // namespace

// The library calls these with what was handed in for the object.
struct ToplevelConnection::Listeners {
  using HandleProxy = zwlr_foreign_toplevel_handle_v1;
  using ManagerProxy = zwlr_foreign_toplevel_manager_v1;

  static ToplevelConnection& self(void* data) { return *static_cast<ToplevelConnection*>(data); }
  static Handle& handle(void* data) { return *static_cast<Handle*>(data); }

  static void global(void* data, wl_registry* registry, std::uint32_t name, const char* interface,
                     std::uint32_t version) {
    self(data).takeInterface(registry, name, interface, version);
  }
  static void globalRemoved(void* /*data*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}
  static void roundDone(void* data, wl_callback* /*callback*/, std::uint32_t /*serial*/) {
    self(data).takeRound();
  }
  static void toplevel(void* data, ManagerProxy* /*manager*/, HandleProxy* proxy) { self(data).add(proxy); }
  static void finished(void* data, ManagerProxy* /*manager*/) { self(data).m_isFinished = true; }

  static void title(void* /*data*/, HandleProxy* /*proxy*/, const char* /*title*/) {}
  static void applicationId(void* data, HandleProxy* /*proxy*/, const char* id) {
    handle(data).told.applicationId = id;
  }
  static void output(void* /*data*/, HandleProxy* /*proxy*/, wl_output* /*output*/) {}
  static void state(void* data, HandleProxy* /*proxy*/, wl_array* states) {
    handle(data).told.isActive = holdsActivated(*states);
  }
  static void done(void* data, HandleProxy* /*proxy*/) { handle(data).connection->commit(handle(data)); }
  static void closed(void* data, HandleProxy* /*proxy*/) { handle(data).connection->remove(handle(data)); }
  static void parent(void* /*data*/, HandleProxy* /*proxy*/, HandleProxy* /*parent*/) {}

  static constexpr wl_registry_listener ofRegistry{.global = global, .global_remove = globalRemoved};
  static constexpr wl_callback_listener ofRound{.done = roundDone};
  static constexpr zwlr_foreign_toplevel_manager_v1_listener ofManager{.toplevel = toplevel,
                                                                       .finished = finished};
  static constexpr zwlr_foreign_toplevel_handle_v1_listener ofHandle{.title = title,
                                                                     .app_id = applicationId,
                                                                     .output_enter = output,
                                                                     .output_leave = output,
                                                                     .state = state,
                                                                     .done = done,
                                                                     .closed = closed,
                                                                     .parent = parent};
};

// The library owns the descriptor that it gets.
ToplevelConnection::ToplevelConnection(EventLoop& loop, Descriptor socket, Handlers handlers)
    : m_loop(loop), m_handlers(std::move(handlers)) {
  const int owned = ::fcntl(socket.get(), F_DUPFD_CLOEXEC, 0);
  m_display = owned < 0 ? nullptr : wl_display_connect_to_fd(owned);
  if (m_display == nullptr) return;
  boundWaitingBytes(m_display);
  m_isOpen = true;
  m_registry = wl_display_get_registry(m_display);
  wl_registry_add_listener(m_registry, &Listeners::ofRegistry, this);
  awaitRound();
  m_readable = m_loop.watch(descriptor(), EventLoop::Readiness::readable, [this] { pump(); });
  flush();
}

ToplevelConnection::~ToplevelConnection() {
  if (m_display == nullptr) return;
  for (const auto& handle : m_closed) dropProxy(handle->proxy);
  for (const auto& [id, handle] : m_handles) dropProxy(handle->proxy);
  if (m_manager != nullptr) zwlr_foreign_toplevel_manager_v1_destroy(m_manager);
  if (m_seat != nullptr) wl_seat_destroy(m_seat);
  if (m_round != nullptr) wl_callback_destroy(m_round);
  wl_registry_destroy(m_registry);
  wl_display_disconnect(m_display);
}

int ToplevelConnection::descriptor() const { return wl_display_get_fd(m_display); }

void ToplevelConnection::awaitRound() {
  m_round = wl_display_sync(m_display);
  wl_callback_add_listener(m_round, &Listeners::ofRound, this);
}

void ToplevelConnection::takeInterface(wl_registry* registry, std::uint32_t name, const char* interface,
                                       std::uint32_t version) {
  constexpr std::uint32_t firstVersion = 1; // nothing is asked of it
  if (m_seat == nullptr && std::string_view(interface) == wl_seat_interface.name)
    m_seat = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, firstVersion));
  if (m_manager != nullptr || std::string_view(interface) != zwlr_foreign_toplevel_manager_v1_interface.name)
    return;
  m_manager = static_cast<zwlr_foreign_toplevel_manager_v1*>(wl_registry_bind(
      registry, name, &zwlr_foreign_toplevel_manager_v1_interface, std::min(version, latestVersion)));
  zwlr_foreign_toplevel_manager_v1_add_listener(m_manager, &Listeners::ofManager, this);
}

// The first says that all interfaces were told, the second all windows.
void ToplevelConnection::takeRound() {
  wl_callback_destroy(std::exchange(m_round, nullptr));
  if (m_manager == nullptr || m_isRegistered) {
    m_isListed = true;
  } else {
    m_isRegistered = true;
    awaitRound();
  }
}

void ToplevelConnection::add(zwlr_foreign_toplevel_handle_v1* proxy) {
  const WindowId id = ++m_lastId;
  auto handle = std::make_unique<Handle>(Handle{.connection = this, .id = id, .proxy = proxy});
  zwlr_foreign_toplevel_handle_v1_add_listener(proxy, &Listeners::ofHandle, handle.get());
  m_handles.emplace(id, std::move(handle));
}

void ToplevelConnection::commit(const Handle& handle) {
  if (handle.isClosed) return;
  m_toplevels[handle.id] = handle.told;
  if (handle.told.isActive) m_active = handle.id;
  if (!handle.told.isActive && m_active == handle.id) m_active = 0;
}

// What the library has for it stays until the compositor is told, as does what is called for it.
void ToplevelConnection::remove(Handle& handle) {
  if (std::exchange(handle.isClosed, true)) return;
  m_toplevels.erase(handle.id);
  if (m_active == handle.id) m_active = 0;
  const auto kept = m_handles.find(handle.id);
  m_closed.push_back(std::move(kept->second));
  m_handles.erase(kept);
}

// Null when there is no such window, or the compositor cannot be asked now.
zwlr_foreign_toplevel_handle_v1* ToplevelConnection::proxyToAsk(WindowId window) {
  const auto handle = m_handles.find(window);
  return !m_isOpen || handle == m_handles.end() || !flush() ? nullptr : handle->second->proxy;
}

bool ToplevelConnection::requestClose(WindowId window) {
  zwlr_foreign_toplevel_handle_v1* const proxy = proxyToAsk(window);
  if (proxy == nullptr) return false;
  zwlr_foreign_toplevel_handle_v1_close(proxy);
  flush();
  return true;
}

bool ToplevelConnection::requestFront(WindowId window) {
  zwlr_foreign_toplevel_handle_v1* const proxy = m_seat != nullptr ? proxyToAsk(window) : nullptr;
  if (proxy == nullptr) return false;
  zwlr_foreign_toplevel_handle_v1_activate(proxy, m_seat);
  flush();
  return true;
}

// An error here is the end of the connection, which reading finds as well: nobody is called back from within
// a request.
bool ToplevelConnection::flush() {
  const bool isBlocked = wl_display_flush(m_display) < 0 && errno == EAGAIN;
  if (!isBlocked) {
    m_writable.reset();
  } else if (!m_writable) {
    m_writable = m_loop.watch(descriptor(), EventLoop::Readiness::writable, [this] { destroyClosed(); });
  }
  return !isBlocked;
}

void ToplevelConnection::destroyClosed() {
  while (flush() && !m_closed.empty()) {
    const std::size_t count = std::min(m_closed.size(), mostAtATime);
    for (std::size_t at = 0; at < count; ++at) {
      zwlr_foreign_toplevel_handle_v1_destroy(m_closed.back()->proxy);
      m_closed.pop_back();
    }
  }
}

// Everything that was read is handled at once, so that nothing is left which would wake nobody up.
bool ToplevelConnection::pump() {
  if (!m_isOpen) return true;
  const SteadyClock::time_point end = SteadyClock::now() + longestTurn;
  int handled = 1;
  while (handled > 0 && SteadyClock::now() < end) {
    const int waiting = bytesWaiting(descriptor());
    const bool isToBeRead = wl_display_prepare_read(m_display) == 0;
    if (isToBeRead && wl_display_read_events(m_display) < 0) return lose(), true;
    handled = wl_display_dispatch_pending(m_display);
    const bool isUnread = handled == 0 && waiting > 0 && bytesWaiting(descriptor()) >= waiting;
    m_turnsUnread = isUnread ? m_turnsUnread + 1 : 0;
    if (m_turnsUnread == mostTurnsUnread) return lose(), true;
  }
  if (handled < 0 || m_isFinished || (m_isListed && m_manager == nullptr)) return lose(), true;
  destroyClosed();
  m_handlers.turnEnded();
  return handled == 0;
}

void ToplevelConnection::waitForNews(std::chrono::milliseconds limit) const {
  const int wanted = POLLIN | (m_writable ? POLLOUT : 0);
  pollfd waiting{descriptor(), static_cast<short>(wanted), 0};
  ::poll(&waiting, 1, static_cast<int>(limit.count()));
}

void ToplevelConnection::lose() {
  m_isOpen = false;
  m_readable.reset();
  m_writable.reset();
  m_toplevels.clear();
  m_active = 0;
  m_handlers.lost();
}

} // namespace vantle
