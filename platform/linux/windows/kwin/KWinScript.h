// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/windows/fed/FeedCaller.h"
#include "platform/linux/windows/kwin/KWinScriptText.h"
#include "platform/posix/files/TemporaryFile.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vantle {

// Puts a script into KWin that calls the feed, and takes it out at the end. It takes the place of one of the
// same name, as a copy of the program leaves it that is killed. KWin reads scripts from files only: each lies
// in the folder until it runs, for this user's eyes.
class KWinScript final : public FeedCaller {
 public:
  struct Place {
    std::string name;   // of the script
    std::string folder; // for its file; nobody but this user and root may write there
    // Within which it has to call: a busy KWin was seen to need 0.1 s.
    std::chrono::milliseconds longestWait{2000};
  };

  // All that is handed in outlives it.
  KWinScript(EventLoop& loop, BusConnection& sessionBus, Place place);
  ~KWinScript() override;
  KWinScript(const KWinScript&) = delete;
  KWinScript& operator=(const KWinScript&) = delete;

  void meet(const std::string& shell, std::function<void()> failed) override;
  void begin() override;
  void ask(std::function<void(bool isAnswered)> answered) override;
  bool requestClose(const std::string& window) override;
  bool requestFront(const std::string& window) override;

 private:
  using Done = std::function<void(bool isRunning)>;
  struct Run; // of one script

  std::shared_ptr<const Run> run(std::string name, std::string text, Done done);
  void load(const std::shared_ptr<Run>& run);
  void startAt(const std::shared_ptr<Run>& run, std::int32_t number, bool isOldPath);
  void fail();
  bool carryOut();
  BusMessage scripting(const char* member, const std::string& argument);
  // The reply counts as long as the shell is the same.
  void call(BusMessage message, BusConnection::Reply reply);
  std::string nameOfOrders() const { return m_place.name + ".orders"; }

  EventLoop& m_loop;
  BusConnection& m_bus;
  Place m_place;
  std::string m_shell;            // empty before there was one
  std::function<void()> m_failed; // while it may
  std::unique_ptr<EventLoop::Handle> m_patience;
  std::shared_ptr<const Run> m_feed; // until it has called: its file is read late
  KWinOrders m_orders;               // to be carried out
  bool m_areOrdersUnderWay = false;
  std::shared_ptr<const bool> m_meeting; // as long as the shell is the same
};

} // namespace vantle
