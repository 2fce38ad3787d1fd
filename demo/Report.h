// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <fstream>
#include <string>

namespace vantle::demo {

// Says everything twice: plainly on the terminal, and in a page with pictures under the demo's folder.
class Report {
 public:
  // Empties the folder first: a report never mixes two runs.
  explicit Report(const std::filesystem::path& folder);

  void heading(const std::string& text);
  void say(const std::string& line);
  // A claim and whether it was seen to hold; one that does not makes the whole demo fail.
  void check(bool holds, const std::string& claim);
  void picture(const std::string& file, const std::string& caption);
  std::filesystem::path pathOf(const std::string& file) const { return m_folder / file; }

  bool allHeld() const { return m_allHeld; }

 private:
  std::filesystem::path m_folder;
  std::ofstream m_page;
  bool m_allHeld = true;
};

} // namespace vantle::demo
