// SPDX-License-Identifier: MIT
#include "platform/linux/games/GameModeClients.h"

#include "platform/linux/process/NamespacePids.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace vantle {

namespace {

using SteadyClock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char* daemonName = "com.feralinteractive.GameMode"; // its interface as well
constexpr const char* daemonPath = "/com/feralinteractive/GameMode";

constexpr const char* daemonChange =
    "type='signal',sender='org.freedesktop.DBus',path='/org/freedesktop/DBus',"
    "interface='org.freedesktop.DBus',member='NameOwnerChanged',arg0='com.feralinteractive.GameMode'";

// The wrapper registers each program that a game's start goes through: a dozen for one with Proton.
constexpr std::size_t mostGames = 64;

constexpr milliseconds betweenTellings{1000};

// A bus that has ended is over with the session, or is back by then.
constexpr milliseconds untilNextBus{1000};

BusMessage askingBus(BusConnection& bus, const char* member, const char* about) {
  BusMessage message =
      bus.methodCall({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", member});
  if (message) sd_bus_message_append(message.get(), "s", about);
  return message;
}

} // namespace

GameModeClients::GameModeClients(EventLoop& loop, BusConnection& sessionBus, const Kernel& kernel,
                                 const ProcessTable& processes, std::function<void()> changed)
    : m_loop(loop), m_questions(sessionBus), m_kernel(kernel), m_processes(processes),
      m_changed(std::move(changed)), m_busLost(sessionBus.onLost([this] { forgetBus(); })) {
  follow();
}

void GameModeClients::follow() {
  BusConnection& bus = m_questions.bus();
  m_daemonChanges = bus.match(daemonChange, [this](sd_bus_message* signal) {
    const char* name = nullptr;
    const char* before = nullptr;
    const char* after = nullptr;
    if (sd_bus_message_read(signal, "sss", &name, &before, &after) > 0) meet(after);
  });
  m_questions.ask(askingBus(bus, "GetNameOwner", daemonName), [this](sd_bus_message* reply) {
    const char* owner = nullptr;
    if (reply && sd_bus_message_read(reply, "s", &owner) > 0) meet(owner);
  });
}

void GameModeClients::forgetBus() {
  m_daemonChanges.reset();
  meet({});
  m_again = m_loop.after(untilNextBus, [this] {
    m_again.reset();
    follow();
  });
}

void GameModeClients::meet(const std::string& daemon) {
  if (daemon == m_daemon) return;
  m_daemon = daemon;
  m_hasList = false;
  m_signals.reset();
  m_questions.giveUp();
  if (daemon.empty()) return;
  m_questions.ask(askingBus(m_questions.bus(), "GetConnectionUnixProcessID", daemon.c_str()),
                  [this](sd_bus_message* reply) {
                    std::uint32_t pid = 0;
                    if (!reply || sd_bus_message_read(reply, "u", &pid) <= 0) return;
                    if (!numbersAsHere(static_cast<Pid>(pid))) return;
                    // By the sender, so that nobody else can speak for it. Before the list: nothing is lost.
                    m_signals =
                        m_questions.bus().match("type='signal',sender='" + m_daemon + "',path='" +
                                                    daemonPath + "',interface='" + daemonName + "'",
                                                [this](sd_bus_message* signal) { takeSignal(signal); });
                    askForList();
                  });
}

// A daemon in a container would name processes by the numbers that they have in there.
bool GameModeClients::numbersAsHere(Pid daemon) const {
  if (daemon < 1 || !m_kernel.isOwn(daemon)) return false;
  const std::optional<std::string> status = m_kernel.read("/proc/" + std::to_string(daemon) + "/status");
  return status && namespacePids(*status).size() <= 1;
}

void GameModeClients::askForList() {
  m_questions.ask(m_questions.bus().methodCall({m_daemon.c_str(), daemonPath, daemonName, "ListGames"}),
                  [this](sd_bus_message* reply) { takeList(reply); });
}

void GameModeClients::takeList(sd_bus_message* reply) {
  m_hasList = reply != nullptr;
  if (!reply || sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "(io)") <= 0) return;
  std::int32_t pid = 0;
  const char* object = nullptr;
  for (std::size_t place = 0; place < mostGames; ++place) {
    if (sd_bus_message_read(reply, "(io)", &pid, &object) <= 0) return;
    add(pid);
  }
}

void GameModeClients::takeSignal(sd_bus_message* signal) {
  // While it waits for a password it answers nobody; now it speaks again.
  if (!m_hasList && m_questions.isAnswered()) askForList();
  std::int32_t pid = 0;
  const char* object = nullptr;
  const bool isRegistered = sd_bus_message_is_signal(signal, daemonName, "GameRegistered") > 0;
  const bool isWithdrawn = sd_bus_message_is_signal(signal, daemonName, "GameUnregistered") > 0;
  if (!isRegistered && !isWithdrawn) return;
  if (sd_bus_message_read(signal, "io", &pid, &object) <= 0) return;
  if (isRegistered) {
    add(pid);
  } else {
    withdraw(pid);
  }
}

void GameModeClients::add(Pid pid) {
  if (pid < firstAppPid || !m_kernel.isOwn(pid)) return;
  const std::optional<ProcessRecord> record = m_processes.record(pid);
  if (!record || record->isKernelThread) return;
  const ProcessIdentity game = identityOf(*record);
  if (std::find(m_games.begin(), m_games.end(), game) != m_games.end()) return;
  if (m_games.size() >= mostGames) forgetEnded();
  if (m_games.size() >= mostGames) return;
  m_games.push_back(game);
  tellLater();
}

void GameModeClients::forgetEnded() {
  std::erase_if(m_games, [this](const ProcessIdentity& game) {
    const std::optional<ProcessRecord> now = m_processes.record(game.pid);
    return !now || identityOf(*now) != game;
  });
}

void GameModeClients::withdraw(Pid pid) {
  if (std::erase_if(m_games, [pid](const ProcessIdentity& game) { return game.pid == pid; }) > 0) tellLater();
}

// Never from inside a signal: who is told asks others on the same bus, and waits for them.
void GameModeClients::tellLater() {
  if (m_telling) return;
  const auto now = SteadyClock::now();
  const auto due = m_told ? std::max(now, *m_told + betweenTellings) : now;
  m_telling = m_loop.after(std::chrono::ceil<milliseconds>(due - now), [this] {
    m_telling.reset();
    m_told = SteadyClock::now();
    m_changed();
  });
}

} // namespace vantle
