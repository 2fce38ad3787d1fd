// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/AppSettings.h"
#include "engine/ports/Clock.h"
#include "update/UpdateState.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantle {

class FeedRequest;

// What a build knows about its updates; the times and authorities are changed by tests only.
struct UpdateConfiguration {
  std::optional<std::string> version; // of this build
  std::string feed;                   // address of the feed; empty when the build has none
  std::string vendorHost;             // the only host of the feed and of the download page
  std::chrono::milliseconds silence = std::chrono::seconds(10); // given up when nothing arrives for so long
  std::chrono::milliseconds whole = std::chrono::seconds(60);   // and when it is not complete by then
  std::string authorities; // certificates to trust, as PEM; the system's when empty
};

// Tells the person that a newer version exists. It looks up the latest version number and a download page;
// it never downloads anything. Nothing of the network is touched before the first check.
class UpdateChecker {
 public:
  using State = update::State;
  using OpenInBrowser = std::function<void(const std::string& address)>;

  UpdateChecker(UpdateConfiguration configuration, AppSettings& settings, const Clock& clock,
                OpenInBrowser openInBrowser);
  ~UpdateChecker();
  UpdateChecker(const UpdateChecker&) = delete;
  UpdateChecker& operator=(const UpdateChecker&) = delete;

  Published<State, UpdateChecker> state;
  const std::optional<std::string> version; // of this build
  const std::string currentVersion;         // the same, "0" when the build has none
  const std::optional<std::string> feed;    // absent when the build has no usable one

  void check();            // does nothing while a check is under way
  void checkIfDue();       // at launch: when the person allows it and the last success is a day old
  void openDownloadPage(); // does nothing unless a newer version is available

 private:
  UpdateConfiguration m_configuration;
  AppSettings& m_settings;
  const Clock& m_clock;
  OpenInBrowser m_openInBrowser;
  std::unique_ptr<FeedRequest> m_session; // made at the first check
};

} // namespace vantle
