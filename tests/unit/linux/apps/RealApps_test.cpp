// SPDX-License-Identifier: MIT
// Real games and apps of Debian's packages, none of which is needed here: real_apps.json is what
// scripts/real-apps recorded of them, and of the desktop files of the machine that had them all.
#include "base/Json.h"
#include "base/Text.h"
#include "engine/AppTrees.h"
#include "platform/linux/apps/DesktopIdentity.h"
#include "platform/linux/apps/InterpretedProgram.h"
#include "platform/linux/band/UnitPath.h"
#include "platform/linux/process/ProcessOrigin.h"
#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantle {
namespace {

constexpr Pid starter = 700;      // who was there before: a terminal's shell, a menu
constexpr Pid self = 800;         // this program
constexpr Pid firstOfRow = 1000;  // the process that is number 0 in the record
constexpr Pid goneSession = 4000; // whose first process has ended
constexpr std::uint32_t person = 1000;

const Json& recorded() {
  static const Json json = [] {
    std::ifstream file(VANTLE_REAL_APPS);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    return Json::parse(bytes).value_or(Json());
  }();
  return json;
}

std::string textAt(const Json& json, std::string_view key) { return json.textAt(key).value_or(""); }
bool isTrue(const Json& json, std::string_view key) {
  const Json* found = json.find(key);
  return found != nullptr && found->asBool().value_or(false);
}

std::vector<std::string> textsAt(const Json& json, std::string_view key) {
  std::vector<std::string> all;
  for (const Json& text : json.arrayAt(key)) all.push_back(*text.asText());
  return all;
}

std::vector<DesktopEntry> entriesOf(const Json& holder) {
  std::vector<DesktopEntry> entries;
  for (const Json& json : holder.arrayAt("entries")) {
    DesktopEntry& entry = entries.emplace_back();
    entry.id = textAt(json, "id");
    entry.path = textAt(json, "path");
    entry.name = textAt(json, "name");
    entry.icon = textAt(json, "icon");
    entry.windowClass = textAt(json, "class");
    entry.category = textAt(json, "category");
    entry.executable = textAt(json, "executable");
    entry.realPath = textAt(json, "realPath");
    entry.arguments = textsAt(json, "arguments");
    entry.isScript = isTrue(json, "isScript");
    entry.isHidden = isTrue(json, "isHidden");
  }
  return entries;
}

// Those of a person's own folder come first, as a desktop reads them.
std::vector<DesktopEntry> entriesFor(const Json& row) {
  static const std::vector<DesktopEntry> installed = entriesOf(recorded());
  std::vector<DesktopEntry> all = entriesOf(row);
  all.insert(all.end(), installed.begin(), installed.end());
  return all;
}

const Json& ownerIn(const Json& row) {
  const auto number = row.find("window")->integerAt("process");
  const Json::Array& processes = row.arrayAt("processes");
  return *std::find_if(processes.begin(), processes.end(),
                       [&](const Json& process) { return process.integerAt("number") == number; });
}

// As readEvidence makes it of a process and its window, from the same facts.
AppEvidence evidenceOf(const Json& row) {
  const Json& window = *row.find("window");
  const Json& process = ownerIn(row);
  AppEvidence evidence;
  evidence.pid = firstOfRow;
  evidence.windowInstance = textAt(window, "instance");
  evidence.windowClass = textAt(window, "class");
  evidence.applicationId = textAt(window, "applicationId");
  evidence.commandName = textAt(process, "name");
  evidence.arguments = textsAt(process, "arguments");
  evidence.launchedFile = textAt(process, "launchedFile");
  evidence.executable = textAt(process, "executable");
  if (evidence.executable.empty()) evidence.executable = textAt(process, "started");
  evidence.program = evidence.executable;
  if (isInterpreter(fileNameOf(evidence.executable))) {
    const InterpretedProgram run = interpretedProgram(fileNameOf(evidence.executable), evidence.arguments);
    evidence.program = textAt(*process.find("files"), run.file);
    evidence.names = programNames(run, evidence.program);
  }
  if (evidence.executable.find("/.mount_") != std::string::npos) evidence.program = textAt(process, "image");
  return evidence;
}

std::string nameOf(const Json& row) { return textAt(row, "program") + ", " + textAt(row, "way"); }

TEST(RealApps, AreRecorded) {
  std::set<std::string> programs;
  for (const Json& row : recorded().arrayAt("rows")) programs.insert(textAt(row, "program"));
  EXPECT_GE(programs.size(), 20U) << "of " << VANTLE_REAL_APPS;
}

TEST(RealApps, AreFoundAsWhatTheyAre) {
  for (const Json& row : recorded().arrayAt("rows")) {
    const std::vector<DesktopEntry> entries = entriesFor(row);
    const AppEvidence evidence = evidenceOf(row);
    const AppIdentity identity = identityOf(evidence, matchEntry(evidence, entries));
    EXPECT_EQ(identity.bundleIdentifier.value_or("–"), textAt(row, "foundAs")) << nameOf(row);
    EXPECT_EQ(identity.localizedName, textAt(row, "name")) << nameOf(row);
    const bool isGame = identity.bundleCategory.value_or("").find("games") != std::string::npos ||
                        identity.executablePath.value_or("").find("wine64-preloader") != std::string::npos;
    EXPECT_EQ(isGame, isTrue(row, "isGame")) << nameOf(row);
  }
}

// The processes of one row, below somebody who has started them.
class RecordedProcesses final : public ProcessTable {
 public:
  // A unit of the user manager's may hold them all.
  explicit RecordedProcesses(const Json& row, std::string unit = {}) : m_unit(std::move(unit)) {
    add(starter, 1, starter, 0, ProcessRole::starter);
    add(self, 1, self, 0, ProcessRole::program);
    for (const Json& process : row.arrayAt("processes")) {
      const std::string name = textAt(process, "name");
      const ProcessRole role = isStarter(name)      ? ProcessRole::starter
                               : isSystemPart(name) ? ProcessRole::system
                                                    : ProcessRole::program;
      const Pid pid = pidOf(process, "number", 0);
      add(pid, pidOf(process, "parent", 1), pidOf(process, "session", goneSession),
          process.unsignedAt("age").value_or(0), role);
      m_origins[pid] = originOf(textAt(process, "executable"), [&](std::string_view variable) {
        return variable == "HOME"       ? std::string("/home/person")
               : variable == "APPIMAGE" ? textAt(ownerIn(row), "image")
                                        : std::string();
      });
    }
  }

