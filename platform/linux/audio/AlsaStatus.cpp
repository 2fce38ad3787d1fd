// SPDX-License-Identifier: MIT
#include "platform/linux/audio/AlsaStatus.h"

#include "base/Text.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace vantle {

namespace {

constexpr const char* root = "/proc/asound/";

// Of "pcm0p" and a prefix "pcm" the "0p"; absent for other names.
std::optional<std::string_view> behind(std::string_view prefix, std::string_view name) {
  if (!name.starts_with(prefix) || name.size() == prefix.size()) return std::nullopt;
  const char first = name[prefix.size()];
  return first >= '0' && first <= '9' ? std::optional(name.substr(prefix.size())) : std::nullopt;
}

std::vector<std::string> foldersOf(const Kernel& kernel, const std::string& path) {
  return kernel.folders(path).value_or(std::vector<std::string>{});
}

void addPlaybacksOf(const Kernel& kernel, const std::string& card, const std::string& pcm,
                    std::vector<AlsaPlayback>& found) {
  const std::string folder = root + card + "/" + pcm;
  for (const std::string& sub : foldersOf(kernel, folder)) {
    std::string path = folder;
    const std::string status = kernel.read(path.append("/").append(sub).append("/status")).value_or("");
    const std::optional<Pid> thread = playingThread(status);
    if (!thread) continue;
    const std::string_view cardNumber = *behind("card", card);
    const std::string_view pcmNumber = *behind("pcm", pcm); // with the 'p' of playback
    std::string device = "/dev/snd/pcmC";
    found.push_back({*thread, device.append(cardNumber).append("D").append(pcmNumber)});
  }
}

} // namespace

std::optional<Pid> playingThread(std::string_view status) {
  constexpr std::string_view owner = "owner_pid";
  constexpr std::string_view state = "state: ";
  bool isPlaying = false;
  std::optional<Pid> thread;
  while (!status.empty()) {
    std::string_view line = takePart(status, '\n');
    if (line.starts_with(state)) {
      line.remove_prefix(state.size());
      isPlaying = line == "RUNNING" || line == "DRAINING";
    } else if (line.starts_with(owner)) {
      const std::size_t digits = line.find_first_not_of(" :\t", owner.size());
      if (digits == std::string_view::npos) return std::nullopt;
      Pid number = 0;
      const char* end = line.data() + line.size();
      const auto [stop, error] = std::from_chars(line.data() + digits, end, number);
      if (error != std::errc{} || stop != end || number < 0) return std::nullopt;
      thread = number;
    }
  }
  return isPlaying ? thread : std::nullopt;
}

std::vector<AlsaPlayback> alsaPlaybacks(const Kernel& kernel) {
  std::vector<AlsaPlayback> found;
  for (const std::string& card : foldersOf(kernel, root)) {
    if (!behind("card", card)) continue;
    for (const std::string& pcm : foldersOf(kernel, root + card)) {
      if (behind("pcm", pcm) && pcm.ends_with('p')) addPlaybacksOf(kernel, card, pcm, found);
    }
  }
  return found;
}

} // namespace vantle
