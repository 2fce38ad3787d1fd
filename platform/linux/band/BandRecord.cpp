// SPDX-License-Identifier: MIT
#include "platform/linux/band/BandRecord.h"

#include "base/Json.h"

#include <optional>
#include <utility>

namespace vantle {

namespace {

std::optional<BandRecord::Unit> unitOf(const Json& record) {
  const auto name = record.textAt("name");
  const auto path = record.textAt("path");
  const auto weight = record.unsignedAt("weight");
  if (!name || !path || !weight) return std::nullopt;
  return BandRecord::Unit{{*name, *path}, *weight};
}

} // namespace

BandRecord decodeBandRecord(std::string_view bytes, const std::string& bootId) {
  const Json document = Json::parse(bytes).value_or(Json());
  BandRecord record;
  if (document.textAt("boot") != bootId) return record;
  for (const Json& one : document.arrayAt("units")) {
    if (std::optional<BandRecord::Unit> unit = unitOf(one)) record.units.push_back(std::move(*unit));
  }
  for (const Json& one : document.arrayAt("sessions")) {
    if (const auto session = one.asInteger()) record.sessions.insert(*session);
  }
  for (const Json& one : document.arrayAt("sets")) {
    const auto set = one.asText() == nullptr ? std::nullopt : ProcessorSet::parse(*one.asText());
    if (set && !set->empty()) record.sets.push_back(*set);
  }
  return record;
}

std::string encodeBandRecord(const BandRecord& record, const std::string& bootId) {
  Json::Array units;
  for (const BandRecord::Unit& unit : record.units) {
    units.push_back(
        Json::Object{{"name", unit.place.name}, {"path", unit.place.path}, {"weight", unit.weight}});
  }
  Json::Array sets;
  for (const ProcessorSet& set : record.sets) sets.emplace_back(set.text());
  return Json(Json::Object{{"boot", bootId},
                           {"units", std::move(units)},
                           {"sessions", Json::Array(record.sessions.begin(), record.sessions.end())},
                           {"sets", std::move(sets)}})
      .text();
}

} // namespace vantle
