// SPDX-License-Identifier: MIT
#include "look/Notices.h"

#include <QCoreApplication>

namespace vantle {
namespace {

std::string translated(const char* text) { return QCoreApplication::translate("Notice", text).toStdString(); }

} // namespace

NoticeWords noticeWords() {
  return {translated(QT_TRANSLATE_NOOP("Notice", "Memory almost full")),
          translated(QT_TRANSLATE_NOOP("Notice", "Memory is running low")),
          translated(
              QT_TRANSLATE_NOOP("Notice", "Using the most memory: %1. Quitting them will free up memory.")),
          translated(QT_TRANSLATE_NOOP("Notice", "Quit %1 to free up memory."))};
}

} // namespace vantle
