// SPDX-License-Identifier: MIT
#include "settings/model/AppPickerModel.h"

#include "look/DisplayText.h"
#include "settings/model/AppKeys.h"

#include <QDir>
#include <algorithm>
#include <utility>

namespace vantle {

namespace {

// Lower case and without accents, so that "ecran" finds "Écran".
QString folded(const QString& text) {
  QString plain;
  const QString parts = text.toCaseFolded().normalized(QString::NormalizationForm_KD);
  for (const QChar c : parts) {
    if (c.category() != QChar::Mark_NonSpacing) plain.append(c);
  }
  return plain;
}

bool matches(const QString& sought, const QStringList& words) {
  return std::all_of(words.begin(), words.end(), [&](const QString& word) { return sought.contains(word); });
}

} // namespace

int AppPickerModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : count(); }

QHash<int, QByteArray> AppPickerModel::roleNames() const {
  return {{nameRole, "name"}, {iconRole, "icon"}, {isFolderRole, "isFolder"}};
}

const AppPickerModel::Entry* AppPickerModel::entryAt(int row) const {
  return row >= 0 && row < count() ? m_shown[static_cast<std::size_t>(row)] : nullptr;
}

QString AppPickerModel::nameAt(int row) const {
  const Entry* entry = entryAt(row);
  return entry != nullptr ? entry->name : QString();
}

QVariant AppPickerModel::data(const QModelIndex& index, int role) const {
  const Entry* entry = entryAt(index.row());
  if (entry == nullptr) return {};
  switch (role) {
  case nameRole:
    return entry->name;
  case iconRole:
    return entry->icon;
  case isFolderRole:
    return entry->isFolder();
  default:
    return {};
  }
}

void AppPickerModel::openFor(AppListModel* target) {
  if (m_chooser != nullptr) {
    m_choice.reset(); // one at a time
    m_choice = m_chooser->choose([this, target](const std::string& path) {
      if (const auto application = m_catalog.applicationAt(path)) target->add(application->key);
    });
    return;
  }
  m_target = target;
  showInstalled();
  emit openChanged();
}

void AppPickerModel::cancel() {
  m_choice.reset();
  if (!isOpen()) return;
  m_target = nullptr;
  m_folder.reset();
  load({});
  emit openChanged();
}

void AppPickerModel::add() {
  if (!isOpen() || !canAdd()) return;
  AppListModel* const target = m_target;
  const std::string key = entryAt(m_current)->key;
  cancel();
  target->add(key);
}

void AppPickerModel::activate(int row) {
  const Entry* entry = entryAt(row);
  if (entry == nullptr) return;
  setCurrent(row);
  if (entry->isFolder()) {
    browse(QString(entry->path));
  } else {
    add();
  }
}

void AppPickerModel::step(int rows) {
  if (count() == 0) return;
  const int from = m_current < 0 && rows < 0 ? 0 : m_current;
  setCurrent(std::clamp(from + rows, 0, count() - 1));
}

bool AppPickerModel::canAdd() const {
  const Entry* entry = entryAt(m_current);
  return entry != nullptr && !entry->isFolder();
}

void AppPickerModel::setCurrent(int row) {
  if (row == m_current || row >= count()) return;
  m_current = row;
  emit currentChanged();
}

void AppPickerModel::setSearch(const QString& text) {
  if (text == m_search) return;
  m_search = text;
  if (!followPath(text)) filter();
  emit searchChanged();
}

// A typed path leads to its folder, and what follows the last slash is searched for there.
bool AppPickerModel::followPath(const QString& text) {
  const QString path = text.startsWith(QLatin1String("~/")) ? QDir::homePath() + text.mid(1) : text;
  if (!path.startsWith(u'/')) return false;
  const qsizetype end = path.lastIndexOf(u'/');
  const QString folder = QDir::cleanPath(path.left(end + 1));
  if (!QFileInfo(folder).isDir()) return false;
  if (m_folder != folder) {
    m_folder = folder;
    m_shown.clear();
    m_entries = contents(folder);
    emit placeChanged();
  }
  filter();
  return true;
}

