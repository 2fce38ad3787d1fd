// SPDX-License-Identifier: MIT
#include "app/ToolkitGuard.h"

#include "base/Invariant.h"

#include <QtGlobal>
#include <cstdlib>
#include <utility>

namespace vantle {

namespace {

// A message handler can reach nothing but globals. Empty unless a guard lives.
std::function<int()>& pendingDeed() {
  static std::function<int()> deed;
  return deed;
}

QtMessageHandler usualHandler = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  // The fatal one advises to install the program again; the warnings before it say what is wrong.
  if (type != QtFatalMsg || !pendingDeed()) return usualHandler(type, context, text);
  const std::function<int()> deed = std::exchange(pendingDeed(), nullptr);
  std::_Exit(deed());
}

} // namespace

ToolkitGuard::ToolkitGuard(std::function<int()> lastDeed) {
  invariant(!pendingDeed(), "two toolkit guards");
  pendingDeed() = std::move(lastDeed);
  usualHandler = qInstallMessageHandler(handleMessage);
}

ToolkitGuard::~ToolkitGuard() {
  qInstallMessageHandler(usualHandler);
  pendingDeed() = nullptr;
}

} // namespace vantle
