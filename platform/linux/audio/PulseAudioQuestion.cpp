// SPDX-License-Identifier: MIT
#include "platform/linux/audio/PulseAudioQuestion.h"

#include "base/Names.h"
#include "platform/linux/audio/AudioStreams.h"
#include "platform/linux/audio/PulseLibrary.h"

#include <string_view>
#include <utility>

namespace vantle {

namespace {

struct FreeMainLoop {
  const PulseLibrary* pulse;
  void operator()(pa_mainloop* loop) const { pulse->mainloopFree(loop); }
};

struct ReleaseContext {
  const PulseLibrary* pulse;
  void operator()(pa_context* context) const {
    pulse->contextDisconnect(context);
    pulse->contextUnref(context);
  }
};

struct ReleaseOperation {
  const PulseLibrary* pulse;
  void operator()(pa_operation* operation) const {
    pulse->operationCancel(operation); // its callback must not come any more
    pulse->operationUnref(operation);
  }
};

using Operation = std::unique_ptr<pa_operation, ReleaseOperation>;

} // namespace

class PulseAudioQuestion::Connection {
 public:
  Connection(const PulseLibrary& pulse, const std::string& server) : m_pulse(pulse) {
    m_pulse.mainloopSetPollFunc(m_loop.get(), poll, this);
    m_context.reset(m_pulse.contextNew(m_pulse.mainloopGetApi(m_loop.get()), names::display));
    m_pulse.contextConnect(m_context.get(), server.empty() ? nullptr : server.c_str(), PA_CONTEXT_NOAUTOSPAWN,
                           nullptr);
  }

  bool isGood() const { return PA_CONTEXT_IS_GOOD(m_pulse.contextGetState(m_context.get())); }
  bool isOverdue() const { return m_isOverdue; }
  void setOverdue() { m_isOverdue = true; }

  // Takes in what has arrived, a turn of it. A server that has said anything since it was waited for in vain
  // works again: what is missing still may take it several answers.
  void advance() {
    constexpr int mostTurns = 1000; // a question takes some dozens
    for (int turn = 0; turn < mostTurns && m_pulse.mainloopIterate(m_loop.get(), 0, nullptr) > 0; ++turn) {
      m_isOverdue = false;
    }
    if (m_isWanted && m_pulse.contextGetState(m_context.get()) == PA_CONTEXT_READY) send();
  }

  void ask() {
    m_isWanted = true;
    m_streams = {};
    m_inputs.reset();
    m_clients.reset();
  }
  bool isAsking() const {
    return isGood() && (m_isWanted || isRunning(m_server) || isRunning(m_inputs) || isRunning(m_clients));
  }
  const std::vector<pollfd>& watch() const { return m_watched; }
  bool isPipeWire() const { return m_isPipeWire; }

  std::optional<std::vector<Player>> players() const {
    const bool isComplete = !m_isWanted && m_streams.inputsKnown && m_streams.clientsKnown;
    return isComplete ? std::optional(m_streams.players()) : std::nullopt;
  }

 private:
  bool isRunning(const Operation& operation) const {
    return operation && m_pulse.operationGetState(operation.get()) == PA_OPERATION_RUNNING;
  }

  std::string propertyOf(const pa_proplist* properties, const char* key) const {
    const char* value = properties ? m_pulse.proplistGets(properties, key) : nullptr;
    return value ? value : "";
  }
  ProcessClaim claimIn(const pa_proplist* properties) const {
    return {pidFromText(propertyOf(properties, PA_PROP_APPLICATION_PROCESS_ID)).value_or(0),
            propertyOf(properties, PA_PROP_APPLICATION_PROCESS_BINARY),
            propertyOf(properties, PA_PROP_APPLICATION_PROCESS_MACHINE_ID), "",
            propertyOf(properties, PA_PROP_APPLICATION_PROCESS_HOST)};
  }
  bool isMuted(const pa_sink_input_info& input) const {
    return input.mute || (input.has_volume && m_pulse.cvolumeChannelsEqualTo(&input.volume, PA_VOLUME_MUTED));
  }

