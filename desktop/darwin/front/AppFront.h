// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/Front.h"
#include "platform/shared/EventLoop.h"

#include <QObject>

namespace vantle {

// A program without a Dock icon does not come forward with its windows: it says so itself. When it has none
// left the system leaves it in front, with nothing to be seen of it, unless it hides.
class AppFront final : public QObject, public Front {
 public:
  explicit AppFront(EventLoop& loop); // which outlives it

  void take() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  static void giveBack();

  EventLoop& m_loop;
  std::unique_ptr<EventLoop::Handle> m_later;
};

} // namespace vantle
