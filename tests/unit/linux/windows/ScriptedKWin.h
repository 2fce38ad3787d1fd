// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/FakeService.h"

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle {

// KWin as it is to those who put a script into it, and as the script would call them. What it shows, and how
// it answers, is what a test says before it is asked.
class ScriptedKWin {
 public:
  enum class Edition { five, six };
  struct Window {
    std::string id;
    std::int32_t pid = 0;
    std::string className = "class";
    std::string applicationId = "org.example.App";
    std::string kind = "ordinary";
    bool isX11 = false;
  };
  struct Manners {
    Edition edition = Edition::six;
    std::vector<Window> windows = {}; // at the start, the first of them in front
    bool takesScripts = true;
    bool runsScripts = true;
    bool isSilent = false;                   // its script never calls
    std::map<std::string, int> scripts = {}; // that are there already
    std::function<void()> whenAsked = [] {}; // whether a script is there, in its thread
  };

  ScriptedKWin(const std::string& busAddress, Manners manners);

  // What the script does, in order; these return when it is sent.
  void open(const Window& window) const;
  void front(const std::string& id) const;
  void gone(const std::string& id) const;
  void call(const char* member) const; // without arguments
  void callWith(const char* member, const std::string& text) const;
  // Anything else, to whom the script calls.
  using Fill = std::function<void(sd_bus_message* call)>;
  void send(const char* member, const Fill& fill) const;

  struct Seen {
    std::string listener;               // whom the last script calls
    std::string path;                   // of the last script that was run
    mode_t mode = 0;                    // of its file
    std::vector<std::string> closing;   // by each script of orders: the windows that it closes …
    std::vector<std::string> toFront;   // … and the one that it brings to the front
    std::map<std::string, int> scripts; // that are loaded, with their numbers
    int runs = 0;
  };
  Seen seen() const;
  const desktop::FakeService& service() const { return m_service; }

 private:
  void loadScript(sd_bus_message* call, sd_bus_message* reply);
  void runScript(const std::string& name, const std::string& path, sd_bus_message* call,
                 sd_bus_message* reply);
  static void tell(sd_bus* bus, const std::string& listener, const char* member, const Fill& fill);

  const Manners m_manners;
  mutable std::mutex m_mutex;
  Seen m_seen;
  mutable desktop::FakeService m_service;
};

} // namespace vantle
