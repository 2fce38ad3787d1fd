// SPDX-License-Identifier: MIT
#include "platform/linux/windows/sway/SwayTree.h"

#include <string_view>
#include <utility>

namespace vantle {

namespace {

const Json* childWithId(const Json& node, std::uint64_t id) {
  for (const char* children : {"nodes", "floating_nodes"}) {
    for (const Json& child : node.arrayAt(children)) {
      if (child.unsignedAt("id") == id) return &child;
    }
  }
  return nullptr;
}

void collect(const Json& node, std::vector<ToldWindow>& windows) {
  if (std::optional<ToldWindow> window = swayWindowOf(node)) windows.push_back(std::move(*window));
  for (const char* children : {"nodes", "floating_nodes"}) {
    for (const Json& child : node.arrayAt(children)) collect(child, windows);
  }
}

// Every node names its children in the order in which they had the focus.
WindowId frontBelow(const Json& root) {
  const Json* node = &root;
  while (!node->arrayAt("focus").empty()) {
    const std::optional<std::uint64_t> id = node->arrayAt("focus").front().asUnsigned();
    node = id ? childWithId(*node, *id) : nullptr;
    if (node == nullptr) return 0;
  }
  const std::optional<ToldWindow> window = swayWindowOf(*node);
  return window ? window->facts.id : 0;
}

} // namespace

std::optional<ToldWindow> swayWindowOf(const Json& node) {
  const std::uint64_t id = node.unsignedAt("id").value_or(0);
  if (id == 0 || node.find("pid") == nullptr) return std::nullopt;
  ToldWindow window;
  window.toldPid = node.integerAt("pid").value_or(0);
  window.facts.id = id;
  window.facts.applicationId = node.textAt("app_id").value_or("");
  if (const Json* properties = node.find("window_properties")) {
    window.facts.instance = properties->textAt("instance").value_or("");
    window.facts.className = properties->textAt("class").value_or("");
  }
  window.facts.canBeClosed = true;
  return window;
}

std::optional<SwayTree> swayTreeOf(const Json& root) {
  if (root.find("nodes") == nullptr) return std::nullopt;
  SwayTree tree;
  collect(root, tree.windows);
  tree.front = frontBelow(root);
  return tree;
}

} // namespace vantle
