// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateSession.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace vantle::desktop {

// The panel and its tray icon in a program of their own (programs/PanelHost.cpp), which is told what to do
// and says what happens.
class HostedPanel {
 protected:
  void startHost(PrivateSession& session, const Environment& added) {
    m_log = session.folder().path() / "host.log";
    m_input = session.folder().path() / "host.input";
    ASSERT_EQ(::mkfifo(m_input.c_str(), 0600), 0);
    ASSERT_EQ(::chmod(m_input.c_str(), 0666), 0); // for whoever's session it is
    m_host = &session.launch({"sh", "-c", "exec \"$0\" >\"$1\" 2>&1 <>\"$2\"", VANTLE_PANEL_HOST,
                              m_log.string(), m_input.string()},
                             added);
    require("the host", [this] { return countOf("ready") == 1; });
  }

  // True when it is still taken in, which only the main loop does.
  bool tells(const std::string& line) {
    const long before = countOf("done " + line);
    std::ofstream(m_input) << line << std::endl;
    return waitUntil([&] { return countOf("done " + line) > before; }, std::chrono::seconds(5));
  }

  // The Boost app or "idle", and whether Boosts start by themselves.
  bool becomes(const std::string& state, std::chrono::milliseconds limit = guardLimit) {
    return waitUntil(
        [&] {
          const long before = countOf("state " + state);
          return tells("state") && countOf("state " + state) > before;
        },
        limit);
  }

  long countOf(const std::string& start) const {
    std::ifstream log(m_log);
    long count = 0;
    for (std::string line; std::getline(log, line);) count += line.starts_with(start) ? 1 : 0;
    return count;
  }

  // The panel's rectangle when it was last opened or moved.
  std::vector<int> lastPlace() const { return lastNumbers({"opened ", "moved "}); }
  // The same of the tray icon's menu.
  std::vector<int> lastMenu() const { return lastNumbers({"menu "}); }

  std::vector<int> lastNumbers(const std::vector<std::string>& starts) const {
    std::ifstream log(m_log);
    std::vector<int> place;
    for (std::string line; std::getline(log, line);) {
      if (std::none_of(starts.begin(), starts.end(),
                       [&](const auto& start) { return line.starts_with(start); }))
        continue;
      std::istringstream words(line.substr(line.find(' ')));
      place.assign(std::istream_iterator<int>(words), {});
    }
    return place;
  }

  std::filesystem::path m_log;
  std::filesystem::path m_input;
  Program* m_host = nullptr;
};

} // namespace vantle::desktop
