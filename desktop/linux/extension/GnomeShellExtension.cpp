// SPDX-License-Identifier: MIT
#include "desktop/linux/extension/GnomeShellExtension.h"

#include "base/Names.h"
#include "desktop/linux/extension/ExtensionList.h"
#include "integrations/gnome-shell/ExtensionFiles.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/files/PosixFileStore.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QProcess>
#include <QTimer>
#include <QVariant>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace vantle {

namespace {

// It only ends what would otherwise be waited for until the program's end.
constexpr std::chrono::seconds longestRun{25};

constexpr const char* scriptName = "/extension.js";
constexpr const char* metadataName = "/metadata.json";

const auto schema = QStringLiteral("org.gnome.shell");
const auto switchedOn = QStringLiteral("enabled-extensions");
const auto switchedOff = QStringLiteral("disabled-extensions"); // outranks the other

QDBusMessage shellVersion() {
  QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
      QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
  question << QStringLiteral("org.gnome.Shell") << QStringLiteral("ShellVersion");
  question.setAutoStartService(false);
  return question;
}

QDBusMessage whetherAtWork() {
  QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
  question << QString::fromLatin1(names::gnomeExtension);
  return question;
}

} // namespace

GnomeShellExtension::Place GnomeShellExtension::Place::fromEnvironment() {
  const XdgFolders folders = XdgFolders::fromEnvironment();
  const auto below = [](const std::string& data) {
    return data + "/gnome-shell/extensions/" + gnomeExtensionUuid;
  };
  Place place{below(folders.data), QStringLiteral("gsettings"),
              !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")};
  for (const std::string& data : folders.systemData) place.everybodys.push_back(below(data));
  return place;
}

GnomeShellExtension::GnomeShellExtension(SessionBus& bus, Place place)
    : m_bus(bus), m_place(std::move(place)) {}

ShellExtension::State GnomeShellExtension::state() const {
  if (m_edition == nullptr) return State::notOffered;
  if (!m_isOn) return m_isRefused ? State::refused : State::out;
  return m_isAtWork ? State::atWork : State::waiting;
}

std::unique_ptr<Registration> GnomeShellExtension::observe(std::function<void()> changed) {
  return m_observers.add(std::move(changed));
}

void GnomeShellExtension::look(Look at) {
  if (!m_place.isWayland || !m_bus.isConnected()) return;
  askBus(shellVersion(), [this, at](const QVariant& version) {
    const int major = version.value<QDBusVariant>().variant().toString().section('.', 0, 0).toInt();
    m_edition = gnomeExtensionFor(major);
    if (m_edition == nullptr) return m_observers.notify();
    askBus(whetherAtWork(), [this, at](const QVariant& isAtWork) {
      m_isAtWork = isAtWork.toBool();
      readList(at);
    });
  });
}

void GnomeShellExtension::readList(Look at) {
  runSettings(
      {QStringLiteral("get"), schema, switchedOn}, [this, at](const std::optional<std::string>& list) {
        m_isOn = list && namesExtension(*list, gnomeExtensionUuid) && (areFilesThere() || isProvided());
        // An earlier Vantle's, or those for an earlier shell.
        if (m_isOn && areFilesThere() && !areFilesCurrent(m_place.folder)) writeFiles();
        if (at == Look::whetherItIsIn && !m_isOn && !m_isBusy) {
          m_isRefused = true;
          removeFiles();
        }
        m_observers.notify();
      });
}

void GnomeShellExtension::askBus(const QDBusMessage& question, Answer answered) {
  auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(question), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher, answered = std::move(answered)] {
    const QDBusMessage reply = watcher->reply();
    const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage && !reply.arguments().isEmpty();
    answered(isAnswer ? reply.arguments().constFirst() : QVariant());
    watcher->deleteLater();
  });
}

