// SPDX-License-Identifier: MIT
#include "platform/linux/process/AppSessions.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace vantle {

bool mostShareTheirSession(const ProcessView& view, const std::set<Pid>& apps) {
  std::size_t seen = 0;
  std::size_t sharing = 0;
  for (const Pid app : apps) {
    const ProcessRecord* root = view.find(app);
    if (root == nullptr) continue;
    ++seen;
    const std::span<const std::size_t> session = view.session(root->session);
    const auto isNoApp = [&](std::size_t place) { return view.appOf(view.all()[place].pid) == 0; };
    if (std::any_of(session.begin(), session.end(), isNoApp)) ++sharing;
  }
  return seen > 0 && 2 * sharing >= seen;
}

} // namespace vantle
