// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "tests/realapps/Programs.h"
#include "tests/realapps/Stage.h"

#include <filesystem>
#include <string>

namespace vantle::realapps {

// What was seen of one program that was started one way. Texts are as the table has them.
struct Row {
  std::string program;
  std::string version;
  std::string machine; // with a user manager only: which it was played on
  std::string way;
  std::string foundAs; // the id; "–" without one, empty when it was not found at all
  std::string name;
  std::string icon;
  std::string identity; // "right" when id, name and Boost are
  std::string boost;    // of it, or "no"
  std::string slowedWhole;
  std::string backWhole;
  std::string soundSpared;
  std::string wrong; // what is not right, as it was seen; empty when all is
  Json evidence;     // what its processes and its window said
};

// Starts it on a stage of its own that way, plays a Boost with it in front and one with it behind.
class Trial {
 public:
  Trial(const Program& program, std::filesystem::path vantle, Surroundings surroundings)
      : m_program(program), m_vantle(std::move(vantle)), m_surroundings(surroundings) {}

  Row play(Way way) const;

 private:
  const Program& m_program;
  std::filesystem::path m_vantle;
  Surroundings m_surroundings;
};

} // namespace vantle::realapps
