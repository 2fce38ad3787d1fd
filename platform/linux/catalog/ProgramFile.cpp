// SPDX-License-Identifier: MIT
#include "platform/linux/catalog/ProgramFile.h"

#include "base/Text.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/apps/ProgramPath.h"

#include <array>
#include <fstream>
#include <string_view>

namespace vantle {
namespace {

using namespace std::string_view_literals;

constexpr auto elf = "\x7f"
                     "ELF"sv;
constexpr auto windows = "MZ"sv;
constexpr auto image =
    "AI"sv; // in what ELF leaves free of its first line, with the format's number behind it
constexpr std::size_t imageAt = 8;

std::string startOf(const std::string& path) {
  std::array<char, 16> bytes{};
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), bytes.size());
  return {bytes.data(), static_cast<std::size_t>(file.gcount())};
}

AppEvidence ofImage(const std::string& path) {
  AppEvidence evidence;
  evidence.executable = "/tmp/.mount_/" + fileNameOf(path); // where it runs from, about
  evidence.program = path;
  return evidence;
}

// Wine calls a window after the file, in small letters.
AppEvidence ofWindowsProgram(const std::string& path) {
  AppEvidence evidence;
  evidence.executable = "/usr/bin/wine64";
  evidence.arguments = {evidence.executable, path};
  evidence.program = path;
  evidence.names = programNames(interpretedProgram("wine64", evidence.arguments), path);
  evidence.windowInstance = evidence.windowClass = asciiLowered(fileNameOf(path));
  return evidence;
}

AppEvidence ofOwnProgram(const std::string& path) {
  AppEvidence evidence;
  evidence.executable = evidence.program = path;
  evidence.arguments = {path};
  return evidence;
}

} // namespace

std::optional<AppEvidence> evidenceOfProgram(const std::string& path) {
  const std::string real = realPath(path);
  const std::string name = asciiLowered(fileNameOf(real));
  const std::string start = startOf(real);
  if (name.ends_with(".exe"))
    return start.starts_with(windows) ? std::optional(ofWindowsProgram(real)) : std::nullopt;
  const bool isImage = start.size() > imageAt && start.substr(imageAt).starts_with(image);
  if (name.ends_with(".appimage") || (start.starts_with(elf) && isImage)) return ofImage(real);
  const bool isLibrary = name.ends_with(".so") || name.find(".so.") != std::string::npos;
  if (!start.starts_with(elf) || isLibrary || isInterpreter(name) || !isProgram(real)) return {};
  return ofOwnProgram(real);
}

} // namespace vantle
