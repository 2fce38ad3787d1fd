// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcStat.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace vantle {

namespace {

// Walks over the fields behind the name; each read takes one.
class Fields {
 public:
  explicit Fields(std::string_view rest) : m_at(rest.data()), m_end(rest.data() + rest.size()) {}

  template <class Number> bool read(Number& value) {
    if (m_at == m_end || *m_at != ' ') return false;
    const auto [stop, error] = std::from_chars(m_at + 1, m_end, value);
    m_at = stop;
    return error == std::errc{} && m_at != m_end && *m_at == ' '; // a number at the very end may be cut short
  }

  bool read(char& value) {
    if (m_end - m_at < 2 || *m_at != ' ') return false;
    value = m_at[1];
    m_at += 2;
    return true;
  }

  bool skip(int count) {
    for (; count > 0; --count) {
      if (m_at == m_end || *m_at != ' ') return false;
      ++m_at;
      while (m_at != m_end && *m_at != ' ') ++m_at;
    }
    return true;
  }

 private:
  const char* m_at;
  const char* m_end;
};

} // namespace

std::optional<ProcStat> parseProcStat(std::string_view line) {
  const std::size_t nameEnd = line.rfind(')');
  if (nameEnd == std::string_view::npos) return std::nullopt;
  Fields fields(line.substr(nameEnd + 1));
  ProcStat stat;
  const bool whole = fields.read(stat.state) && fields.read(stat.parent) && fields.skip(6 - 5) &&
                     fields.read(stat.session) && fields.skip(9 - 7) && fields.read(stat.flags) &&
                     fields.skip(14 - 10) && fields.read(stat.userTicks) && fields.read(stat.kernelTicks) &&
                     fields.skip(18 - 16) && fields.read(stat.priority) && fields.skip(20 - 19) &&
                     fields.read(stat.threads) && fields.skip(22 - 21) && fields.read(stat.startTicks) &&
                     fields.skip(24 - 23) && fields.read(stat.residentPages);
  if (!whole || stat.parent < 0) return std::nullopt;
  if (!fields.skip(28 - 25) || !fields.read(stat.startStack)) stat.startStack = 0;
  return stat;
}

} // namespace vantle
