// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"

#include <QObject>
#include <QString>
#include <cstdint>
#include <functional>

namespace vantle {

// Whether a process sees the same machine as this one: the same files and the same users. One in a sandbox or
// a container does not, and one that this program may not look at counts as such.
bool seesTheSameMachine(std::int64_t pid);

// Asks the bus who stands behind a connection.
class Callers : public QObject {
  Q_OBJECT

 public:
  explicit Callers(SessionBus& bus) : m_bus(bus) {}

  // Calls back, later, whether the connection of that unique name belongs to this user and to no sandbox; in
  // the order of the questions, and not at all when the bus has ended.
  void ask(const QString& connection, std::function<void(bool isAllowed)> tell);
  int open() const { return m_open; } // how many questions have no answer yet

 private:
  SessionBus& m_bus;
  int m_open = 0;
};

} // namespace vantle
