// SPDX-License-Identifier: MIT
#include "tests/support/SettingsProgram.h"

#include "tests/support/Wait.h"

#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <utility>

namespace vantle::desktop {

namespace {

std::filesystem::path madePipe(const std::filesystem::path& path) {
  ::mkfifo(path.c_str(), 0600);
  return path;
}

} // namespace

SettingsProgram::SettingsProgram(VirtualDesktop& desktop, const std::string& path)
    : m_logs(desktop.logs()), m_pipe(madePipe(desktop.folder().path() / "commands")),
      m_program(desktop.launch({path, m_pipe.string()})) {}

std::string SettingsProgram::log() const {
  for (const auto& file : std::filesystem::directory_iterator(m_logs)) {
    if (file.path().filename().string().find("vantle_test_settings") == std::string::npos) continue;
    std::ifstream stream(file.path());
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  return {};
}

std::string SettingsProgram::tells(const std::string& line) {
  std::ofstream(m_pipe) << line << std::endl;
  std::string text;
  require(line.c_str(), [&] {
    text = log();
    return text.size() > m_said.size() &&
           text.find("done " + line + "\n", m_said.size()) != std::string::npos;
  });
  return text.substr(std::exchange(m_said, text).size());
}

} // namespace vantle::desktop
