// SPDX-License-Identifier: MIT
#include "demo/Stage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vantle::demo {

namespace {

using desktop::require;

constexpr const char* gameProgram = "/usr/games/chromium-bsu";

desktop::VirtualDesktop::Options options() {
  desktop::VirtualDesktop::Options chosen;
  chosen.screen = "1600x1200x24";
  // The game would minimise itself when another app comes to the front, and this machine may have no sound.
  chosen.environment = {{"SDL_VIDEO_MINIMIZE_ON_FOCUS_LOSS", "0"}, {"LIBGL_ALWAYS_SOFTWARE", "1"}};
  return chosen;
}

} // namespace

Stage::Stage(const ProcessTable& processes) : m_processes(processes), m_desktop(options()) {
  start("XTerm", {"xterm", "-geometry", "60x14+20+20"});
  start("Mousepad", {"mousepad"});
  start("Galculator", {"galculator"});
  // Two busy loops in a terminal window: enough to take half of two processors from anybody.
  start("CPU hog", {"xterm", "-T", "CPU hog", "-geometry", "60x8+20+520", "-e", "/bin/sh", "-c",
                    "echo This window keeps two processors busy.; yes >/dev/null & exec yes >/dev/null"});
}

void Stage::start(const std::string& name, std::vector<std::string> command,
                  const desktop::Environment& added) {
  desktop::Program& program = m_desktop.launch(std::move(command), added);
  m_desktop.waitForWindow(program.pid());
  m_apps.push_back({name, &program});
}

void Stage::startGame() {
  desktop::Program& program = m_desktop.launch({gameProgram, "-w", "-v", "4", "-na"});
  m_desktop.waitForWindow(program.pid());
  m_game = {"Chromium B.S.U.", &program};
}

void Stage::startVantle(const std::string& program) {
  m_vantle = &m_desktop.launch({program});
  // Its first deed is to restore what an earlier run may have left, which ends with an empty journal.
  require("Vantle is running", [this] { return journal() == "[]"; });
}

const Stage::App& Stage::app(const std::string& name) const {
  const auto found = std::find_if(m_apps.begin(), m_apps.end(),
                                  [&](const App& candidate) { return candidate.name == name; });
  if (found == m_apps.end()) throw std::invalid_argument("no app named " + name);
  return *found;
}

std::string Stage::journal() const {
  std::ifstream file(m_desktop.dataHome() / "Vantle/journal.json");
  return {std::istreambuf_iterator<char>(file), {}};
}

std::map<std::string, AppState> Stage::states() const {
  std::map<std::string, AppState> all;
  for (const App& one : m_apps) all.emplace(one.name, appState(m_processes, one.pid()));
  return all;
}

std::map<std::string, double> Stage::processorShares(std::chrono::milliseconds duration) const {
  std::vector<App> measured = m_apps;
  measured.push_back(m_game);
  const auto begin = std::chrono::steady_clock::now();
  std::map<std::string, double> shares;
  for (const App& one : measured) shares[one.name] = -cpuSeconds(m_processes, one.pid());
  std::this_thread::sleep_for(duration);
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - begin;
  for (const App& one : measured) {
    shares[one.name] = (shares[one.name] + cpuSeconds(m_processes, one.pid())) / elapsed.count();
  }
  return shares;
}

} // namespace vantle::demo
