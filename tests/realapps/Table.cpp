// SPDX-License-Identifier: MIT
#include "tests/realapps/Table.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <array>
#include <map>
#include <optional>
#include <sstream>

namespace vantle::realapps {

namespace {

using Member = std::pair<const char*, std::string Row::*>;
constexpr std::array members{
    Member{"program", &Row::program},         Member{"version", &Row::version},
    Member{"way", &Row::way},                 Member{"found as", &Row::foundAs},
    Member{"name", &Row::name},               Member{"icon", &Row::icon},
    Member{"Boost", &Row::boost},             Member{"slowed whole", &Row::slowedWhole},
    Member{"back whole", &Row::backWhole},    Member{"sound spared", &Row::soundSpared},
    Member{"wrong", &Row::wrong},             Member{"reason", &Row::reason},
};

std::string cell(const std::string& text) {
  std::string written;
  for (const char letter : text) written += letter == '|' ? std::string("\\|") : std::string(1, letter);
  return written;
}

} // namespace

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

std::vector<Row> keptRows(const std::filesystem::path& file) {
  std::ifstream in(file);
  const std::string bytes{std::istreambuf_iterator<char>(in), {}};
  const std::optional<Json> json = Json::parse(bytes);
  std::vector<Row> rows;
  if (json)
    for (const Json& row : json->arrayAt("rows")) rows.push_back(rowOf(row));
  return rows;
}

void keepRows(const std::filesystem::path& file, const std::vector<Row>& rows) {
  Json::Array array;
  for (const Row& row : rows) array.push_back(jsonOf(row));
  Json json{Json::Object{{"rows", array}}};
  std::ofstream(file) << json.text(1) << "\n";
}

void writePage(std::ostream& out, const std::filesystem::path& folder) {
  std::ostringstream table;
  std::ostringstream remarks;
  std::size_t right = 0;
  std::size_t all = 0;
  for (const Program& program : programs()) {
    for (const Row& row : keptRows(folder / (program.key + ".json"))) {
      ++all;
      right += row.wrong.empty() ? 1 : 0;
      table << "| " << program.key << " (" << program.family << ") | " << row.version << " | " << row.way << " | "
            << cell(row.foundAs) << " | " << cell(row.name) << " | " << cell(row.icon) << " | " << row.boost << " | "
            << row.slowedWhole << " | " << row.backWhole << " | " << row.soundSpared << " | "
            << (row.wrong.empty() ? "" : "wrong: " + cell(row.wrong)) << " |\n";
    }
  }
  out << right << " of " << all << " right.\n\n"
      << table.str();
}

} // namespace vantle::realapps
