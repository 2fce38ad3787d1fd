// SPDX-License-Identifier: MIT
#include "update/Answer.h"

#include "base/Json.h"
#include "update/AllowedUrl.h"
#include "update/Version.h"

namespace vantle {

namespace {

struct Latest {
  std::string version;
  std::string url;
};

std::optional<Latest> decoded(const std::string& body) {
  const Json document = Json::parse(body).value_or(Json());
  auto version = document.textAt("version");
  auto url = document.textAt("url");
  if (!version || !url) return std::nullopt;
  return Latest{std::move(*version), std::move(*url)};
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
