// SPDX-License-Identifier: MIT
#include "desktop/linux/window/TaskBars.h"

#include <QGuiApplication>
#include <QWindow>
#include <array>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <xcb/xcb.h>

namespace vantle {
namespace {

struct Freed {
  void operator()(void* reply) const { std::free(reply); }
};

template <std::size_t count> std::array<xcb_atom_t, count>
atomsOf(xcb_connection_t* server, const std::array<std::string_view, count>& names) {
  std::array<xcb_intern_atom_cookie_t, count> asked{};
  for (std::size_t at = 0; at < count; ++at)
    asked[at] = xcb_intern_atom(server, 0, static_cast<std::uint16_t>(names[at].size()), names[at].data());
  std::array<xcb_atom_t, count> atoms{};
  for (std::size_t at = 0; at < count; ++at) {
    const std::unique_ptr<xcb_intern_atom_reply_t, Freed> reply(
        xcb_intern_atom_reply(server, asked[at], nullptr));
    if (reply) atoms[at] = reply->atom;
  }
  return atoms;
}

} // namespace

// On the toolkit's own connection, so that it comes before the toolkit shows the window; it adds its own
// wishes to those that it finds. The names are asked for once, at the first showing, for which the toolkit
// waits for the server anyway.
void keepOffTaskBars(QWindow& window) {
  auto* const toolkit = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
  if (toolkit == nullptr || window.isVisible()) return;
  xcb_connection_t* const server = toolkit->connection();
  static const auto atoms =
      atomsOf<3>(server, {"_NET_WM_STATE", "_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"});
  window.create();
  xcb_change_property(server, XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window.winId()), atoms[0],
                      XCB_ATOM_ATOM, 32, 2, &atoms[1]);
}

} // namespace vantle
