// SPDX-License-Identifier: MIT
#include "panel/Compositing.h"

#include <QGuiApplication>
#include <cstdlib>
#include <memory>
#include <qguiapplication_platform.h>
#include <xcb/xcb.h>

namespace vantle {
namespace {

template <class Reply> using ReplyPointer = std::unique_ptr<Reply, decltype(&std::free)>;

// A compositor of the first screen owns this selection.
constexpr char compositorSelection[] = "_NET_WM_CM_S0";

} // namespace

bool screenIsComposited() {
  const auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
  if (x11 == nullptr || x11->connection() == nullptr)
    return true; // Wayland always is, and pictures keep their corners
  xcb_connection_t* connection = x11->connection();
  const auto atomCookie =
      xcb_intern_atom(connection, false, sizeof(compositorSelection) - 1, compositorSelection);
  const ReplyPointer<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(connection, atomCookie, nullptr),
                                                   &std::free);
  if (!atom) return false;
  const auto ownerCookie = xcb_get_selection_owner(connection, atom->atom);
  const ReplyPointer<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(connection, ownerCookie, nullptr), &std::free);
  return owner && owner->owner != XCB_NONE;
}

} // namespace vantle
