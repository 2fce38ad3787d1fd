// SPDX-License-Identifier: MIT
#include "look/TypeRegistrations.h"

#include <algorithm>
#include <qqml.h>
#include <vector>

namespace vantle {
namespace {

std::vector<void (*)()>& registered() {
  static std::vector<void (*)()> all;
  return all;
}

} // namespace

void registerTypesOnce(void (*registerTypes)()) {
  std::vector<void (*)()>& all = registered();
  if (std::find(all.begin(), all.end(), registerTypes) != all.end()) return;
  registerTypes();
  all.push_back(registerTypes);
}

void forgetTypes() {
  qmlClearTypeRegistrations();
  registered().clear();
}

} // namespace vantle
