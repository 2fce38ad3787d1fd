// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// The place before all other apps, on a desktop that gives it to an app and not to one of its windows.
class Front {
 public:
  virtual ~Front() = default;

  // To be said before a window is shown, or brought forward. It is given back without being asked for, when
  // none is shown any more.
  virtual void take() = 0;
};

} // namespace vantle
