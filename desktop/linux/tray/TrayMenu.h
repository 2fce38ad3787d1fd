// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/tray/TrayTypes.h"
#include "panel/ports/Tray.h"

#include <QObject>
#include <QTimer>
#include <vector>

namespace vantle {

// The tray icon's menu (com.canonical.dbusmenu), shown by the tray itself. Its entries keep their numbers, by
// which the tray tells what was clicked; what changes is what they say, and whether they are shown.
class TrayMenu : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
  Q_PROPERTY(uint Version READ version)
  Q_PROPERTY(QString TextDirection READ textDirection)
  Q_PROPERTY(QString Status READ status)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath)

 public:
  TrayMenu();

  void offer(std::vector<TrayEntry> entries);

  uint version() const { return 3; } // of the protocol
  QString textDirection() const { return QStringLiteral("ltr"); }
  QString status() const { return QStringLiteral("normal"); }
  QStringList iconThemePath() const { return {}; }

 public slots:
  uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                 vantle::MenuLayout& layout);
  QList<vantle::MenuProperties> GetGroupProperties(const QList<int>& ids, const QStringList& propertyNames);
  QDBusVariant GetProperty(int id, const QString& name);
  void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
  QList<int> EventGroup(const QList<vantle::MenuEvent>& events);
  bool AboutToShow(int id);
  QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

 signals:
  void LayoutUpdated(uint revision, int parent);
  void ItemsPropertiesUpdated(const QList<vantle::MenuProperties>& changed,
                              const QList<vantle::MenuRemovals>& removed);

 private:
  QList<int> ids() const;               // of all entries
  const TrayEntry& entry(int id) const; // of an id that there is
  QVariantMap propertiesOf(int id) const;
  void act() const;

  std::vector<TrayEntry> m_entries;
  uint m_revision = 1; // of the layout
  int m_clicked = 0;   // the id of the entry that was clicked last
  QTimer m_click;      // runs until the click has its effect
};

} // namespace vantle
