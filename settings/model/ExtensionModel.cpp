// SPDX-License-Identifier: MIT
#include "settings/model/ExtensionModel.h"

namespace vantle {

using State = ShellExtension::State;

ExtensionModel::ExtensionModel(ShellExtension& extension)
    : m_extension(extension), m_observer(extension.observe([this] { emit changed(); })) {}

bool ExtensionModel::isOn() const {
  return m_extension.state() == State::waiting || m_extension.state() == State::atWork;
}

QString ExtensionModel::note() const {
  switch (m_extension.state()) {
  case State::notOffered:
    return {};
  case State::out:
    return tr("Without it, only apps and games that run through Xwayland are seen.");
  case State::refused:
    return tr("The extension could not be installed: its folder or GNOME's settings cannot be written.");
  case State::waiting:
    return tr("Log out and in again once. GNOME starts the extension then.");
  case State::atWork:
    return tr("Vantle's extension runs in GNOME. It tells Vantle which windows there are, and nobody else.");
  }
  return {};
}

void ExtensionModel::toggle() {
  if (!isOn()) return setAsking(true);
  setAsking(false);
  m_extension.remove();
}

void ExtensionModel::install() {
  setAsking(false);
  m_extension.install();
}

void ExtensionModel::setAsking(bool isAsking) {
  m_isAsking = isAsking;
  emit changed();
}

} // namespace vantle
