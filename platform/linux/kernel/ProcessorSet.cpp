// SPDX-License-Identifier: MIT
#include "platform/linux/kernel/ProcessorSet.h"

#include <bit>
#include <charconv>

namespace vantle {

namespace {

std::optional<std::size_t> number(std::string_view text) {
  std::size_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size() || value >= ProcessorSet::most) return {};
  return value;
}

} // namespace

void ProcessorSet::add(std::size_t processor) {
  if (processor < most) m_words[processor / bitsPerWord] |= 1UL << (processor % bitsPerWord);
}

bool ProcessorSet::contains(std::size_t processor) const {
  return processor < most && ((m_words[processor / bitsPerWord] >> (processor % bitsPerWord)) & 1UL) != 0;
}

std::size_t ProcessorSet::count() const {
  std::size_t sum = 0;
  for (const unsigned long word : m_words) sum += static_cast<std::size_t>(std::popcount(word));
  return sum;
}

ProcessorSet ProcessorSet::operator&(const ProcessorSet& other) const {
  ProcessorSet both;
  for (std::size_t at = 0; at < m_words.size(); ++at) both.m_words[at] = m_words[at] & other.m_words[at];
  return both;
}

std::optional<ProcessorSet> ProcessorSet::parse(std::string_view list) {
  while (!list.empty() && (list.back() == '\n' || list.back() == ' ')) list.remove_suffix(1);
  ProcessorSet set;
  while (!list.empty()) {
    const std::string_view part = list.substr(0, list.find(','));
    list.remove_prefix(part.size() < list.size() ? part.size() + 1 : list.size());
    const std::size_t dash = part.find('-');
    const auto first = number(part.substr(0, dash));
    const auto last = dash == std::string_view::npos ? first : number(part.substr(dash + 1));
    if (!first || !last || *last < *first) return std::nullopt;
    for (std::size_t processor = *first; processor <= *last; ++processor) set.add(processor);
  }
  return set;
}

std::string ProcessorSet::text() const {
  std::string list;
  for (std::size_t first = 0; first < most; ++first) {
    if (!contains(first)) continue;
    std::size_t last = first;
    while (contains(last + 1)) ++last;
    if (!list.empty()) list += ',';
    list += std::to_string(first);
    if (last != first) list += '-' + std::to_string(last);
    first = last;
  }
  return list;
}

ProcessorSet ProcessorSet::everything() {
  ProcessorSet set;
  set.m_words.fill(~0UL);
  return set;
}

} // namespace vantle
