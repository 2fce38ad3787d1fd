// SPDX-License-Identifier: MIT
#include "demo/Demo.h"

#include <exception>
#include <filesystem>
#include <iostream>

// usage: vantle_demo PROGRAM FOLDER: shows a Boost with that build of Vantle, and leaves its report there.
int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: vantle_demo PROGRAM FOLDER\n";
    return 2;
  }
  try {
    return vantle::demo::runDemo(std::filesystem::absolute(argv[1]), argv[2]) ? 0 : 1;
  } catch (const std::exception& failure) {
    std::cerr << "vantle_demo: " << failure.what() << "\n";
    return 1;
  }
}
