// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/ports/LoginItem.h"

namespace vantle {

// Whether the program opens at login, as its switch shows it. The system keeps the choice; the switch shows
// the system's answer when it is made and whenever a change fails.
class LoginChoice {
 public:
  explicit LoginChoice(LoginItem& item) : openAtLogin(item.isEnabled()), m_item(item) {}

  Published<bool, LoginChoice> openAtLogin;

  void reload(); // asks the system again: the person may have changed it elsewhere
  void set(bool value);

 private:
  void apply(bool value);

  LoginItem& m_item;
};

} // namespace vantle
