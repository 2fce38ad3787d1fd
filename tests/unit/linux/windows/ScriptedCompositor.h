// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// A Wayland compositor that tells of its windows (zwlr_foreign_toplevel_manager_v1), message by message: what
// a library would refuse to send as well. It answers when it is told to. Clients connect to a socket with a
// name; one of them is spoken to.
class ScriptedCompositor {
 public:
  using Object = std::uint32_t;
  enum HandleEvent : std::uint16_t { title, appId, outputEnter, outputLeave, state, done, closed, parent };

  explicit ScriptedCompositor(const std::string& path);

  Descriptor connect(); // the client's end of the connection that is spoken to
  void takeClient();    // the next one that comes is spoken to
  // Answers all that has been asked; how many requests that were.
  int serve();

  // A window, told of once somebody listens.
  Object open(std::string_view applicationId, bool isActive = false);
  void rename(Object window, std::string_view applicationId);
  void focus(Object window); // 0 for none
  void close(Object window);
  void finish(); // no more of its windows

  void tell(Object object, std::uint16_t event, std::string_view arguments = {});
  void tellOfWindow(Object object);
  void sendBytes(std::string_view bytes);
  bool flush(); // what the client had no room for; true when that is all
  void end() { m_client = Descriptor(); }
  int descriptor() const { return m_client.get(); }

  static std::string message(Object object, std::uint16_t event, std::string_view arguments = {});
  static std::string number(std::uint32_t value);
  static std::string text(std::string_view value);

  bool offersToplevels = true;
  std::vector<Object> askedToClose;
  std::vector<Object> destroyed;

 private:
  struct Window {
    Object object = 0;
    std::string applicationId;
    bool isActive = false;
  };

  void answer(Object object, std::uint16_t request, std::string_view arguments);
  void announce(const Window& window);
  void tellState(const Window& window);

  std::string m_path;
  Descriptor m_listener;
  std::vector<Descriptor> m_others;
  Descriptor m_client;
  std::string m_received;
  std::string m_unsent;
  Object m_registry = 0;
  Object m_manager = 0; // 0 until somebody listens
  Object m_lastObject = 0xff000000;
  std::vector<Window> m_windows;
};

} // namespace vantle
