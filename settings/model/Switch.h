// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/AppSettings.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <functional>
#include <memory>

namespace vantle {

// One Boolean choice as a view shows it: follows the choice wherever it is changed, and changes it at once.
class Switch : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(bool on READ isOn NOTIFY changed)

 public:
  explicit Switch(Setting<bool>& setting);
  // `field` has `get` and `observe`, as published fields do.
  template <class Field> Switch(Field& field, std::function<void(bool)> write)
      : m_read([&field] { return field.get(); }), m_write(std::move(write)),
        m_observer(field.observe([this] { emit changed(); })) {}

  bool isOn() const { return m_read(); }
  Q_INVOKABLE void toggle() { m_write(!m_read()); }

 signals:
  void changed();

 private:
  std::function<bool()> m_read;
  std::function<void(bool)> m_write;
  std::unique_ptr<Registration> m_observer;
};

} // namespace vantle
