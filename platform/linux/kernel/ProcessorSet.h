// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// A set of processors in the very form of the affinity system calls.
class ProcessorSet {
 public:
  static constexpr std::size_t most = 8192; // the largest NR_CPUS that Linux can be built with

  void add(std::size_t processor);
  bool contains(std::size_t processor) const;
  std::size_t count() const;
  bool empty() const { return count() == 0; }
  ProcessorSet operator&(const ProcessorSet& other) const;
  friend bool operator==(const ProcessorSet&, const ProcessorSet&) = default;

  // The kernel's list form, "0-3,6". Absent when the text is not one.
  static std::optional<ProcessorSet> parse(std::string_view list);
  std::string text() const;
  // Every bit set: what a thread that was never bound to anything has, as the kernel cuts it down itself.
  static ProcessorSet everything();

  // For the system calls.
  unsigned long* data() { return m_words.data(); }
  const unsigned long* data() const { return m_words.data(); }
  std::size_t bytes() const { return sizeof m_words; }

 private:
  static constexpr std::size_t bitsPerWord = sizeof(unsigned long) * 8;
  std::array<unsigned long, most / bitsPerWord> m_words{};
};

} // namespace vantle
