// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/TrayTypes.h"

#include <QDBusMetaType>

namespace vantle {
namespace {

template <class... Fields> QDBusArgument& writeAll(QDBusArgument& out, const Fields&... fields) {
  out.beginStructure();
  (out << ... << fields);
  out.endStructure();
  return out;
}

template <class... Fields> const QDBusArgument& readAll(const QDBusArgument& in, Fields&... fields) {
  in.beginStructure();
  (in >> ... >> fields);
  in.endStructure();
  return in;
}

} // namespace

QDBusArgument& operator<<(QDBusArgument& out, const TrayPixmap& value) {
  return writeAll(out, value.width, value.height, value.pixels);
}
const QDBusArgument& operator>>(const QDBusArgument& in, TrayPixmap& value) {
  return readAll(in, value.width, value.height, value.pixels);
}
QDBusArgument& operator<<(QDBusArgument& out, const TrayToolTip& value) {
  return writeAll(out, value.iconName, value.icon, value.title, value.text);
}
const QDBusArgument& operator>>(const QDBusArgument& in, TrayToolTip& value) {
  return readAll(in, value.iconName, value.icon, value.title, value.text);
}
QDBusArgument& operator<<(QDBusArgument& out, const MenuLayout& value) {
  return writeAll(out, value.id, value.properties, value.children);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuLayout& value) {
  return readAll(in, value.id, value.properties, value.children);
}
QDBusArgument& operator<<(QDBusArgument& out, const MenuProperties& value) {
  return writeAll(out, value.id, value.properties);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuProperties& value) {
  return readAll(in, value.id, value.properties);
}
QDBusArgument& operator<<(QDBusArgument& out, const MenuRemovals& value) {
  return writeAll(out, value.id, value.names);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuRemovals& value) {
  return readAll(in, value.id, value.names);
}
QDBusArgument& operator<<(QDBusArgument& out, const MenuEvent& value) {
  return writeAll(out, value.id, value.kind, value.data, value.timestamp);
}
const QDBusArgument& operator>>(const QDBusArgument& in, MenuEvent& value) {
  return readAll(in, value.id, value.kind, value.data, value.timestamp);
}

void registerTrayTypes() {
  qDBusRegisterMetaType<TrayPixmap>();
  qDBusRegisterMetaType<TrayPixmaps>();
  qDBusRegisterMetaType<TrayToolTip>();
  qDBusRegisterMetaType<MenuLayout>();
  qDBusRegisterMetaType<MenuProperties>();
  qDBusRegisterMetaType<QList<MenuProperties>>();
  qDBusRegisterMetaType<MenuRemovals>();
  qDBusRegisterMetaType<QList<MenuRemovals>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  qDBusRegisterMetaType<QList<int>>();
  qDBusRegisterMetaType<QList<QDBusVariant>>();
}

} // namespace vantle
