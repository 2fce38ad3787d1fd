// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "desktop/linux/SessionBus.h"
#include "settings/ports/ShellExtension.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>
#include <string>
#include <vector>

class QDBusMessage;
class QVariant;

namespace vantle {

struct GnomeExtensionEdition;

// Vantle's extension for GNOME's shell, as files of the person's and in GNOME's list of what is switched on.
// The shell itself is no help: of an extension that came after the log-in it knows nothing.
class GnomeShellExtension final : public QObject, public ShellExtension {
  Q_OBJECT

 public:
  struct Place {
    std::string folder;                       // the extension's own, as the shell looks for it
    QString settings;                         // the program that reads and writes GNOME's settings, gsettings
    bool isWayland = true;                    // elsewhere the X server tells everything
    std::vector<std::string> everybodys = {}; // folders that a package would have put it into

    static Place fromEnvironment();
  };

  // The bus outlives it.
  explicit GnomeShellExtension(SessionBus& bus, Place place = Place::fromEnvironment());

  State state() const override;
  std::unique_ptr<Registration> observe(std::function<void()> changed) override;
  void reload() override { look(Look::atAnything); }
  void install() override { bring(true); }
  void remove() override { bring(false); }

 private:
  using Answer = std::function<void(const QVariant& value)>; // invalid without one
  using Output = std::function<void(const std::optional<std::string>& text)>;

  enum class Look { atAnything, whetherItIsIn };
  void look(Look at);
  void askBus(const QDBusMessage& question, Answer answered);
  void runSettings(const QStringList& arguments, Output done);
  void change(const QString& list, bool isIn, std::function<void()> done);
  void bring(bool isIn);
  void finish(bool isIn);
  bool isPlain() const;
  bool writeFiles() const;
  void removeFiles() const;
  bool areFilesThere() const;
  bool areFilesCurrent(const std::string& folder) const;
  bool isProvided() const;
  void readList(Look at);

  SessionBus& m_bus;
  Place m_place;
  const GnomeExtensionEdition* m_edition = nullptr; // for the shell that runs
  bool m_isOn = false;
  bool m_isAtWork = false;
  bool m_isRefused = false; // to bring it in was to no avail
  bool m_isBusy = false;
  std::optional<bool> m_wanted; // once what is under way is done
  Observers<> m_observers;
};

} // namespace vantle
