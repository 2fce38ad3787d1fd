// SPDX-License-Identifier: MIT
// Any message as a daemon's answer on who keeps the machine awake, and any text as the portal's description
// of its requests. The first line of the input is the message's types, each further line one value.
#include "base/Text.h"
#include "platform/linux/power/HolderSearch.h"
#include "platform/linux/power/InhibitorReaders.h"
#include "platform/linux/process/FlatpakInstances.h"
#include "tests/fuzz/Target.h"

#include <algorithm>
#include <cstdlib>
#include <sys/socket.h>
#include <vector>

using namespace vantle;

namespace {

// A connection that carries nothing: messages are made and read on it.
sd_bus* connection() {
  static sd_bus* const bus = [] {
    sd_bus* made = nullptr;
    int ends[2] = {-1, -1};
    const bool isMade = ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends) == 0 &&
                        sd_bus_new(&made) >= 0 && sd_bus_set_fd(made, ends[0], ends[0]) >= 0 &&
                        sd_bus_start(made) >= 0;
    if (!isMade) std::abort();
    return made;
  }();
  return bus;
}

class Values {
 public:
  explicit Values(std::vector<std::string> lines) : m_lines(std::move(lines)) {}

  bool isOver() const { return m_at >= m_lines.size(); }
  std::string next() { return isOver() ? std::string() : m_lines[m_at++]; }

 private:
  std::vector<std::string> m_lines;
  std::size_t m_at = 1; // behind the types
};

// Of one type; what sd-bus refuses (a text that is none, a path) stays out.
void appendBasic(sd_bus_message* message, char type, Values& values) {
  const std::string value = values.next();
  const auto number = static_cast<std::uint32_t>(std::strtoul(value.c_str(), nullptr, 10));
  const int truth = number % 2 == 0 ? 0 : 1;
  switch (type) {
  case 's':
  case 'o':
    sd_bus_message_append_basic(message, type, value.c_str());
    break;
  case 'u':
    sd_bus_message_append_basic(message, type, &number);
    break;
  default:
    sd_bus_message_append_basic(message, 'b', &truth);
  }
}

bool isBasic(const std::string& types) {
  return types.find_first_not_of("soub") == std::string::npos && types.size() <= 8;
}

// "as", "a(ss)", "a{ss}" and the like, and plain values; null for types that no daemon could send.
BusMessage messageOf(const std::vector<std::string>& lines) {
  sd_bus_message* made = nullptr;
  if (sd_bus_message_new_signal(connection(), &made, "/", "org.example.Fuzz", "Answer") < 0) return nullptr;
  BusMessage message(made);
  std::string types = lines.empty() ? std::string() : lines.front();
  Values values(lines);
  if (types.starts_with('a')) {
    types.erase(0, 1);
    const bool isStruct = types.starts_with('(') && types.ends_with(')');
    const bool isEntry = types.starts_with('{') && types.ends_with('}');
    std::string inner = isStruct || isEntry ? types.substr(1, types.size() - 2) : types;
    if (inner.empty() || !isBasic(inner) || (inner.size() != 1 && !isStruct && !isEntry)) return nullptr;
    if (sd_bus_message_open_container(made, 'a', types.c_str()) < 0) return nullptr;
    while (!values.isOver()) {
      const char kind = isStruct ? 'r' : 'e';
      const bool isOpen =
          (isStruct || isEntry) && sd_bus_message_open_container(made, kind, inner.c_str()) >= 0;
      for (const char type : inner) appendBasic(made, type, values);
      if (isOpen) sd_bus_message_close_container(made);
    }
    sd_bus_message_close_container(made);
  } else {
    if (!isBasic(types)) return nullptr;
    for (const char type : types) appendBasic(made, type, values);
  }
  return sd_bus_message_seal(made, 1, 0) >= 0 ? std::move(message) : nullptr;
}

template <class Read> auto again(sd_bus_message* message, Read read) {
  if (message != nullptr) sd_bus_message_rewind(message, 1);
  return read(message);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const BusMessage message = messageOf(split(bytes, '\n'));
  sd_bus_message* const read = message.get();

  for (const Inhibitor& inhibitor : again(read, blockingInhibitors)) {
    fuzz::require(inhibitor.processes.size() == 1 && inhibitor.processes.front() > 0,
                  "a holder has a process", bytes);
    fuzz::require(inhibitor.kinds.any(), "and holds something", bytes);
  }
  const std::vector<std::string> apps = again(read, appsIn);
  fuzz::require(apps.size() <= 256, "a list has an end", bytes);
  for (const std::string& app : apps) {
    fuzz::require(app.size() <= 255, "a name has one, too", bytes);
    isProgramOfApp("/usr/bin/player", app);
    isBusName(app);
  }
  again(read, pathsIn);
  again(read, textIn);
  again(read, truthIn);
  const std::optional<Pid> process = again(read, processIn);
  fuzz::require(!process || *process > 0, "a process has a number", bytes);

  for (const std::string& name : requestersIn(bytes)) {
    fuzz::require(sd_bus_service_name_is_valid(name.c_str()) > 0, "a requester has a name on the bus", bytes);
  }
  flatpakApp(bytes);
  return 0;
}
