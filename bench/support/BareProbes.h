// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <string>
#include <sys/types.h>
#include <vector>

struct pa_context;
struct pa_mainloop;
struct sd_bus;

namespace vantle::bench {

// The two questions about the playing streams, over a kept connection to a sound server; nothing is made of
// the answers.
class BareSound {
 public:
  explicit BareSound(const std::string& server);
  ~BareSound();
  BareSound(const BareSound&) = delete;
  BareSound& operator=(const BareSound&) = delete;

  void ask();

 private:
  pa_mainloop* m_loop;
  pa_context* m_context;
};

// The one question to logind, over a kept connection to its bus.
class BareInhibitors {
 public:
  explicit BareInhibitors(const std::string& busAddress);
  ~BareInhibitors();
  BareInhibitors(const BareInhibitors&) = delete;
  BareInhibitors& operator=(const BareInhibitors&) = delete;

  void ask();

 private:
  sd_bus* m_bus = nullptr;
};

// The files that a panel refresh cannot do without: one stat file for each process of the machine, one status
// file for each process of a slowed app and for the program itself, and the pressure file.
void readBareRefresh(const std::vector<pid_t>& ofSlowedApps);

} // namespace vantle::bench