void GnomeShellExtension::runSettings(const QStringList& arguments, Output done) {
  auto* process = new QProcess(this);
  const auto take = [process, done = std::move(done)](bool isDone) {
    const std::string text = process->readAllStandardOutput().trimmed().toStdString();
    process->deleteLater();
    done(isDone ? std::optional(text) : std::nullopt);
  };
  connect(process, &QProcess::finished, this,
          [take](int status, QProcess::ExitStatus how) { take(how == QProcess::NormalExit && status == 0); });
  connect(process, &QProcess::errorOccurred, this, [take](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) take(false); // otherwise its end is told as well
  });
  QTimer::singleShot(longestRun, process, [process] { process->kill(); });
  process->setStandardErrorFile(QProcess::nullDevice());
  process->start(m_place.settings, arguments, QIODevice::ReadOnly);
}

void GnomeShellExtension::change(const QString& list, bool isIn, std::function<void()> done) {
  runSettings({QStringLiteral("get"), schema, list},
              [this, list, isIn, done = std::move(done)](const std::optional<std::string>& text) {
                const auto changed = text ? (isIn ? withExtension(*text, gnomeExtensionUuid)
                                                  : withoutExtension(*text, gnomeExtensionUuid))
                                          : std::nullopt;
                if (!changed || *changed == *text) return done();
                runSettings({QStringLiteral("set"), schema, list, QString::fromStdString(*changed)},
                            [done](const std::optional<std::string>&) { done(); });
              });
}

// In the list last, and out of it first: the shell looks for the files of what the list names.
void GnomeShellExtension::bring(bool isIn) {
  if (m_edition == nullptr) return;
  if (m_isBusy) {
    m_wanted = isIn;
    return;
  }
  // Files of the person's own would be read before everybody's, so there are none without need.
  const bool needsFiles = areFilesThere() || !isProvided();
  m_isRefused = isIn && needsFiles && !writeFiles();
  if (m_isRefused) return m_observers.notify();
  m_isBusy = true;
  const auto finished = [this, isIn] {
    if (!isIn) removeFiles();
    finish(isIn);
  };
  change(switchedOff, false, [this, isIn, finished] { change(switchedOn, isIn, finished); });
}

void GnomeShellExtension::finish(bool isIn) {
  m_isBusy = false;
  if (const auto wanted = std::exchange(m_wanted, std::nullopt)) return bring(*wanted);
  look(isIn ? Look::whetherItIsIn : Look::atAnything);
}

// A link leads to something of the person's, which is not to be replaced by this, or taken out with it.
bool GnomeShellExtension::isPlain() const {
  const std::filesystem::path folder(m_place.folder);
  return !std::filesystem::is_symlink(folder.has_filename() ? folder : folder.parent_path()) &&
         !std::filesystem::is_symlink(m_place.folder + scriptName) &&
         !std::filesystem::is_symlink(m_place.folder + metadataName);
}

bool GnomeShellExtension::writeFiles() const {
  if (!isPlain()) return false;
  PosixFileStore files({}, PosixFileStore::Sync::none);
  files.createFolders(m_place.folder);
  return files.writeAtomically(m_place.folder + scriptName, std::string(m_edition->script)) &&
         files.writeAtomically(m_place.folder + metadataName, std::string(m_edition->metadata));
}

// What somebody else has put there stays, and the folder with it.
void GnomeShellExtension::removeFiles() const {
  if (!isOwnFolder(m_place.folder) || !isPlain()) return;
  std::error_code ignored;
  for (const char* file : {scriptName, metadataName, ""})
    std::filesystem::remove(m_place.folder + file, ignored);
}

bool GnomeShellExtension::areFilesThere() const {
  const PosixFileStore files({}, PosixFileStore::Sync::none);
  return files.exists(m_place.folder + scriptName) && files.exists(m_place.folder + metadataName);
}

bool GnomeShellExtension::areFilesCurrent(const std::string& folder) const {
  const PosixFileStore files({}, PosixFileStore::Sync::none);
  const auto holds = [&](const char* name, std::string_view text) {
    return files.read(folder + name, text.size()) == text;
  };
  return holds(scriptName, m_edition->script) && holds(metadataName, m_edition->metadata);
}

// One for another shell, or of another Vantle, is as good as none.
bool GnomeShellExtension::isProvided() const {
  return std::any_of(m_place.everybodys.begin(), m_place.everybodys.end(),
                     [this](const std::string& folder) { return areFilesCurrent(folder); });
}

} // namespace vantle
