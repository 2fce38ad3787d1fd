// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/PlaceWords.h"

#include <QObject>
#include <QString>
#include <qqml.h>

class QJSEngine;

namespace vantle {

// The words of the platform, for the views. Exists once in each LookEngine.
class Place : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QString computer READ computer CONSTANT)
  Q_PROPERTY(QString store READ store CONSTANT)
  Q_PROPERTY(QString bar READ bar CONSTANT)
  Q_PROPERTY(QString cores READ cores CONSTANT)
  Q_PROPERTY(QString registrar READ registrar CONSTANT) // empty when there is none

 public:
  explicit Place(const PlaceWords& words) : m_words(words) {}
  static Place* create(QQmlEngine* engine, QJSEngine*); // the engine must be a LookEngine

  QString computer() const { return tr(m_words.computer); }
  QString store() const { return tr(m_words.store); }
  QString bar() const { return tr(m_words.bar); }
  QString cores() const { return tr(m_words.cores); }
  QString registrar() const { return QString::fromUtf8(m_words.registrar); }

 private:
  const PlaceWords& m_words;
};

} // namespace vantle
