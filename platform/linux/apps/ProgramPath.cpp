// SPDX-License-Identifier: MIT
#include "platform/linux/apps/ProgramPath.h"

#include <cstdlib>
#include <glib.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {

std::string absolutePath(const std::string& program) {
  if (program.empty() || program.starts_with('/')) return program;
  const std::unique_ptr<char, decltype(&g_free)> found(g_find_program_in_path(program.c_str()), &g_free);
  if (found) return found.get();
  for (const char* folder : {"/usr/games/", "/usr/local/games/", "/usr/local/bin/", "/usr/bin/"}) {
    if (std::string path = folder + program; ::access(path.c_str(), X_OK) == 0) return path;
  }
  return {};
}

bool isProgram(const std::string& path) {
  struct stat about {};
  return ::stat(path.c_str(), &about) == 0 && !S_ISDIR(about.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

std::string realPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
  return real ? std::string(real.get()) : std::string();
}

} // namespace vantle
