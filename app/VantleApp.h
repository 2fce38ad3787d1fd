// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace vantle {

// The program: decides at start whether to measure, to leave to an earlier copy, or to live in the tray.
class VantleApp {
 public:
  VantleApp(int& argc, char** argv) : m_argc(argc), m_argv(argv) {}

  // The exit status: 0 in the ordinary course of things and for a second copy, the self-test's own with
  // "--test", 1 when there is no desktop session to live in, or none that lets the program in or answers.
  int run();

 private:
  bool hasArgument(std::string_view wanted) const;

  int& m_argc; // Qt keeps the reference
  char** m_argv;
};

} // namespace vantle