void AppPickerModel::showInstalled() {
  m_folder.reset();
  load(installed());
  emit placeChanged();
}

QString AppPickerModel::folder() const { return m_folder ? displayText(m_folder->toStdString()) : QString(); }

void AppPickerModel::browse(const QString& path) {
  m_folder = path.isEmpty() ? QDir::homePath() : QDir::cleanPath(path);
  load(contents(*m_folder));
  emit placeChanged();
}

AppPickerModel::Entry AppPickerModel::entryFor(const InstalledApplication& application) const {
  const QString name = displayText(shownName(application), application.key);
  const QString key = QString::fromStdString(application.key);
  return {
      name, QString::fromStdString(application.icon), application.key,
      QString::fromStdString(application.path),
      folded(QStringList{name, key.section(QLatin1Char('.'), -1), QString::fromStdString(application.words)}
                 .join(u' '))};
}

std::vector<AppPickerModel::Entry> AppPickerModel::installed() const {
  std::vector<Entry> entries;
  for (const InstalledApplication& application : m_catalog.installedApplications())
    entries.push_back(entryFor(application));
  std::sort(entries.begin(), entries.end(),
            [](const Entry& left, const Entry& right) { return left.sought < right.sought; });
  return entries;
}

// The folder above, the folders inside, and the desktop files and programs that stand for apps. Files are
// found by what they are called as well.
std::vector<AppPickerModel::Entry> AppPickerModel::contents(const QString& path) const {
  const auto folder = [](const QString& name, const QString& at) {
    const QString shown = displayText(name.toStdString());
    return Entry{shown, QStringLiteral("folder"), {}, at, folded(shown)};
  };
  std::vector<Entry> entries;
  if (!isOpen()) return entries;
  const QDir here(path);
  if (!here.isRoot()) entries.push_back(folder(QStringLiteral(".."), path + QStringLiteral("/..")));
  const auto order = QDir::Name | QDir::IgnoreCase;
  for (const QFileInfo& info : here.entryInfoList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, order))
    entries.push_back(folder(info.fileName(), info.absoluteFilePath()));
  const QFileInfoList files = here.entryInfoList(QDir::Files, order);
  std::vector<std::string> paths;
  for (const QFileInfo& info : files) paths.push_back(info.absoluteFilePath().toStdString());
  const ApplicationCatalog::Found found = m_catalog.applicationsAt(paths);
  for (std::size_t at = 0; at < found.size(); ++at) {
    if (!found[at] || !m_target->takes(*found[at])) continue;
    entries.push_back(entryFor(*found[at]));
    const QString fileName = files[static_cast<qsizetype>(at)].fileName();
    entries.back().sought += u' ' + folded(displayText(fileName.toStdString()));
  }
  return entries;
}

void AppPickerModel::load(std::vector<Entry> entries) {
  m_shown.clear();
  m_entries = std::move(entries);
  if (!std::exchange(m_search, QString()).isEmpty()) emit searchChanged();
  filter();
}

void AppPickerModel::filter() {
  const bool isPath = m_folder && (m_search.startsWith(u'/') || m_search.startsWith(QLatin1String("~/")));
  const QString sought = isPath ? m_search.section(u'/', -1) : m_search;
  const QStringList words = folded(sought).split(QLatin1Char(' '), Qt::SkipEmptyParts);
  beginResetModel();
  m_shown.clear();
  for (const Entry& entry : m_entries) {
    if (matches(entry.sought, words)) m_shown.push_back(&entry);
  }
  // What is called so, before what is only looked for so.
  std::stable_partition(m_shown.begin(), m_shown.end(),
                        [&](const Entry* entry) { return matches(folded(entry->name), words); });
  endResetModel();
  // Whoever searches wants the best match at hand; nobody else has chosen anything yet.
  m_current = words.isEmpty() || m_shown.empty() ? -1 : 0;
  emit rowsChanged();
  emit currentChanged();
}

} // namespace vantle
