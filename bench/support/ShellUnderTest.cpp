// SPDX-License-Identifier: MIT
#include "bench/support/ShellUnderTest.h"

#include "platform/linux/process/ProcfsProcessTable.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <span>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vantle::bench {

namespace {

using namespace std::chrono_literals;
using desktop::require;

// Of a screen of 1280 by 800: within the panel, which opens at the top right without a tray, and within the
// sidebar of the settings window in the middle.
constexpr int panelX = 1000;
constexpr int panelY = 30;
constexpr int settingsX = 300;
constexpr int settingsY = 500;

// The program takes no two wishes from the bus closer together than this.
constexpr std::chrono::milliseconds betweenWishes{500};

} // namespace

int runRounds(int argc, char** argv, int (*run)(int rounds, const std::string& desktop)) {
  const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
  try {
    return run(arguments.size() > 1 ? std::max(std::atoi(arguments[1]), 1) : 5,
               arguments.size() > 2 ? arguments[2] : "x11");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}

ShellUnderTest::ShellUnderTest(const std::string& program, std::unique_ptr<BareDesktop> desktop)
    : m_desktop(std::move(desktop)) {
  if (!m_desktop) throw std::runtime_error("the desktop is x11 or sway");
  require("a bare desktop", [this] { return pixel({panelX, panelY}) == pixel({settingsX, settingsY}); });
  m_bare = pixel({panelX, panelY});

  m_vantle = &m_desktop->session().launch({program});
  m_desktop->session().waitForBusName("com.halvo.vantle");
  if (sd_bus_new(&m_bus) < 0 || sd_bus_set_address(m_bus, m_desktop->session().busAddress().c_str()) < 0 ||
      sd_bus_set_bus_client(m_bus, 1) < 0 || sd_bus_start(m_bus) < 0) {
    throw std::runtime_error("no bus");
  }
  comeToRest();
}

ShellUnderTest::~ShellUnderTest() { sd_bus_flush_close_unref(m_bus); }

double ShellUnderTest::ownMegabytes() const {
  const ProcfsProcessTable table(BootEpoch(0));
  return static_cast<double>(table.footprint(m_vantle->pid()).value_or(0)) / (1024 * 1024);
}

long ShellUnderTest::wakeUps() const {
  long sum = 0;
  const std::string label = "voluntary_ctxt_switches:";
  for (const auto& task :
       std::filesystem::directory_iterator("/proc/" + std::to_string(m_vantle->pid()) + "/task")) {
    std::ifstream status(task.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line.starts_with(label)) sum += std::atol(line.c_str() + label.size());
    }
  }
  return sum;
}

void ShellUnderTest::comeToRest() const {
  for (long last = -1, now = wakeUps(); last != now; now = wakeUps()) {
    last = now;
    std::this_thread::sleep_for(2s);
  }
}

std::uint32_t ShellUnderTest::pixel(Point point) { return m_desktop->pixel(point.x, point.y); }

void ShellUnderTest::ask(const char* method, const char* action) {
  constexpr const char* interface = "org.freedesktop.Application";
  constexpr const char* path = "/com/halvo/vantle";
  const int status = action == nullptr
                         ? sd_bus_call_method_async(m_bus, nullptr, "com.halvo.vantle", path, interface,
                                                    method, nullptr, nullptr, "a{sv}", 0)
                         : sd_bus_call_method_async(m_bus, nullptr, "com.halvo.vantle", path, interface,
                                                    method, nullptr, nullptr, "sava{sv}", action, 0, 0);
  if (status < 0 || sd_bus_flush(m_bus) < 0) throw std::runtime_error("it cannot be asked");
}

ShellUnderTest::Milliseconds ShellUnderTest::shownAfter(const char* method, const char* action, Point point) {
  std::this_thread::sleep_until(m_lastWish + betweenWishes + 50ms);
  const auto begin = std::chrono::steady_clock::now();
  ask(method, action);
  m_lastWish = std::chrono::steady_clock::now();
  while (pixel(point) == m_bare) {
    if (std::chrono::steady_clock::now() - begin > 30s) throw std::runtime_error("nothing to see");
    std::this_thread::sleep_for(500us);
  }
  return std::chrono::steady_clock::now() - begin;
}

void ShellUnderTest::waitUntilBare(Point point) {
  require("a bare desktop", [&] { return pixel(point) == m_bare; });
}

ShellUnderTest::Milliseconds ShellUnderTest::openPanel() {
  return shownAfter("Activate", nullptr, {panelX, panelY});
}

ShellUnderTest::Milliseconds ShellUnderTest::openSettings() {
  return shownAfter("ActivateAction", "settings", {settingsX, settingsY});
}

void ShellUnderTest::press(const std::string& key) { m_desktop->press(key); }

void ShellUnderTest::closePanel() {
  require("the panel's end", [this] {
    press("Escape");
    return desktop::waitUntil([this] { return pixel({panelX, panelY}) == m_bare; }, 500ms);
  });
}

void ShellUnderTest::closeSettings() {
  m_desktop->closeWindow("Vantle Settings");
  waitUntilBare({settingsX, settingsY});
}

void ShellUnderTest::waitForRelease() const {
  const double before = ownMegabytes();
  desktop::waitUntil([&] { return ownMegabytes() < before - 1; });
  comeToRest();
}

} // namespace vantle::bench
