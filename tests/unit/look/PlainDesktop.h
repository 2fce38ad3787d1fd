// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "look/ports/ColorScheme.h"
#include "look/ports/Heap.h"
#include "look/ports/IconTheme.h"
#include "look/ports/LinuxWords.h"

#include <optional>
#include <utility>

namespace vantle {

// A desktop that has nothing of its own.
class PlainScheme final : public ColorScheme {
 public:
  bool isDark() const override { return m_isDark; }
  std::unique_ptr<Registration> observe(std::function<void()> changed) override {
    return m_observers.add(std::move(changed));
  }
  void draw(std::optional<bool> dark) override { drawn = dark; }
  void become(bool dark) {
    m_isDark = dark;
    m_observers.notify();
  }

  std::optional<bool> drawn; // what the desktop draws

 private:
  bool m_isDark = false;
  Observers<> m_observers;
};

class PlainIcons final : public IconTheme {
 public:
  void choose() override {}
  QString fileOf(const QString& name) const override { return name == known ? file : QString(); }
  QString genericName() const override { return generic; }
  QImage pictureOf(const QString& source, int pixels) const override {
    if (source.isEmpty() || source != pictured) return {};
    QImage picture(2 * pixels, pixels, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    return picture;
  }

  QString known; // the only one that has a file
  QString file;
  QString generic;
  QString pictured; // the only source that has a picture of the desktop's
};

class CountedHeap final : public Heap {
 public:
  void trim() override { ++trims; }

  int trims = 0;
};

} // namespace vantle
