// SPDX-License-Identifier: MIT
#include "tests/realapps/Table.h"

#include "tests/realapps/Evidence.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

namespace vantle::realapps {

namespace {

using Member = std::pair<const char*, std::string Row::*>;
constexpr std::array members{
    Member{"program", &Row::program},     Member{"version", &Row::version},
    Member{"machine", &Row::machine},     Member{"way", &Row::way},
    Member{"foundAs", &Row::foundAs},     Member{"name", &Row::name},
    Member{"icon", &Row::icon},           Member{"identity", &Row::identity},
    Member{"boost", &Row::boost},         Member{"slowedWhole", &Row::slowedWhole},
    Member{"backWhole", &Row::backWhole}, Member{"soundSpared", &Row::soundSpared},
    Member{"wrong", &Row::wrong},
};

std::string cell(const std::string& text) {
  std::string written;
  for (const char letter : text) written += letter == '|' ? std::string("\\|") : std::string(1, letter);
  return written.empty() ? "–" : written;
}

const Program& programOf(const Row& row) {
  return *std::find_if(programs().begin(), programs().end(),
                       [&](const Program& program) { return program.key == row.program; });
}

Way wayOf(const Row& row) {
  return *std::find_if(allWays.begin(), allWays.end(), [&](Way way) { return row.way == textOf(way); });
}

std::vector<Row> allRows(const std::filesystem::path& folder) {
  std::vector<Row> all;
  for (const Program& program : programs()) {
    std::vector<Row> rows = keptRows(folder / (program.key + ".json"));
    std::sort(rows.begin(), rows.end(),
              [](const Row& left, const Row& right) { return wayOf(left) < wayOf(right); });
    std::move(rows.begin(), rows.end(), std::back_inserter(all));
  }
  return all;
}

Json jsonOf(const Row& row) {
  Json::Object object;
  for (const auto& [name, member] : members) object.emplace_back(name, row.*member);
  object.emplace_back("evidence", row.evidence);
  return object;
}

Row rowOf(const Json& json) {
  Row row;
  for (const auto& [name, member] : members) row.*member = json.textAt(name).value_or("");
  if (const Json* evidence = json.find("evidence")) row.evidence = *evidence;
  return row;
}

void writeLine(std::ostream& out, const Row& row) {
  out << "| " << row.way << " | " << cell(row.foundAs) << " | " << cell(row.name) << " | " << cell(row.icon)
      << " | " << cell(row.boost) << " | " << cell(row.slowedWhole) << " | " << cell(row.backWhole) << " | "
      << cell(row.soundSpared) << " | " << (row.wrong.empty() ? "right" : "**wrong**: " + cell(row.wrong))
      << " |\n";
}

void writeSummary(std::ostream& out, const std::vector<Row>& rows) {
  const auto right =
      std::count_if(rows.begin(), rows.end(), [](const Row& row) { return row.wrong.empty(); });
  out << right << " of " << rows.size() << " rows are right:";
  const char* between = "";
  for (const Way way : allWays) {
    const auto isOfWay = [&](const Row& row) { return wayOf(row) == way; };
    const auto all = std::count_if(rows.begin(), rows.end(), isOfWay);
    if (all == 0) continue;
    out << std::exchange(between, ",") << " by " << textOf(way) << " "
        << std::count_if(rows.begin(), rows.end(),
                         [&](const Row& row) { return isOfWay(row) && row.wrong.empty(); })
        << " of " << all;
  }
  out << ".\nOf all, "
      << std::count_if(rows.begin(), rows.end(), [](const Row& row) { return row.identity == "right"; })
      << " were found right: id, name and Boost.\n";
}

// On a machine of its own a program has a heading of its own.
void writeTables(std::ostream& out, const std::vector<Row>& rows) {
  std::string last;
  for (const Row& row : rows) {
    if (row.program != last) {
      const Program& program = programOf(row);
      out << (row.machine.empty() ? "\n## " : "\n### ") << row.program
          << (row.machine.empty() ? "" : ", with a user manager") << "\n\n"
          << program.family << "; " << program.package << " " << row.version << "\n\n"
          << "| started | found as | name | icon | Boost | slowed whole | back whole | sound spared | |\n"
             "|---|---|---|---|---|---|---|---|---|\n";
      last = row.program;
    }
    writeLine(out, row);
  }
}

void writeReasons(std::ostream& out, const std::vector<Row>& rows) {
  if (std::all_of(rows.begin(), rows.end(), [](const Row& row) { return row.wrong.empty(); })) return;
  out << (rows.front().machine.empty() ? "\n## Why" : "\n### Why, with a user manager")
      << "\n\n| program | started | reason |\n|---|---|---|\n";
  for (const Row& row : rows) {
    if (row.wrong.empty()) continue;
    const std::string reason = reasonFor(programOf(row), wayOf(row), row.wrong);
    out << "| " << row.program << " | " << row.way << " | "
        << (reason.empty() ? "not explained yet" : cell(reason)) << " |\n";
  }
}

} // namespace

std::vector<Row> keptRows(const std::filesystem::path& file) {
  std::ifstream in(file);
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  std::vector<Row> rows;
  const std::optional<Json> json = Json::parse(bytes);
  if (!json) return rows;
  for (const Json& row : json->arrayAt("rows")) rows.push_back(rowOf(row));
  return rows;
}

void keepRows(const std::filesystem::path& file, const std::vector<Row>& rows) {
  Json::Array array;
  for (const Row& row : rows) array.push_back(jsonOf(row));
  std::ofstream(file) << Json(Json::Object{{"rows", std::move(array)}}).text(1) << "\n";
}

void writePage(std::ostream& out, const std::filesystem::path& folder) {
  const std::vector<Row> rows = allRows(folder);
  out << "# Real games and real apps\n\n"
         "What `scripts/real-apps` saw, which wrote this page: real programs of Debian's packages on a "
         "private X11\n"
         "desktop (Xvfb, openbox) of an ordinary user without a user manager, each started in several ways, "
         "with a "
         "Boost while\n"
         "it was in front and one while another game was. What Vantle found is what `vantle status --json` "
         "says; "
         "everything\n"
         "else is what the kernel says of every thread of every process that the start has brought. What "
         "`scripts/real-apps-vm`\n"
         "saw on a machine with a user manager is at the end.\n\n"
         "- *found as*: the id of the app; *icon*: the one that its desktop file names, if that has a "
         "picture.\n"
         "- *Boost*: with it in front, by itself for games and asked for with `vantle boost` for others; the "
         "terminal beside it\n"
         "  was slowed whole, and nothing of the program itself.\n"
         "- *slowed whole*: behind a game, each thread of each process was at the band's values.\n"
         "- *back whole*: after the end of that game all of them were as before.\n"
         "- *sound spared*: behind a game, nothing of a player that was heard was slowed.\n\n";
  writeSummary(out, rows);
  writeTables(out, rows);
  writeReasons(out, rows);
}

const char* const headingOfUnits = "## With a user manager\n";

void writeUnits(std::ostream& out, const std::filesystem::path& folder) {
  const std::vector<Row> rows = allRows(folder);
  std::set<std::string> machines;
  for (const Row& row : rows) machines.insert(row.machine);
  out << headingOfUnits
      << "\n"
         "The same on a virtual machine with systemd, a login session and its user manager:\n";
  const char* between = "";
  for (const std::string& machine : machines) out << std::exchange(between, "; ") << machine;
  out << ".\n"
         "Xvfb and openbox are in the login session, and so is what is started by command, desktop file, "
         "menu "
         "and terminal.\n\n"
         "- *scope*: GIO starts it from its desktop file, and the process is put into "
         "`app-gnome-ID-PID.scope`, as GNOME does it.\n"
         "- *service*: the user manager starts what the desktop file says as `app-ID@RANDOM.service`, as "
         "Plasma does it.\n"
         "- With both, the terminal beside it, the other game and Vantle are in scopes as well.\n"
         "- *slowed whole*: a thread is at the band's values by the weight of its unit, too (`cpu.idle` 1). "
         "*back whole*:\n"
         "  the unit's weight is as before.\n\n";
  writeSummary(out, rows);
  writeTables(out, rows);
  writeReasons(out, rows);
}

void writeRecord(std::ostream& out, const std::filesystem::path& folder) {
  out << "{\"entries\": [\n";
  const Json entries = installedEntries();
  const char* between = "";
  for (const Json& entry : *entries.asArray()) {
    out << between << entry.text();
    between = ",\n";
  }
  out << "\n],\n\"rows\": [\n";
  between = "";
  for (const Row& row : allRows(folder)) {
    if (row.identity != "right") continue;
    Json json = row.evidence;
    json.set("program", row.program);
    json.set("way", row.way);
    json.set("foundAs", row.foundAs);
    json.set("name", row.name);
    json.set("isGame", programOf(row).kind == Kind::game);
    json.set("isWhole", row.wrong.empty());
    out << between << json.text();
    between = ",\n";
  }
  out << "\n]}\n";
}

} // namespace vantle::realapps
