// SPDX-License-Identifier: MIT
#include "settings/model/UpdatesModel.h"

#include <QDateTime>
#include <QLocale>

namespace vantle {

QString shownMoment(Date moment) {
  const QDateTime local = QDateTime::fromSecsSinceEpoch(moment.time_since_epoch().count());
  // The interface is English whatever the person's language; only the order of things is their region's.
  const QLocale region(QLocale::English, QLocale::system().territory());
  const bool monthFirst = region.territory() == QLocale::UnitedStates;
  const QString date = region.toString(local.date(), monthFirst ? QStringLiteral("MMM d, yyyy")
                                                                : QStringLiteral("d MMM yyyy"));
  return UpdatesModel::tr("%1 at %2").arg(date, region.toString(local.time(), QLocale::ShortFormat));
}

UpdatesModel::UpdatesModel(UpdateChecker& checker, AppSettings& settings)
    : m_checker(checker), m_settings(settings), m_automatically(settings.checkUpdatesAutomatically),
      m_observer(checker.state.observe([this] { emit changed(); })) {}

QString UpdatesModel::lastChecked() const {
  const std::optional<Date> last = m_settings.lastUpdateCheck();
  return last ? tr("Last checked %1").arg(shownMoment(*last)) : tr("Not checked yet");
}

QString UpdatesModel::status() const {
  struct Words {
    const UpdatesModel& model;
    QString operator()(const update::Idle&) const { return model.lastChecked(); }
    QString operator()(const update::Checking&) const { return tr("Checking…"); }
    QString operator()(const update::UpToDate&) const { return tr("Vantle is up to date"); }
    QString operator()(const update::Available& newer) const {
      return tr("Version %1 is available").arg(QString::fromStdString(newer.version));
    }
    QString operator()(const update::Failed& failure) const { return tr(failure.message.c_str()); }
    QString operator()(const update::NotConfigured&) const {
      return tr("Update checks aren't set up in this build.");
    }
  };
  return std::visit(Words{*this}, m_checker.state.get());
}

QString UpdatesModel::symbol() const {
  if (is<update::UpToDate>()) return QStringLiteral("checkmark.circle.fill");
  if (is<update::Available>()) return QStringLiteral("arrow.down.circle.fill");
  if (is<update::Failed>()) return QStringLiteral("exclamationmark.triangle.fill");
  return {};
}

UpdatesModel::Tone UpdatesModel::tone() const {
  if (is<update::UpToDate>()) return Tone::good;
  if (is<update::Failed>()) return Tone::warning;
  if (is<update::Idle>() || is<update::Checking>()) return Tone::quiet;
  return Tone::plain;
}

QString UpdatesModel::action() const { return isAvailable() ? tr("Open Download Page") : tr("Check Now"); }

void UpdatesModel::act() {
  if (isAvailable()) {
    m_checker.openDownloadPage();
  } else {
    m_checker.check();
  }
}

} // namespace vantle
