// SPDX-License-Identifier: MIT
// usage: TonePlayer [AHEAD]    milliseconds of sound that the server has ahead; 50, as a player of music has
// it
//
// Plays a tone through the sound server until it is ended. SIGUSR1 pauses it (corks the stream), SIGUSR2
// plays on. Prints "playing" and "paused" when the server has done so, "break" whenever the sound broke off,
// and at the end (SIGTERM) how often it did.
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <pulse/pulseaudio.h>
#include <vector>

namespace {

constexpr std::uint32_t rate = 48000;

struct Player {
  pa_mainloop* loop = nullptr;
  pa_mainloop_api* api = nullptr;
  pa_stream* stream = nullptr;
  bool isPaused = false; // as it was told
  std::uint64_t position = 0;
  int breaks = 0;
  std::uint32_t ahead = 50; // ms
};

void say(const char* text) {
  std::puts(text);
  std::fflush(stdout);
}

void fill(pa_stream* stream, std::size_t bytes, void* data) {
  Player& player = *static_cast<Player*>(data);
  std::vector<std::int16_t> samples(bytes / sizeof(std::int16_t));
  for (std::int16_t& sample : samples) {
    const double phase = 2 * std::numbers::pi * 440 * static_cast<double>(player.position++ % rate) / rate;
    sample = static_cast<std::int16_t>(500 * std::sin(phase));
  }
  pa_stream_write(stream, samples.data(), samples.size() * sizeof(std::int16_t), nullptr, 0,
                  PA_SEEK_RELATIVE);
}

void countBreak(pa_stream*, void* data) {
  ++static_cast<Player*>(data)->breaks;
  say("break");
}

void cork(const Player& player) {
  pa_operation* operation = pa_stream_cork(
      player.stream, player.isPaused ? 1 : 0,
      [](pa_stream* stream, int, void*) { say(pa_stream_is_corked(stream) == 1 ? "paused" : "playing"); },
      nullptr);
  if (operation) pa_operation_unref(operation);
}

bool isReady(pa_stream* stream) { return stream && pa_stream_get_state(stream) == PA_STREAM_READY; }

// A server may tell others of the stream before it tells who plays it, who could be told to pause meanwhile.
void streamChanged(pa_stream* stream, void* data) {
  const Player& player = *static_cast<Player*>(data);
  if (isReady(stream) && player.isPaused) cork(player);
}

void takeSignal(pa_mainloop_api* api, pa_signal_event*, int number, void* data) {
  Player& player = *static_cast<Player*>(data);
  if (number == SIGTERM) {
    api->quit(api, 0);
    return;
  }
  player.isPaused = number == SIGUSR1;
  if (isReady(player.stream)) cork(player);
}

void connected(pa_context* context, void* data) {
  Player& player = *static_cast<Player*>(data);
  const pa_context_state_t state = pa_context_get_state(context);
  if (!PA_CONTEXT_IS_GOOD(state)) player.api->quit(player.api, 1);
  if (state != PA_CONTEXT_READY) return;
  const pa_sample_spec format{PA_SAMPLE_S16NE, rate, 1};
  player.stream = pa_stream_new(context, "tone", &format, nullptr);
  pa_stream_set_state_callback(player.stream, streamChanged, &player);
  pa_stream_set_write_callback(player.stream, fill, &player);
  pa_stream_set_underflow_callback(player.stream, countBreak, &player);
  pa_stream_set_started_callback(
      player.stream, [](pa_stream*, void*) { say("playing"); }, nullptr);
  pa_buffer_attr buffer{};
  buffer.maxlength = UINT32_MAX;
  buffer.tlength = rate / 1000 * player.ahead * static_cast<std::uint32_t>(sizeof(std::int16_t));
  buffer.prebuf = buffer.minreq = buffer.fragsize = UINT32_MAX;
  pa_stream_connect_playback(player.stream, nullptr, &buffer, PA_STREAM_ADJUST_LATENCY, nullptr, nullptr);
}

} // namespace

int main(int argc, char** argv) {
  Player player;
  if (argc > 1) player.ahead = static_cast<std::uint32_t>(std::atoi(argv[1]));
  player.loop = pa_mainloop_new();
  player.api = pa_mainloop_get_api(player.loop);
  pa_signal_init(player.api);
  for (const int number : {SIGTERM, SIGUSR1, SIGUSR2}) pa_signal_new(number, takeSignal, &player);
  pa_context* context = pa_context_new(player.api, "Tone");
  pa_context_set_state_callback(context, connected, &player);
  pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
  int status = 1;
  pa_mainloop_run(player.loop, &status);
  std::printf("breaks %d\n", player.breaks);
  return status;
}
