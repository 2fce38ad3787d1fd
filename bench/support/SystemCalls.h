// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vantle::bench {

// One system call as a program made it, ready to be made again: texts and input are copies, output goes to a
// scratch buffer, descriptors are numbers of the recorded program.
struct RecordedCall {
  long number = 0;
  const struct CallShape* shape = nullptr;
  std::uint64_t arguments[6] = {};
  std::string text[6]; // of those arguments that point to something the kernel reads
  long result = 0;
};

// What one stretch of a program asked of the kernel.
struct Recording {
  std::vector<RecordedCall> calls;
  std::map<std::string, std::size_t> counts;  // by name, all of them
  std::map<std::string, std::size_t> opened;  // by path, every number in it written as N
  std::map<std::string, std::size_t> leftOut; // those that the bare loop does without: memory and such
};

// A program to be watched: it calls `phase` at the beginning of each stretch, and once more behind the last.
using Program = std::function<void(const std::function<void()>& phase)>;

// Runs the program in a child, stopping it at every system call. One recording a stretch.
struct Recordings {
  std::vector<Recording> phases;
  std::map<int, std::string> openAtStart; // descriptors that were open before, by what they lead to
};
Recordings record(const Program& program);

// Makes the recorded calls again, and nothing else: the bare loop that a pass is compared with.
class BareLoop {
 public:
  BareLoop(const Recording& recording, const std::map<int, std::string>& openAtStart);

  void run();
  // The same with a clock around each call: nanoseconds of processor time by name.
  std::map<std::string, std::uint64_t> runTimed();
  // Calls whose outcome (success or not) differed from the recorded one in the last run.
  std::size_t differences() const { return m_differences; }

 private:
  void make(const RecordedCall& call);

  std::vector<RecordedCall> m_calls;
  std::vector<int> m_descriptors; // of this program, by number in the recorded one
  std::vector<char> m_scratch;
  std::size_t m_differences = 0;
};

std::string nameOf(long systemCall);
std::uint64_t processorNanos(); // that this thread has used so far

} // namespace vantle::bench
