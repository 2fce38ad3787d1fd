// SPDX-License-Identifier: MIT
#include "platform/linux/windows/kwin/KWinScript.h"

#include "platform/posix/files/OwnFolder.h"

#include <optional>
#include <utility>

namespace vantle {

namespace {

// It only ends what would otherwise be remembered for ever.
constexpr std::chrono::seconds longestAnswer{25};

constexpr const char* scriptingInterface = "org.kde.kwin.Scripting";
constexpr const char* scriptInterface = "org.kde.kwin.Script";

} // namespace

struct KWinScript::Run {
  std::string name;
  std::string text;
  Done done;
  std::optional<TemporaryFile> file;
};

KWinScript::KWinScript(EventLoop& loop, BusConnection& sessionBus, Place place)
    : m_loop(loop), m_bus(sessionBus), m_place(std::move(place)) {}

KWinScript::~KWinScript() {
  if (m_shell.empty()) return;
  m_bus.send(scripting("unloadScript", m_place.name));
  if (m_areOrdersUnderWay) m_bus.send(scripting("unloadScript", nameOfOrders()));
}

void KWinScript::meet(const std::string& shell, std::function<void()> failed) {
  m_meeting = std::make_shared<const bool>();
  m_shell = shell;
  m_failed = std::move(failed);
  m_areOrdersUnderWay = false;
  m_orders = {};
  m_patience = m_loop.after(m_place.longestWait, [this] { fail(); });
  m_feed = run(m_place.name, kwinFeedScript(m_bus.uniqueName()), [this](bool isRunning) {
    if (!isRunning) fail();
  });
}

void KWinScript::begin() {
  m_patience.reset();
  m_failed = {};
  m_feed.reset();
}

void KWinScript::fail() {
  m_patience.reset();
  m_feed.reset();
  if (const auto failed = std::exchange(m_failed, {})) failed();
}

void KWinScript::ask(std::function<void(bool)> answered) {
  call(scripting("isScriptLoaded", m_place.name),
       [answered = std::move(answered)](sd_bus_message* reply) { answered(reply != nullptr); });
}

bool KWinScript::requestClose(const std::string& window) {
  m_orders.close.push_back(window);
  return carryOut();
}

bool KWinScript::requestFront(const std::string& window) {
  m_orders.front = window;
  return carryOut();
}

// What is asked for while one script still runs is done by the next.
bool KWinScript::carryOut() {
  if (m_shell.empty()) return false;
  if (m_areOrdersUnderWay || (m_orders.close.empty() && m_orders.front.empty())) return true;
  m_areOrdersUnderWay = true;
  run(nameOfOrders(), kwinOrderScript(std::exchange(m_orders, {})), [this](bool) {
    m_areOrdersUnderWay = false;
    m_bus.send(scripting("unloadScript", nameOfOrders()));
    carryOut();
  });
  return true;
}

std::shared_ptr<const KWinScript::Run> KWinScript::run(std::string name, std::string text, Done done) {
  const auto run = std::make_shared<Run>();
  run->name = std::move(name);
  run->text = std::move(text);
  run->done = std::move(done);
  // KWin takes no script under a name that one has already.
  call(scripting("unloadScript", run->name), [this, run](sd_bus_message*) { load(run); });
  return run;
}

void KWinScript::load(const std::shared_ptr<Run>& run) {
  // KWin would run what somebody else puts in its place.
  if (!openOwnFolder(m_place.folder)) return run->done(false);
  TemporaryFile::removeLeftovers(m_place.folder);
  run->file.emplace(m_place.folder);
  if (!run->file->write(run->text)) return run->done(false);
  BusMessage message = scripting("loadScript", run->file->path());
  if (message && sd_bus_message_append(message.get(), "s", run->name.c_str()) < 0) return run->done(false);
  call(std::move(message), [this, run](sd_bus_message* reply) {
    std::int32_t number = -1;
    const bool isLoaded = reply != nullptr && sd_bus_message_read(reply, "i", &number) > 0 && number >= 0;
    if (!isLoaded) return run->done(false);
    startAt(run, number, false);
  });
}

// Where the script stands on the bus depends on KWin's version: 6, or 5.
void KWinScript::startAt(const std::shared_ptr<Run>& run, std::int32_t number, bool isOldPath) {
  const std::string path = (isOldPath ? "/" : "/Scripting/Script") + std::to_string(number);
  call(m_bus.methodCall({m_shell.c_str(), path.c_str(), scriptInterface, "run"}),
       [this, run, number, isOldPath](sd_bus_message* reply) {
         if (reply == nullptr && !isOldPath) return startAt(run, number, true);
         run->done(reply != nullptr);
       });
}

BusMessage KWinScript::scripting(const char* member, const std::string& argument) {
  BusMessage message = m_bus.methodCall({m_shell.c_str(), "/Scripting", scriptingInterface, member});
  if (message && sd_bus_message_append(message.get(), "s", argument.c_str()) < 0) return nullptr;
  return message;
}

// What cannot be sent is never answered: the bus is gone then, and everybody hears of that.
void KWinScript::call(BusMessage message, BusConnection::Reply reply) {
  m_bus.callAsync(std::move(message), longestAnswer,
                  [meeting = std::weak_ptr(m_meeting), reply = std::move(reply)](sd_bus_message* answer) {
                    if (!meeting.expired()) reply(answer);
                  });
}

} // namespace vantle
