// SPDX-License-Identifier: MIT
#include "platform/linux/audio/PulseAudioActivity.h"

#include "base/Names.h"
#include "platform/linux/audio/AudioStreams.h"

#include <algorithm>
#include <chrono>
#include <pulse/pulseaudio.h>
#include <utility>

namespace vantle {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds longestWait{200};

std::string propertyOf(const pa_proplist* properties, const char* key) {
  const char* value = properties ? pa_proplist_gets(properties, key) : nullptr;
  return value ? value : "";
}

struct FreeMainLoop {
  void operator()(pa_mainloop* loop) const { pa_mainloop_free(loop); }
};

struct ReleaseContext {
  void operator()(pa_context* context) const {
    pa_context_disconnect(context);
    pa_context_unref(context);
  }
};

struct ReleaseOperation {
  void operator()(pa_operation* operation) const {
    pa_operation_cancel(operation); // its callback must not come any more
    pa_operation_unref(operation);
  }
};

using Operation = std::unique_ptr<pa_operation, ReleaseOperation>;

bool isRunning(const Operation& operation) {
  return operation && pa_operation_get_state(operation.get()) == PA_OPERATION_RUNNING;
}

} // namespace

class PulseAudioActivity::Connection {
 public:
  explicit Connection(const std::string& server) : m_loop(pa_mainloop_new()) {
    m_context.reset(pa_context_new(pa_mainloop_get_api(m_loop.get()), names::display));
    pa_context_connect(m_context.get(), server.empty() ? nullptr : server.c_str(), PA_CONTEXT_NOAUTOSPAWN,
                       nullptr);
  }

  // Takes in what has arrived until then; false when the connection is no longer good. A server that has said
  // anything since it was waited for in vain works again: what is missing still may take it several answers.
  bool refresh(SteadyClock::time_point deadline) {
    while (SteadyClock::now() < deadline && pa_mainloop_iterate(m_loop.get(), 0, nullptr) > 0) {
      m_overdue = false;
    }
    return PA_CONTEXT_IS_GOOD(state());
  }

  // Was waited for in vain, and has been silent since.
  bool isOverdue() const { return m_overdue; }

  std::set<Pid> ask(SteadyClock::time_point deadline) {
    m_overdue = !serve(deadline, [this] { return state() != PA_CONTEXT_READY; });
    if (m_overdue || state() != PA_CONTEXT_READY) return {};
    m_streams = {};
    m_inputs.reset(pa_context_get_sink_input_info_list(m_context.get(), takeInput, this));
    m_clients.reset(pa_context_get_client_info_list(m_context.get(), takeClient, this));
    m_overdue = !serve(deadline, [this] { return isAsking(); });
    const bool complete = !m_overdue && m_streams.inputsKnown && m_streams.clientsKnown;
    return complete ? m_streams.playing() : std::set<Pid>{};
  }

 private:
  pa_context_state_t state() const { return pa_context_get_state(m_context.get()); }
  bool isAsking() const { return isRunning(m_inputs) || isRunning(m_clients); }

  // Runs the library's own loop while the condition holds and the connection is good; false when the deadline
  // comes first.
  template <class Condition> bool serve(SteadyClock::time_point deadline, Condition holds) {
    while (PA_CONTEXT_IS_GOOD(state()) && holds()) {
      const auto left = std::chrono::ceil<std::chrono::microseconds>(deadline - SteadyClock::now()).count();
      if (left <= 0) return false;
      pa_mainloop* loop = m_loop.get();
      if (pa_mainloop_prepare(loop, static_cast<int>(left)) < 0 || pa_mainloop_poll(loop) < 0 ||
          pa_mainloop_dispatch(loop) < 0) {
        return false;
      }
    }
    return true;
  }

  static void takeInput(pa_context*, const pa_sink_input_info* input, int end, void* self) {
    AudioStreams& streams = static_cast<Connection*>(self)->m_streams;
    if (end != 0) {
      streams.inputsKnown = end > 0;
    } else if (!input->corked) {
      streams.addInput(input->client, propertyOf(input->proplist, PA_PROP_APPLICATION_PROCESS_ID));
    }
  }

  static void takeClient(pa_context*, const pa_client_info* client, int end, void* self) {
    AudioStreams& streams = static_cast<Connection*>(self)->m_streams;
    if (end != 0) {
      streams.clientsKnown = end > 0;
    } else {
      streams.addClient(client->index, propertyOf(client->proplist, PA_PROP_APPLICATION_PROCESS_ID));
    }
  }

  std::unique_ptr<pa_mainloop, FreeMainLoop> m_loop;
  std::unique_ptr<pa_context, ReleaseContext> m_context;
  AudioStreams m_streams;
  Operation m_inputs;
  Operation m_clients;
  bool m_overdue = false;
};

PulseAudioActivity::PulseAudioActivity(std::string server) : m_server(std::move(server)) {}
PulseAudioActivity::~PulseAudioActivity() = default;

std::set<Pid> PulseAudioActivity::runningOutput() {
  const SteadyClock::time_point deadline = SteadyClock::now() + longestWait;
  if (!m_connection || !m_connection->refresh(deadline))
    m_connection = std::make_unique<Connection>(m_server);
  if (m_connection->isOverdue()) return {};
  return m_connection->ask(deadline);
}

} // namespace vantle
