// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>
#include <optional>
#include <string>

namespace vantle {

class AboutModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(QString version READ version CONSTANT)
  Q_PROPERTY(QString memory READ memory NOTIFY memoryChanged)

 public:
  AboutModel(const Engine& engine, const std::optional<std::string>& version)
      : m_engine(engine), m_version(QString::fromStdString(version.value_or("?"))) {}

  QString version() const { return m_version; }
  QString memory() const { return QString::fromStdString(byteText(m_engine.ownFootprint())); }

 signals:
  void memoryChanged();

 private:
  const Engine& m_engine;
  QString m_version;
};

} // namespace vantle
