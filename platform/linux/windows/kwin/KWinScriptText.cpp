// SPDX-License-Identifier: MIT
#include "platform/linux/windows/kwin/KWinScriptText.h"

#include "base/Json.h"
#include "platform/linux/windows/fed/FedWindows.h"

#include <utility>

namespace vantle {

namespace {

// Names of 6 first, then those of 5.
constexpr const char* windows = R"js(
var isNew = workspace.windowList !== undefined;
function all() { return isNew ? workspace.windowList() : workspace.clientList(); }
)js";

// X windows tell their process and class themselves, true or not; the X server knows better. Which ones they
// are only the name of the class inside KWin says. Windows of an input method and the like come and go
// without being anybody's.
constexpr const char* feed = R"js(
function isX11(w) { return /^KWin::(X11|Xwayland)/.test(String(w)); }
function text(value) { return value ? String(value) : ""; }
function kind(w) {
  if (w.dock || w.desktopWindow) return "shell";
  return w.normalWindow || w.dialog || w.utility || w.splash || w.toolbar || w.menu ? "ordinary" : "passing";
}
function told(w) {
  callDBus(listener, path, feed, "Window", w.internalId.toString(), w.pid, text(w.resourceClass),
           text(w.resourceName), text(w.desktopFileName), kind(w), isX11(w));
}
function opened(w) {
  told(w);
  w.desktopFileNameChanged.connect(function() { told(w); });
}
function gone(w) { callDBus(listener, path, feed, "Gone", w.internalId.toString()); }
function front(w) { callDBus(listener, path, feed, "Front", w ? w.internalId.toString() : ""); }

callDBus(listener, path, feed, "Ready", "kwin");
all().forEach(opened);
(isNew ? workspace.windowAdded : workspace.clientAdded).connect(opened);
(isNew ? workspace.windowRemoved : workspace.clientRemoved).connect(gone);
(isNew ? workspace.windowActivated : workspace.clientActivated).connect(front);
front(isNew ? workspace.activeWindow : workspace.activeClient);
)js";

constexpr const char* order = R"js(
all().forEach(function(w) {
  var name = w.internalId.toString();
  if (toClose.indexOf(name) >= 0) w.closeWindow();
  if (toFront !== name) return;
  w.minimized = false;
  workspace[isNew ? "activeWindow" : "activeClient"] = w;
});
)js";

std::string variable(const char* name, const Json& value) {
  return std::string("var ") + name + " = " + value.text() + ";\n";
}

} // namespace

std::string kwinFeedScript(const std::string& listener) {
  return variable("listener", listener) + variable("path", FedWindows::path) +
         variable("feed", FedWindows::interface) + windows + feed;
}

std::string kwinOrderScript(const KWinOrders& orders) {
  return variable("toClose", Json::Array(orders.close.begin(), orders.close.end())) +
         variable("toFront", orders.front) + windows + order;
}

} // namespace vantle
