// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The text of one autostart file, with all that the person's desktop may have added to it.
class AutostartEntry {
 public:
  AutostartEntry();
  // Absent when the text is no desktop entry at all.
  static std::optional<AutostartEntry> parse(const std::string& text);
  ~AutostartEntry();
  AutostartEntry(AutostartEntry&&) noexcept;
  AutostartEntry& operator=(AutostartEntry&&) noexcept;

  // What a desktop of these names (XDG_CURRENT_DESKTOP) would start: the absolute path of a program that is
  // there, its links not followed. Empty when it would start nothing.
  std::string startedProgram(const std::vector<std::string>& desktops) const;
  bool isShownIn(const std::vector<std::string>& desktops) const;

  // Makes it start this program, on these desktops too; keeps whatever else stands in it. A condition that
  // asks for some program (TryExec) asks for this one instead when there is no such program.
  void enable(const std::string& program, const std::vector<std::string>& desktops);
  // Makes it start nothing; the person's file then hides one of the system with the same name.
  void hide();

  std::string text() const;

 private:
  struct KeyFile;
  std::unique_ptr<KeyFile> m_file;
};

// The value of an Exec line that starts exactly this program, whatever characters its path is made of.
std::string execValue(std::string_view program);

// The absolute path of the program that an Exec line starts without arguments, or with the toolkit's (one
// dash), should it be there; otherwise empty. With others Vantle does what they say, and ends.
std::string programOfExec(const std::string& exec);

} // namespace vantle
