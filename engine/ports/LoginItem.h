// SPDX-License-Identifier: MIT
#pragma once

namespace vantle {

// Whether the system opens this program at login. The system alone keeps that choice, and the person may
// change it elsewhere at any time.
class LoginItem {
 public:
  virtual ~LoginItem() = default;

  // What the system would do at the next login; read afresh on every call.
  virtual bool isEnabled() const = 0;

  // True when the system took it. False leaves whatever the system then reports.
  virtual bool registerItem() = 0;
  virtual bool unregisterItem() = 0;
};

} // namespace vantle
