// SPDX-License-Identifier: MIT
#include "tests/support/AccessibleTree.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace vantle::desktop {

namespace {

constexpr const char* accessible = "org.a11y.atspi.Accessible";
constexpr const char* action = "org.a11y.atspi.Action";
constexpr const char* root = "/org/a11y/atspi/accessible/root";

// Numbers of the states in atspi-constants.h.
constexpr int checkedState = 4;
constexpr int focusableState = 11;
constexpr int focusedState = 12;
constexpr int selectedState = 23;
constexpr int showingState = 25;

bool holds(std::uint64_t states, int number) { return (states >> number & 1U) != 0; }

// The answer to a call; reading from one that failed yields nothing.
class Answer {
 public:
  template <class... Arguments>
  Answer(sd_bus* bus, const std::string& owner, const std::string& path, const char* interface,
         const char* member, const char* types = "", Arguments... arguments)
      : m_arrived(sd_bus_call_method(bus, owner.c_str(), path.c_str(), interface, member, nullptr, &m_message,
                                     types, arguments...) >= 0) {}
  ~Answer() { sd_bus_message_unref(m_message); }
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;

  template <class... Places> bool read(const char* types, Places*... places) const {
    return m_arrived && sd_bus_message_read(m_message, types, places...) > 0;
  }
  bool enterArray(const char* types) const {
    return m_arrived && sd_bus_message_enter_container(m_message, SD_BUS_TYPE_ARRAY, types) > 0;
  }

 private:
  sd_bus_message* m_message = nullptr;
  bool m_arrived;
};

sd_bus* connected(const std::string& address) {
  sd_bus* bus = nullptr;
  const bool done = sd_bus_new(&bus) >= 0 && sd_bus_set_address(bus, address.c_str()) >= 0 &&
                    sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
  if (!done) throw std::runtime_error("no connection to " + address);
  return bus;
}

std::string addressOfAccessibilityBus(const std::string& sessionBus) {
  const std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> session(connected(sessionBus),
                                                                             &sd_bus_flush_close_unref);
  const char* address = nullptr;
  const Answer answer(session.get(), "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
  if (!answer.read("s", &address)) throw std::runtime_error("the accessibility bus has no address");
  return address;
}

} // namespace

bool AccessibleTree::Node::isChecked() const { return holds(states, checkedState); }
bool AccessibleTree::Node::isFocused() const { return holds(states, focusedState); }
bool AccessibleTree::Node::isFocusable() const { return holds(states, focusableState); }
bool AccessibleTree::Node::isSelected() const { return holds(states, selectedState); }

AccessibleTree::AccessibleTree(VirtualDesktop& desktop) {
  desktop.launch({"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"});
  desktop.waitForBusName("org.a11y.Bus");
  m_bus = connected(addressOfAccessibilityBus(desktop.busAddress()));
}

AccessibleTree::~AccessibleTree() { sd_bus_flush_close_unref(m_bus); }

std::vector<AccessibleTree::Address> AccessibleTree::childrenOf(const Address& parent) {
  std::vector<Address> children;
  const Answer answer(m_bus, parent.owner, parent.path, accessible, "GetChildren");
  if (!answer.enterArray("(so)")) return children;
  const char* owner = nullptr;
  const char* path = nullptr;
  while (answer.read("(so)", &owner, &path)) children.push_back({owner, path});
  return children;
}

std::string AccessibleTree::text(const Address& item, const char* property) {
  char* value = nullptr;
  if (sd_bus_get_property_string(m_bus, item.owner.c_str(), item.path.c_str(), accessible, property, nullptr,
                                 &value) < 0) {
    return {};
  }
  const std::unique_ptr<char, decltype(&std::free)> owned(value, &std::free);
  return value;
}

std::uint64_t AccessibleTree::states(const Address& item) {
  const Answer answer(m_bus, item.owner, item.path, accessible, "GetState");
  std::uint64_t all = 0;
  if (!answer.enterArray("u")) return all;
  std::uint32_t part = 0;
  for (int shift = 0; shift < 64 && answer.read("u", &part); shift += 32)
    all |= static_cast<std::uint64_t>(part) << shift;
  return all;
}

AccessibleTree::Node AccessibleTree::read(const Address& item, std::uint64_t states) {
  Node node;
  node.states = states;
  node.owner = item.owner;
  node.path = item.path;
  node.name = text(item, "Name");
  node.description = text(item, "Description");
  const char* role = nullptr;
  if (const Answer answer(m_bus, item.owner, item.path, accessible, "GetRoleName"); answer.read("s", &role))
    node.role = role;
  constexpr std::uint32_t onTheScreen = 0;
  int width = 0;
  int height = 0;
  const Answer extents(m_bus, item.owner, item.path, "org.a11y.atspi.Component", "GetExtents", "u",
                       onTheScreen);
  if (extents.read("(iiii)", &node.x, &node.y, &width, &height)) {
    node.x += width / 2;
    node.y += height / 2;
  }
  return node;
}

void AccessibleTree::collect(const Address& item, std::vector<Node>& nodes) {
  const std::uint64_t now = states(item);
  if (holds(now, showingState)) nodes.push_back(read(item, now));
  for (const Address& child : childrenOf(item)) collect(child, nodes);
}

std::vector<AccessibleTree::Node> AccessibleTree::shownBy(const std::string& app) {
  std::vector<Node> nodes;
  for (const Address& each : childrenOf({"org.a11y.atspi.Registry", root})) {
    if (text(each, "Name") != app) continue;
    for (const Address& window : childrenOf(each)) collect(window, nodes);
  }
  return nodes;
}

std::optional<AccessibleTree::Node> AccessibleTree::control(const std::string& app, const std::string& name) {
  constexpr std::array roles{"push button", "check box", "radio button", "page tab", "menu item"};
  for (Node& node : shownBy(app)) {
    const bool isControl =
        std::any_of(roles.begin(), roles.end(), [&](const char* role) { return node.role == role; });
    if (isControl && node.name == name) return std::move(node);
  }
  return {};
}

bool AccessibleTree::shows(const std::string& app, const std::string& name) {
  const std::vector<Node> nodes = shownBy(app);
  return std::any_of(nodes.begin(), nodes.end(), [&](const Node& node) { return node.name == name; });
}

bool AccessibleTree::lists(const std::string& app, const std::string& name) {
  const std::vector<Node> nodes = shownBy(app);
  return std::any_of(nodes.begin(), nodes.end(), [&](const Node& node) {
    return node.role == "list item" && node.name.starts_with(name + ", ");
  });
}

bool AccessibleTree::press(const Node& node) {
  const Answer actions(m_bus, node.owner, node.path, action, "GetActions");
  if (!actions.enterArray("(sss)")) return false;
  const char* name = nullptr;
  const char* description = nullptr;
  const char* keys = nullptr;
  for (int index = 0; actions.read("(sss)", &name, &description, &keys); ++index) {
    if (std::string_view(name) != "Press") continue;
    int done = 0;
    const Answer answer(m_bus, node.owner, node.path, action, "DoAction", "i", index);
    return answer.read("b", &done) && done != 0;
  }
  return false;
}

} // namespace vantle::desktop