  static Pid pidOf(const Json& process, std::string_view key, Pid nobody) {
    const std::int64_t number = process.integerAt(key).value_or(-1);
    return number < 0 ? nobody : number == 0 ? starter : firstOfRow + static_cast<Pid>(number);
  }

  std::optional<ProcessRecord> record(Pid pid) const override {
    const auto found = m_records.find(pid);
    return found == m_records.end() ? std::nullopt : std::optional(found->second);
  }
  std::vector<ProcessRecord> scan() const override {
    std::vector<ProcessRecord> all;
    for (const auto& [pid, record] : m_records) all.push_back(record);
    return all;
  }
  std::string place(Pid pid) const override { return pid >= firstOfRow ? m_unit : std::string(); }
  std::string origin(Pid pid) const override {
    const auto found = m_origins.find(pid);
    return found == m_origins.end() ? std::string() : found->second;
  }
  std::optional<std::string> executablePathBytes(Pid /*pid*/) const override { return {}; }
  std::optional<std::uint64_t> footprint(Pid /*pid*/) const override { return {}; }
  std::optional<std::uint64_t> cpuTime(Pid /*pid*/) const override { return {}; }
  std::optional<int> schedulerPriority(Pid /*pid*/) const override { return {}; }

 private:
  void add(Pid pid, Pid parent, Pid session, std::uint64_t ticks, ProcessRole role) {
    ProcessRecord record;
    record.pid = pid;
    record.parent = parent;
    record.session = session;
    record.startTicks = 1000 + ticks;
    record.startSec = record.startTicks / 100;
    record.startUsec = record.startTicks % 100 * 10'000;
    record.user = person;
    record.role = role;
    m_records.emplace(pid, record);
  }

  std::string m_unit;
  std::map<Pid, ProcessRecord> m_records;
  std::map<Pid, std::string> m_origins;
};

TEST(RealApps, OwnAllThatTheirStartHasBrought) {
  for (const Json& row : recorded().arrayAt("rows")) {
    if (!isTrue(row, "isWhole")) continue; // what else it is made of is told in docs/real-apps.md
    const RecordedProcesses table(row);
    const Pid app = RecordedProcesses::pidOf(ownerIn(row), "number", 0);
    // What was typed in a terminal and waits there is the terminal's, which is slowed as well.
    const bool isInTerminal = textAt(row, "way") == "terminal";
    std::set<Pid> apps{app};
    if (isInTerminal) apps.insert(starter);
    const AppTrees trees(table, {.apps = apps, .self = self, .members = {}});
    std::set<Pid> owned;
    for (const Pid each : apps) owned.insert(trees.processesOf(each).begin(), trees.processesOf(each).end());
    owned.erase(starter);
    std::set<Pid> all;
    for (const Json& process : row.arrayAt("processes"))
      all.insert(RecordedProcesses::pidOf(process, "number", 0));
    EXPECT_EQ(owned, all) << nameOf(row);
  }
}

// As GNOME and Plasma start them: whatever has left the app's tree and session still stands in its unit, and
// the user manager is nobody's launcher.
TEST(RealApps, OwnTheirUnit) {
  const std::string manager = userManagerPath(person);
  std::size_t tried = 0;
  for (const Json& row : recorded().arrayAt("rows")) {
    const std::string way = textAt(row, "way");
    if (way != "command" && way != "desktop file") continue;
    const std::string unit = manager + "/app.slice/app-gnome-" + textAt(row, "program") + "-1001.scope";
    const RecordedProcesses table(row, appPlaceOf(manager, unit));
    const Pid app = RecordedProcesses::pidOf(ownerIn(row), "number", 0);
    const AppTrees trees(table, {.apps = {app}, .self = self, .members = {}});
    for (const Json& process : row.arrayAt("processes")) {
      const Pid pid = RecordedProcesses::pidOf(process, "number", 0);
      EXPECT_EQ(trees.appOf(pid), app) << nameOf(row) << ": " << textAt(process, "name");
    }
    ++tried;
  }
  EXPECT_GE(tried, 40U);
}

} // namespace
} // namespace vantle
