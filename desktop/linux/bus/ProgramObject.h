// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/bus/GuardedObject.h"

namespace vantle {

// The object that the program's own name on the session's bus stands for.
class ProgramObject : public GuardedObject {
  Q_OBJECT

 public:
  explicit ProgramObject(SessionBus& bus);

  // The name is taken with the first part that wants it: whoever waits for it finds all parts that were added
  // before.
  enum class Name { whenOthersDo, now };
  void add(BusInterface& part, Name name);

 private:
  void takeName();

  bool m_wantsName = false;
};

} // namespace vantle
