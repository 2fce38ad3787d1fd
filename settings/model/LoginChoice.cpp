// SPDX-License-Identifier: MIT
#include "settings/model/LoginChoice.h"

namespace vantle {

void LoginChoice::reload() { openAtLogin.assign(m_item.isEnabled()); }

void LoginChoice::set(bool value) {
  if (value == openAtLogin.get()) return;
  openAtLogin.assign(value);
  apply(value);
}

void LoginChoice::apply(bool value) {
  const auto change = [this](bool on) { return on ? m_item.registerItem() : m_item.unregisterItem(); };
  if (change(value)) return;
  reload();
  if (openAtLogin.get() == value) return;
  // The switch going back is a change like any other, and asks for what is already so. Once: a system that
  // contradicts itself must not be asked for ever.
  if (!change(openAtLogin.get())) reload();
}

} // namespace vantle
