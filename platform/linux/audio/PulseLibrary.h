// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <pulse/pulseaudio.h>
#include <string>

namespace vantle {

// PulseAudio's client library, as far as it is used.
//
// It brings the readers and writers of every sound format along, 0.2 MB of own memory before it does
// anything, so whoever asks loads it.
struct PulseLibrary {
  // Null when it is not there, or lacks a function. What is loaded stays until the program ends.
  static std::unique_ptr<const PulseLibrary> load(const std::string& file);

  decltype(&pa_context_connect) contextConnect = nullptr;
  decltype(&pa_context_disconnect) contextDisconnect = nullptr;
  decltype(&pa_context_get_client_info_list) contextGetClientInfoList = nullptr;
  decltype(&pa_context_get_server_info) contextGetServerInfo = nullptr;
  decltype(&pa_context_get_sink_input_info_list) contextGetSinkInputInfoList = nullptr;
  decltype(&pa_context_get_state) contextGetState = nullptr;
  decltype(&pa_context_new) contextNew = nullptr;
  decltype(&pa_context_unref) contextUnref = nullptr;
  decltype(&pa_cvolume_channels_equal_to) cvolumeChannelsEqualTo = nullptr;
  decltype(&pa_mainloop_free) mainloopFree = nullptr;
  decltype(&pa_mainloop_get_api) mainloopGetApi = nullptr;
  decltype(&pa_mainloop_iterate) mainloopIterate = nullptr;
  decltype(&pa_mainloop_new) mainloopNew = nullptr;
  decltype(&pa_mainloop_set_poll_func) mainloopSetPollFunc = nullptr;
  decltype(&pa_operation_cancel) operationCancel = nullptr;
  decltype(&pa_operation_get_state) operationGetState = nullptr;
  decltype(&pa_operation_unref) operationUnref = nullptr;
  decltype(&pa_proplist_gets) proplistGets = nullptr;
};

} // namespace vantle
