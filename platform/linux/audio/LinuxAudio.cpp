// SPDX-License-Identifier: MIT
#include "platform/linux/audio/LinuxAudio.h"

#include "platform/linux/audio/AlsaStatus.h"
#include "platform/linux/process/NamespacePids.h"
#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestLook{100}; // at what processes have open

// What a client of JACK 2 has open of each other client, "/dev/shm/jack_sem.1000_default_system".
constexpr std::string_view jackSemaphore = "/jack_sem.";

bool isHolder(const std::vector<std::string>& files, const std::vector<AlsaPlayback>& playbacks,
              bool isJack) {
  return std::any_of(files.begin(), files.end(), [&](const std::string& file) {
    return (isJack && file.find(jackSemaphore) != std::string::npos) ||
           std::any_of(playbacks.begin(), playbacks.end(),
                       [&](const AlsaPlayback& playback) { return playback.device == file; });
  });
}

} // namespace

LinuxAudio::LinuxAudio(std::shared_ptr<const ProcKernel> kernel, Servers servers,
                       std::vector<Question*> beside, std::chrono::milliseconds longestWait)
    : m_kernel(std::move(kernel)), m_jackFolder(std::move(servers.jackFolder)), m_beside(std::move(beside)),
      m_longestWait(longestWait), m_pipeWire(std::move(servers.pipeWire)),
      m_pulseAudio(std::move(servers.pulseAudio)) {}

std::vector<Player> LinuxAudio::serverPlayers(Moment deadline) {
  askTogether({&m_pipeWire, &m_pulseAudio}, deadline, m_beside);
  const std::optional<std::vector<Player>> ofPipeWire = m_pipeWire.players();
  std::vector<Player> players = ofPipeWire.value_or(std::vector<Player>{});
  if (ofPipeWire && m_pulseAudio.isPipeWire()) return players;
  std::vector<Player> ofPulseAudio = m_pulseAudio.players().value_or(std::vector<Player>{});
  std::move(ofPulseAudio.begin(), ofPulseAudio.end(), std::back_inserter(players));
  return players;
}

void LinuxAudio::addClaimed(const std::vector<Player>& players, std::set<Pid>& heard) const {
  std::optional<ClaimSearch> search;
  for (const Player& player : players) {
    if (player.pid != 0) {
      heard.insert(player.pid);
      continue;
    }
    if (!search) search.emplace(*m_kernel, thisMachine());
    for (const Pid pid : search->find(player.claim)) heard.insert(pid);
  }
}

// The streams that no sound server has opened. A server's own tell nothing of who plays.
std::vector<AlsaPlayback> LinuxAudio::playbacksOfApps(std::set<Pid>& heard) const {
  std::vector<AlsaPlayback> playbacks = alsaPlaybacks(*m_kernel);
  const auto isOfServer = [&](const AlsaPlayback& playback) {
    const std::optional<Pid> owner =
        processOfThread(m_kernel->readOf(playback.thread, "status").value_or(""));
    const std::optional<ProcessStat> stat = owner ? m_kernel->stat(*owner) : std::nullopt;
    if (stat && isSystemPart(stat->shortName())) return true;
    if (stat) heard.insert(*owner);
    return false;
  };
  playbacks.erase(std::remove_if(playbacks.begin(), playbacks.end(), isOfServer), playbacks.end());
  return playbacks;
}

// JACK 2 knows nothing but names of its clients, and ALSA's mixer lets any number of processes into the one
// stream that somebody has opened: both show in what processes have open. That is looked for only while there
// is such a server or such a stream, and as long as there is time: somebody may have very much open.
void LinuxAudio::addDirect(std::set<Pid>& heard, Moment deadline) const {
  const std::vector<AlsaPlayback> playbacks = playbacksOfApps(heard);
  const bool isJack = isJackRunning();
  if (playbacks.empty() && !isJack) return;
  for (const Pid pid : m_kernel->processes()) {
    if (std::chrono::steady_clock::now() >= deadline) break;
    const std::optional<std::vector<std::string>> files = m_kernel->openFiles(pid);
    // Audio programs are given rights of their own, and hide what they have open with that.
    const bool mayBeClient = !files && isJack && m_kernel->isOwnChild(pid);
    if (mayBeClient || (files && isHolder(*files, playbacks, isJack))) heard.insert(pid);
  }
}

// Its socket is "jack_SERVER_USER_0", beside those of its clients.
bool LinuxAudio::isJackRunning() const {
  std::error_code error;
  const std::string end = "_" + std::to_string(m_kernel->user()) + "_0";
  for (std::filesystem::directory_iterator entry(m_jackFolder, error), last; !error && entry != last;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (name.starts_with("jack_") && name.ends_with(end) && entry->is_socket(error)) return true;
  }
  return false;
}

bool LinuxAudio::hasAnswered() const {
  return m_pipeWire.players().has_value() || m_pulseAudio.players().has_value();
}

std::set<Pid> LinuxAudio::runningOutput() {
  const Moment start = std::chrono::steady_clock::now();
  std::set<Pid> heard;
  addDirect(heard, start + longestLook); // first: a server that hangs would leave no time for it
  addClaimed(serverPlayers(start + m_longestWait), heard);
  return heard;
}

} // namespace vantle
