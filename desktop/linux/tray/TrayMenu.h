// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/bus/Followers.h"
#include "desktop/linux/bus/GuardedObject.h"
#include "desktop/linux/tray/TrayTypes.h"
#include "panel/ports/Tray.h"

#include <QObject>
#include <QTimer>
#include <vector>

namespace vantle {

// The tray icon's menu (com.canonical.dbusmenu), shown by the tray itself. Its entries keep their numbers, by
// which the tray tells what was clicked; what changes is what they say, and whether they are shown.
class TrayMenu : public QObject, public BusInterface {
  Q_OBJECT

 public:
  explicit TrayMenu(SessionBus& bus);

  static QString path(); // of the menu's object
  void enterBus() { m_object.enterBus(); }
  void offer(std::vector<TrayEntry> entries);

  QString name() const override;
  QString introspection() const override;
  bool take(const QDBusMessage& call) override;
  void takeProperties(const QDBusMessage& question) override;

 private:
  QVariantList answerTo(const QString& method, const QVariantList& arguments);
  MenuLayout layout(int parent, int depth) const;
  QList<MenuProperties> properties(const QList<int>& wanted) const; // of all entries if none is named
  void note(int id, const QString& event);
  QList<int> ids() const;               // of all entries
  const TrayEntry& entry(int id) const; // of an id that there is
  QVariantMap propertiesOf(int id) const;
  void act() const;

  GuardedObject m_object;
  Followers m_followers; // what the menu says is for those alone who have asked for it
  std::vector<TrayEntry> m_entries;
  uint m_revision = 1; // of the layout
  int m_clicked = 0;   // the id of the entry that was clicked last
  QTimer m_click;      // runs until the click has its effect
};

} // namespace vantle