  void send() {
    m_isWanted = false;
    if (!m_server) m_server.reset(m_pulse.contextGetServerInfo(m_context.get(), takeServer, this));
    m_inputs.reset(m_pulse.contextGetSinkInputInfoList(m_context.get(), takeInput, this));
    m_clients.reset(m_pulse.contextGetClientInfoList(m_context.get(), takeClient, this));
    while (m_pulse.mainloopIterate(m_loop.get(), 0, nullptr) > 0) continue; // on their way
  }

  // The library never waits here: whoever asks waits for all servers together.
  static int poll(pollfd* descriptors, unsigned long count, int /*timeout*/, void* self) {
    static_cast<Connection*>(self)->m_watched.assign(descriptors, descriptors + count);
    return ::poll(descriptors, count, 0);
  }

  static void takeServer(pa_context*, const pa_server_info* server, void* self) {
    const std::string_view name = server && server->server_name ? server->server_name : "";
    static_cast<Connection*>(self)->m_isPipeWire = name.find("PipeWire") != std::string_view::npos;
  }

  static void takeInput(pa_context*, const pa_sink_input_info* input, int end, void* self) {
    auto& connection = *static_cast<Connection*>(self);
    AudioStreams& streams = connection.m_streams;
    if (end != 0) {
      streams.inputsKnown = end > 0;
    } else if (!input->corked && !connection.isMuted(*input)) {
      streams.addInput(input->client, connection.claimIn(input->proplist));
    }
  }

  static void takeClient(pa_context*, const pa_client_info* client, int end, void* self) {
    auto& connection = *static_cast<Connection*>(self);
    AudioStreams& streams = connection.m_streams;
    if (end != 0) {
      streams.clientsKnown = end > 0;
    } else {
      streams.addClient(client->index, connection.claimIn(client->proplist));
    }
  }

  const PulseLibrary& m_pulse;
  std::unique_ptr<pa_mainloop, FreeMainLoop> m_loop{m_pulse.mainloopNew(), {&m_pulse}};
  std::unique_ptr<pa_context, ReleaseContext> m_context{nullptr, {&m_pulse}};
  std::vector<pollfd> m_watched; // by the library, when it last looked
  bool m_isWanted = false;       // to be asked as soon as the server has let us in
  AudioStreams m_streams;
  Operation m_server{nullptr, {&m_pulse}}; // asked once
  Operation m_inputs{nullptr, {&m_pulse}};
  Operation m_clients{nullptr, {&m_pulse}};
  bool m_isPipeWire = false;
  bool m_isOverdue = false;
};

PulseAudioQuestion::PulseAudioQuestion(std::string server, std::string library)
    : m_server(std::move(server)), m_libraryFile(std::move(library)) {}
PulseAudioQuestion::~PulseAudioQuestion() = default;

void PulseAudioQuestion::ask() {
  if (!m_library) m_library = PulseLibrary::load(m_libraryFile);
  if (!m_library) return;
  if (m_connection) m_connection->advance();
  if (!m_connection || !m_connection->isGood())
    m_connection = std::make_unique<Connection>(*m_library, m_server);
  if (!m_connection->isOverdue()) m_connection->ask();
}

bool PulseAudioQuestion::isAsking() const {
  return m_connection && m_connection->isAsking() && !m_connection->isOverdue();
}
std::vector<pollfd> PulseAudioQuestion::watch() { return m_connection->watch(); }
void PulseAudioQuestion::advance() { m_connection->advance(); }
void PulseAudioQuestion::giveUp() { m_connection->setOverdue(); }
bool PulseAudioQuestion::isPipeWire() const { return m_connection && m_connection->isPipeWire(); }

std::optional<std::vector<Player>> PulseAudioQuestion::players() const {
  if (!m_connection || m_connection->isOverdue()) return std::nullopt;
  return m_connection->players();
}

} // namespace vantle
