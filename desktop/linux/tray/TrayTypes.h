// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace vantle {

// The records of the status notifier and menu protocols, as they go over the bus.

struct TrayPixmap { // (iiay)
  int width = 0;
  int height = 0;
  QByteArray pixels; // ARGB, not premultiplied, in network byte order
};
using TrayPixmaps = QList<TrayPixmap>;

struct TrayToolTip { // (sa(iiay)ss)
  QString iconName;
  TrayPixmaps icon;
  QString title;
  QString text;
};

struct MenuLayout { // (ia{sv}av)
  int id = 0;
  QVariantMap properties;
  QList<QDBusVariant> children; // of MenuLayout
};

struct MenuProperties { // (ia{sv})
  int id = 0;
  QVariantMap properties;
};

struct MenuRemovals { // (ias)
  int id = 0;
  QStringList names; // of properties
};

struct MenuEvent { // (isvu)
  int id = 0;
  QString kind;
  QDBusVariant data;
  uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& out, const TrayPixmap& value);
const QDBusArgument& operator>>(const QDBusArgument& in, TrayPixmap& value);
QDBusArgument& operator<<(QDBusArgument& out, const TrayToolTip& value);
const QDBusArgument& operator>>(const QDBusArgument& in, TrayToolTip& value);
QDBusArgument& operator<<(QDBusArgument& out, const MenuLayout& value);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuLayout& value);
QDBusArgument& operator<<(QDBusArgument& out, const MenuProperties& value);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuProperties& value);
QDBusArgument& operator<<(QDBusArgument& out, const MenuRemovals& value);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuRemovals& value);
QDBusArgument& operator<<(QDBusArgument& out, const MenuEvent& value);
const QDBusArgument& operator>>(const QDBusArgument& in, MenuEvent& value);

void registerTrayTypes(); // with the bus; any number of times

} // namespace vantle

Q_DECLARE_METATYPE(vantle::TrayPixmap)
Q_DECLARE_METATYPE(vantle::TrayToolTip)
Q_DECLARE_METATYPE(vantle::MenuLayout)
Q_DECLARE_METATYPE(vantle::MenuProperties)
Q_DECLARE_METATYPE(vantle::MenuRemovals)
Q_DECLARE_METATYPE(vantle::MenuEvent)
