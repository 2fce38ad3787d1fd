// SPDX-License-Identifier: MIT
#include "update/UpdateChecker.h"

#include "update/AllowedUrl.h"
#include "update/Answer.h"
#include "update/FeedRequest.h"

#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::seconds oneDay(86400);

std::optional<std::string> usableFeed(const UpdateConfiguration& configuration) {
  if (!isAllowedUrl(configuration.feed, configuration.vendorHost)) return std::nullopt;
  return configuration.feed;
}

} // namespace

UpdateChecker::UpdateChecker(UpdateConfiguration configuration, AppSettings& settings, const Clock& clock,
                             OpenInBrowser openInBrowser)
    : state(update::Idle{}), version(configuration.version), currentVersion(version.value_or("0")),
      feed(usableFeed(configuration)), m_configuration(std::move(configuration)), m_settings(settings),
      m_clock(clock), m_openInBrowser(std::move(openInBrowser)) {}

UpdateChecker::~UpdateChecker() = default;

void UpdateChecker::check() {
  if (!feed) {
    state.assign(update::NotConfigured{});
    return;
  }
  if (std::holds_alternative<update::Checking>(state.get())) return;
  state.assign(update::Checking{});
  if (!m_session) {
    const FeedLimits limits{.silence = m_configuration.silence, .whole = m_configuration.whole};
    m_session = std::make_unique<FeedRequest>(limits, m_configuration.authorities);
  }
  m_session->start(*feed, [this](const Answer& answer) {
    State result = meaningOf(answer, currentVersion, m_configuration.vendorHost);
    if (!std::holds_alternative<update::Failed>(result))
      m_settings.setLastUpdateCheck(std::chrono::floor<std::chrono::seconds>(m_clock.now()));
    state.assign(std::move(result));
  });
}

void UpdateChecker::checkIfDue() {
  if (!m_settings.checkUpdatesAutomatically.get()) return;
  const std::optional<Date> last = m_settings.lastUpdateCheck();
  if (last && m_clock.now() - *last < oneDay) return;
  check();
}

void UpdateChecker::openDownloadPage() {
  if (const auto* newer = std::get_if<update::Available>(&state.get())) m_openInBrowser(newer->page);
}

} // namespace vantle
