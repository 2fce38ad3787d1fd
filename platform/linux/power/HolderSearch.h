// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/ProcessTable.h"
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/power/Inhibitor.h"
#include "platform/linux/process/FlatpakInstances.h"

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// What the processes behind inhibitors are looked for with.
struct HolderSources {
  const ProcessTable& processes;
  std::string flatpakFolder = {};                      // see flatpakInstances
  std::shared_ptr<DesktopEntries> installed = nullptr; // for the names that apps have in menus; may be null
};

// Finds the processes on whose behalf the machine is kept awake. One search looks at the processes once, when
// it first has to: it is made for one decision and thrown away.
class HolderSearch {
 public:
  explicit HolderSearch(const HolderSources& sources) : m_sources(sources) {}

  // The surest that there is: a process that the bus knows; if that is a sandbox's proxy, the processes of
  // the sandbox; else the sandboxes of that app id, and the programs that are called like the app. Rather one
  // process too many at full speed than a download slowed down. Empty when nobody is found.
  std::set<Pid> find(const Inhibitor& inhibitor);

 private:
  struct Program {
    Pid pid = 0;
    std::string path;
    std::string name; // of the file, in lower case
  };

  bool isProxy(Pid pid) const;
  const std::vector<ProcessRecord>& scan();
  const std::set<Pid>& called(const std::string& app);
  std::set<Pid> sandboxed(const std::string& app);
  std::set<Pid> programsCalled(const std::string& app);
  std::set<std::string> filesInMenus(const std::string& app);

  const HolderSources& m_sources;
  // What was looked up already: of names there can be many.
  std::optional<std::vector<ProcessRecord>> m_scan;
  std::optional<std::vector<FlatpakInstance>> m_sandboxes;
  std::optional<std::vector<Program>> m_programs;
  const std::vector<DesktopEntry>* m_menus = nullptr;
  std::map<std::string, std::set<Pid>> m_called;
};

// Whether a program of this path is the app of that id: "firefox" or "org.mozilla.firefox" is
// "/usr/lib/firefox/firefox" as well as "/usr/lib/firefox-esr/firefox-esr".
bool isProgramOfApp(std::string_view path, std::string_view appId);

} // namespace vantle
