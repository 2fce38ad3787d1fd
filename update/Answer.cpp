// SPDX-License-Identifier: MIT
#include "update/Answer.h"

#include "update/AllowedUrl.h"
#include "update/Version.h"

#include <nlohmann/json.hpp>

namespace vantle {

namespace {

struct Latest {
  std::string version;
  std::string url;
};

std::optional<Latest> decoded(const std::string& body) {
  const auto document = nlohmann::json::parse(body, nullptr, false);
  if (!document.is_object()) return std::nullopt;
  const auto version = document.find("version");
  const auto url = document.find("url");
  if (version == document.end() || !version->is_string()) return std::nullopt;
  if (url == document.end() || !url->is_string()) return std::nullopt;
  return Latest{version->get<std::string>(), url->get<std::string>()};
}

} // namespace

update::State meaningOf(const Answer& answer, const std::string& currentVersion,
                        const std::string& vendorHost) {
  constexpr int ok = 200;
  const update::Failed unexpected{"The update server sent an unexpected answer."};
  if (answer.transportFailed) return update::Failed{"Couldn't reach the update server."};
  if (answer.status != ok) return unexpected;
  const std::optional<Latest> latest = decoded(answer.body);
  if (!latest) return unexpected;
  std::string version = trimmedVersion(latest->version);
  if (!isNewer(version, currentVersion)) return update::UpToDate{};
  if (!isAllowedUrl(latest->url, vendorHost)) return unexpected;
  return update::Available{std::move(version), latest->url};
}

} // namespace vantle
