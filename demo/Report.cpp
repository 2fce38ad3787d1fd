// SPDX-License-Identifier: MIT
#include "demo/Report.h"

#include <iostream>

namespace vantle::demo {

Report::Report(const std::filesystem::path& folder) : m_folder(std::filesystem::absolute(folder)) {
  std::filesystem::create_directories(folder);
  for (const auto& left : std::filesystem::directory_iterator(folder)) std::filesystem::remove_all(left);
  m_page.open(folder / "report.md");
  m_page << "# A Boost, measured\n";
}

void Report::heading(const std::string& text) {
  std::cout << "\n" << text << std::endl;
  m_page << "\n## " << text << "\n\n" << std::flush;
}

void Report::say(const std::string& line) {
  std::cout << "  " << line << std::endl;
  m_page << "- " << line << "\n" << std::flush;
}

void Report::check(bool holds, const std::string& claim) {
  m_allHeld = m_allHeld && holds;
  say((holds ? "ok: " : "FAILED: ") + claim);
}

void Report::picture(const std::string& file, const std::string& caption) {
  m_page << "\n![" << caption << "](" << file << ")\n\n" << std::flush;
}

} // namespace vantle::demo
