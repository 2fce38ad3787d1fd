// SPDX-License-Identifier: MIT
#include "platform/linux/audio/PulseLibrary.h"

#include <dlfcn.h>
#include <type_traits>

namespace vantle {

std::unique_ptr<const PulseLibrary> PulseLibrary::load(const std::string& file) {
  void* const library = ::dlopen(file.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (library == nullptr) return nullptr;
  auto pulse = std::make_unique<PulseLibrary>();
  bool isWhole = true;
  const auto take = [&](auto& function, const char* name) {
    function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name));
    isWhole = isWhole && function != nullptr;
  };
  take(pulse->contextConnect, "pa_context_connect");
  take(pulse->contextDisconnect, "pa_context_disconnect");
  take(pulse->contextGetClientInfoList, "pa_context_get_client_info_list");
  take(pulse->contextGetServerInfo, "pa_context_get_server_info");
  take(pulse->contextGetSinkInputInfoList, "pa_context_get_sink_input_info_list");
  take(pulse->contextGetState, "pa_context_get_state");
  take(pulse->contextNew, "pa_context_new");
  take(pulse->contextUnref, "pa_context_unref");
  take(pulse->cvolumeChannelsEqualTo, "pa_cvolume_channels_equal_to");
  take(pulse->mainloopFree, "pa_mainloop_free");
  take(pulse->mainloopGetApi, "pa_mainloop_get_api");
  take(pulse->mainloopIterate, "pa_mainloop_iterate");
  take(pulse->mainloopNew, "pa_mainloop_new");
  take(pulse->mainloopSetPollFunc, "pa_mainloop_set_poll_func");
  take(pulse->operationCancel, "pa_operation_cancel");
  take(pulse->operationGetState, "pa_operation_get_state");
  take(pulse->operationUnref, "pa_operation_unref");
  take(pulse->proplistGets, "pa_proplist_gets");
  if (isWhole) return pulse;
  ::dlclose(library);
  return nullptr;
}

} // namespace vantle
