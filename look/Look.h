// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "look/Colors.h"

#include <QObject>
#include <memory>
#include <qqml.h>

class QJSEngine;

namespace vantle {

// What the views draw with: the colours of the scheme in use and the person's accent. Views are told when one
// of them changes. Exists once in each LookEngine.
class Look : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(bool dark READ dark NOTIFY changed)
  Q_PROPERTY(QColor accent READ accent NOTIFY changed)
  Q_PROPERTY(QColor accentUnderText READ accentUnderText NOTIFY changed)
  Q_PROPERTY(QColor surface READ surface NOTIFY changed)
  Q_PROPERTY(QColor control READ control NOTIFY changed)
  Q_PROPERTY(QColor edge READ edge NOTIFY changed)
  Q_PROPERTY(QColor primary READ primary NOTIFY changed)
  Q_PROPERTY(QColor secondary READ secondary NOTIFY changed)
  Q_PROPERTY(QColor tertiary READ tertiary NOTIFY changed)
  Q_PROPERTY(QColor outline READ outline NOTIFY changed)
  Q_PROPERTY(QColor accentOutline READ accentOutline NOTIFY changed)
  Q_PROPERTY(QColor divider READ divider NOTIFY changed)
  Q_PROPERTY(QColor green READ green NOTIFY changed)
  Q_PROPERTY(QColor orange READ orange NOTIFY changed)
  Q_PROPERTY(QColor red READ red NOTIFY changed)

 public:
  explicit Look(AppSettings& settings);
  static Look* create(QQmlEngine* engine, QJSEngine*); // the engine must be a LookEngine

  bool dark() const { return m_dark; }
  QColor accent() const { return accentColor(m_settings.accent.get()); }
  QColor accentUnderText() const { return vantle::accentUnderText(m_settings.accent.get()); }
  QColor surface() const { return colors().surface; }
  QColor control() const { return colors().control; }
  QColor edge() const { return colors().edge; }
  QColor primary() const { return colors().primary; }
  QColor secondary() const { return colors().secondary; }
  QColor tertiary() const { return colors().tertiary; }
  QColor outline() const { return colors().outline; }
  QColor accentOutline() const { return vantle::accentOutline(m_settings.accent.get(), m_dark); }
  QColor divider() const { return colors().divider; }
  QColor green() const { return colors().green; }
  QColor orange() const { return colors().orange; }
  QColor red() const { return colors().red; }

  // The colour at an opacity from 0 to 1.
  Q_INVOKABLE QColor faded(QColor color, double opacity) const;
  // The colour of an accent by its raw value; that of blue for an unknown one.
  Q_INVOKABLE QColor accentNamed(const QString& rawValue) const;

  bool eventFilter(QObject* watched, QEvent* event) override;

 signals:
  void changed();

 private:
  const Colors& colors() const { return colorsFor(m_dark); }

  AppSettings& m_settings;
  std::unique_ptr<Registration> m_accentObserver;
  bool m_dark;
};

} // namespace vantle
