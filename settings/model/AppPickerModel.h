// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"
#include "settings/model/AppListModel.h"
#include "settings/ports/AppChooser.h"

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// The dialog in which the person picks one app for a list: from the installed ones, or a desktop file or a
// program in any folder; or in the desktop's own dialog where it has one. What it shows is made when it opens
// and let go when it closes.
class AppPickerModel : public QAbstractListModel {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The window makes its own")
  Q_PROPERTY(bool open READ isOpen NOTIFY openChanged)
  Q_PROPERTY(bool browsing READ isBrowsing NOTIFY placeChanged)
  Q_PROPERTY(QString folder READ folder NOTIFY placeChanged) // the folder that is shown while browsing
  Q_PROPERTY(QString search READ search WRITE setSearch NOTIFY searchChanged)
  Q_PROPERTY(int count READ count NOTIFY rowsChanged)
  Q_PROPERTY(int current READ current WRITE setCurrent NOTIFY currentChanged) // -1 for none
  Q_PROPERTY(bool canAdd READ canAdd NOTIFY currentChanged)

 public:
  explicit AppPickerModel(const ApplicationCatalog& catalog, AppChooser* chooser = nullptr)
      : m_catalog(catalog), m_chooser(chooser) {}

  bool isOpen() const { return m_target != nullptr; }
  bool isBrowsing() const { return m_folder.has_value(); }
  QString folder() const; // as it is shown
  QString search() const { return m_search; }
  void setSearch(const QString& text);
  int count() const { return static_cast<int>(m_shown.size()); }
  int current() const { return m_current; }
  void setCurrent(int row);
  bool canAdd() const;

  Q_INVOKABLE void openFor(vantle::AppListModel* target);
  Q_INVOKABLE void cancel();
  Q_INVOKABLE void add();                            // the chosen app to the list, and closes
  Q_INVOKABLE void activate(int row);                // adds an app, enters a folder
  Q_INVOKABLE void step(int rows);                   // moves the choice, within the list
  Q_INVOKABLE void browse(const QString& path = {}); // shows a folder; the person's own when not named
  Q_INVOKABLE void showInstalled();
  Q_INVOKABLE QString nameAt(int row) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QHash<int, QByteArray> roleNames() const override;

 signals:
  void openChanged();
  void placeChanged();
  void searchChanged();
  void rowsChanged();
  void currentChanged();

 private:
  enum Role { nameRole = Qt::UserRole, iconRole, isFolderRole };
  struct Entry {
    QString name;
    QString icon;
    std::string key; // empty for a folder
    QString path;
    QString sought; // what a search looks at
    bool isFolder() const { return key.empty(); }
  };

  void load(std::vector<Entry> entries);
  bool followPath(const QString& text);
  void filter();
  const Entry* entryAt(int row) const;
  Entry entryFor(const InstalledApplication& application) const;
  std::vector<Entry> installed() const;
  std::vector<Entry> contents(const QString& path) const;

  const ApplicationCatalog& m_catalog;
  AppChooser* m_chooser;
  std::unique_ptr<Registration> m_choice; // the desktop's dialog
  AppListModel* m_target = nullptr;
  std::optional<QString> m_folder;
  QString m_search;
  std::vector<Entry> m_entries;
  std::vector<const Entry*> m_shown; // those that the search leaves
  int m_current = -1;
};

} // namespace vantle
