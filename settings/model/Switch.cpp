// SPDX-License-Identifier: MIT
#include "settings/model/Switch.h"

namespace vantle {

Switch::Switch(Setting<bool>& setting) : Switch(setting, [&setting](bool on) { setting.set(on); }) {}

} // namespace vantle
