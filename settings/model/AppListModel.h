// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/ports/ApplicationCatalog.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vantle {

// The apps of one setting, in stored order, with the names and icons that they have now.
class AppListModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(int count READ count NOTIFY countChanged)
  Q_PROPERTY(bool restorable READ isRestorable NOTIFY countChanged)

 public:
  using Keys = Setting<std::vector<std::string>>;

  // Whether the setting is of use for an app that has no bundle identifier, only a name.
  enum class Takes { everyApp, identifiedApps };

  // `changed` is called after each change that the person makes here. `defaults` are the apps that the list
  // holds from the start.
  AppListModel(Keys& keys, const ApplicationCatalog& catalog, Takes takes, std::function<void()> changed = {},
               std::vector<std::string> defaults = {});

  bool takes(const InstalledApplication& application) const {
    return m_takes == Takes::everyApp || !application.isByName;
  }
  int count() const { return static_cast<int>(m_rows.size()); }
  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

  void add(const std::string& key); // at the end; does nothing when the list holds it already
  Q_INVOKABLE void remove(const QString& key);
  bool isRestorable() const; // one of the defaults is gone
  // The defaults as they were, and after them what the person has added.
  Q_INVOKABLE void restoreDefaults();
  Q_INVOKABLE QString nameAt(int row) const;

 signals:
  void countChanged();

 private:
  enum Role { keyRole = Qt::UserRole, nameRole, iconRole };
  struct Row {
    std::string key;
    QString name;
    QString icon;
  };

  std::vector<Row> rowsFor(const std::vector<std::string>& keys) const;
  std::vector<std::string> shownKeys() const;
  void follow();
  void store(std::vector<std::string> keys);

  Keys& m_keys;
  const ApplicationCatalog& m_catalog;
  Takes m_takes;
  std::function<void()> m_changed;
  std::vector<std::string> m_defaults;
  std::vector<Row> m_rows;
  std::unique_ptr<Registration> m_observer;
};

} // namespace vantle
