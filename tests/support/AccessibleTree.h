// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/VirtualDesktop.h"

#include <cstdint>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace vantle::desktop {

// What assistive programs see of the apps of a desktop, over its accessibility bus. Programs that are to be
// seen start after it and need QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1.
class AccessibleTree {
 public:
  struct Node {
    std::string role; // "push button", "check box", "page tab", "static", "heading" …
    std::string name;
    std::string description;
    int x = 0; // of its middle, on the screen
    int y = 0;
    std::uint64_t states = 0;
    std::string owner; // its address
    std::string path;

    bool isChecked() const;
    bool isFocused() const;
    bool isFocusable() const;
    bool isSelected() const;
  };

  // Starts the bus. An exception when it does not come up.
  explicit AccessibleTree(VirtualDesktop& desktop);
  ~AccessibleTree();
  AccessibleTree(const AccessibleTree&) = delete;
  AccessibleTree& operator=(const AccessibleTree&) = delete;

  // Everything that the app of that name shows now; empty when there is no such app.
  std::vector<Node> shownBy(const std::string& app);
  // The first of it with that name, in one of the roles of things to press.
  std::optional<Node> control(const std::string& app, const std::string& name);
  bool shows(const std::string& app, const std::string& name); // whatever it is
  // A line of a list that begins with it: "NAME, …".
  bool lists(const std::string& app, const std::string& name);
  // Has it do what a press does; false when it has no such action.
  bool press(const Node& node);

 private:
  struct Address {
    std::string owner;
    std::string path;
  };

  std::vector<Address> childrenOf(const Address& parent);
  std::string text(const Address& item, const char* property);
  std::uint64_t states(const Address& item);
  Node read(const Address& item, std::uint64_t states);
  void collect(const Address& item, std::vector<Node>& nodes);

  sd_bus* m_bus = nullptr;
};

} // namespace vantle::desktop
