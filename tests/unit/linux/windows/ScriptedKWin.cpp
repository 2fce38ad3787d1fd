// SPDX-License-Identifier: MIT
#include "tests/unit/linux/windows/ScriptedKWin.h"

#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <utility>

namespace vantle {

namespace {

std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string between(const std::string& text, const std::string& before, const std::string& after) {
  const std::size_t start = text.find(before);
  if (start == std::string::npos) return {};
  const std::size_t from = start + before.size();
  return text.substr(from, text.find(after, from) - from);
}

ScriptedKWin::Fill announcing(const ScriptedKWin::Window& window) {
  return [window](sd_bus_message* call) {
    sd_bus_message_append(call, "sissssb", window.id.c_str(), window.pid, window.className.c_str(),
                          "instance", window.applicationId.c_str(), window.kind.c_str(),
                          static_cast<int>(window.isX11));
  };
}

ScriptedKWin::Fill naming(const std::string& text) {
  return [text](sd_bus_message* call) { sd_bus_message_append(call, "s", text.c_str()); };
}

} // namespace

ScriptedKWin::ScriptedKWin(const std::string& busAddress, Manners manners)
    : m_manners(std::move(manners)), m_service(busAddress, "org.kde.KWin") {
  m_seen.scripts = m_manners.scripts;
  m_service.answer("/Scripting", "unloadScript", [this](sd_bus_message* call, sd_bus_message* reply) {
    const char* name = "";
    sd_bus_message_read(call, "s", &name);
    const std::lock_guard lock(m_mutex);
    sd_bus_message_append(reply, "b", static_cast<int>(m_seen.scripts.erase(name)));
  });
  m_service.answer("/Scripting", "isScriptLoaded", [this](sd_bus_message* call, sd_bus_message* reply) {
    m_manners.whenAsked();
    const char* name = "";
    sd_bus_message_read(call, "s", &name);
    const std::lock_guard lock(m_mutex);
    sd_bus_message_append(reply, "b", static_cast<int>(m_seen.scripts.contains(name)));
  });
  m_service.answer("/Scripting", "loadScript",
                   [this](sd_bus_message* call, sd_bus_message* reply) { loadScript(call, reply); });
}

void ScriptedKWin::loadScript(sd_bus_message* call, sd_bus_message* reply) {
  const char* path = "";
  const char* name = "";
  sd_bus_message_read(call, "ss", &path, &name);
  int number = -1;
  {
    const std::lock_guard lock(m_mutex);
    if (m_manners.takesScripts && !m_seen.scripts.contains(name)) {
      number = static_cast<int>(m_seen.scripts.size());
      m_seen.scripts[name] = number;
    }
  }
  sd_bus_message_append(reply, "i", number);
  if (number < 0 || !m_manners.runsScripts) return;
  const std::string object =
      (m_manners.edition == Edition::five ? "/" : "/Scripting/Script") + std::to_string(number);
  m_service.answer(object, "run",
                   [this, named = std::string(name), file = std::string(path)](sd_bus_message* asked,
                                                                               sd_bus_message* answer) {
                     runScript(named, file, asked, answer);
                   });
}

void ScriptedKWin::runScript(const std::string& name, const std::string& path, sd_bus_message* call,
                             sd_bus_message*) {
  const std::string text = contentOf(path);
  struct stat status {};
  ::stat(path.c_str(), &status);
  std::string listener;
  {
    const std::lock_guard lock(m_mutex);
    ++m_seen.runs;
    if (name.ends_with(".orders")) {
      m_seen.closing.push_back(between(text, "var toClose = ", ";"));
      m_seen.toFront.push_back(between(text, "var toFront = ", ";"));
      return;
    }
    m_seen.path = path;
    m_seen.mode = status.st_mode & 0777U;
    listener = m_seen.listener = between(text, "var listener = \"", "\"");
  }
  if (m_manners.isSilent) return;
  sd_bus* const bus = sd_bus_message_get_bus(call);
  tell(bus, listener, "Ready", naming("kwin"));
  for (const Window& window : m_manners.windows) tell(bus, listener, "Window", announcing(window));
  tell(bus, listener, "Front", naming(m_manners.windows.empty() ? "" : m_manners.windows.front().id));
}

void ScriptedKWin::tell(sd_bus* bus, const std::string& listener, const char* member, const Fill& fill) {
  sd_bus_message* call = nullptr;
  if (sd_bus_message_new_method_call(bus, &call, listener.c_str(), "/com/halvo/vantle/desktop",
                                     "com.halvo.vantle.DesktopFeed", member) < 0) {
    return;
  }
  fill(call);
  sd_bus_message_set_expect_reply(call, 0);
  sd_bus_send(bus, call, nullptr);
  sd_bus_message_unref(call);
}

void ScriptedKWin::send(const char* member, const Fill& fill) const {
  m_service.perform([&](sd_bus* bus) { tell(bus, seen().listener, member, fill); });
}

void ScriptedKWin::open(const Window& window) const { send("Window", announcing(window)); }
void ScriptedKWin::front(const std::string& id) const { callWith("Front", id); }
void ScriptedKWin::gone(const std::string& id) const { callWith("Gone", id); }
void ScriptedKWin::call(const char* member) const {
  send(member, [](sd_bus_message*) {});
}
void ScriptedKWin::callWith(const char* member, const std::string& text) const { send(member, naming(text)); }

ScriptedKWin::Seen ScriptedKWin::seen() const {
  const std::lock_guard lock(m_mutex);
  return m_seen;
}

} // namespace vantle
