// SPDX-License-Identifier: MIT
#include "desktop/linux/window/Compositing.h"

#include "platform/linux/x11/X11Connection.h"

namespace vantle {
namespace {

// A compositor of the first screen owns this selection.
constexpr char compositorSelection[] = "_NET_WM_CM_S0";

// One question on a connection of its own: answers on the toolkit's can only be waited for.
class Question {
 public:
  Question(EventLoop& loop, const std::string& display)
      : m_server(loop, display,
                 {.ready = [this] { ask(); },
                  .event = [](const xcb_generic_event_t&) {},
                  .turnEnded = [] {},
                  .lost = [] {}}) {}

  bool answer(std::chrono::milliseconds limit) { return m_server.settle(limit) && m_isOwned; }

 private:
  void ask() {
    m_server.learn(compositorSelection, [this](xcb_atom_t selection) { askForOwner(selection); });
  }

  void askForOwner(xcb_atom_t selection) {
    const auto cookie = xcb_get_selection_owner(m_server.raw(), selection);
    m_server.expect(cookie.sequence, [this](const void* reply) {
      const auto* owner = static_cast<const xcb_get_selection_owner_reply_t*>(reply);
      m_isOwned = owner != nullptr && owner->owner != XCB_NONE;
    });
  }

  bool m_isOwned = false;
  X11Connection m_server;
};

} // namespace

bool screenIsComposited(EventLoop& loop, const std::string& display, std::chrono::milliseconds limit) {
  return Question(loop, display).answer(limit);
}

} // namespace vantle
