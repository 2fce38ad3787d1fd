// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle::desktop {

// What every private desktop has, whatever draws it: a home with all XDG folders, a session bus that starts
// nothing by itself, and the programs that run there. Nothing of the person's own session is seen or touched.
// Works as root and as an ordinary user; root can also have it belong to somebody else.
//
// Further parts (a sound server, a notification daemon, a panel) are programs like any other: `launch` them,
// then wait for their bus name, socket or window. Everything that was started, orphans included, is ended by
// pid in the destructor, also when a test fails; what it said is under `logs()`. A part that does not come up
// is an exception, which fails the test.
class PrivateSession {
 public:
  ~PrivateSession();
  PrivateSession(const PrivateSession&) = delete;
  PrivateSession& operator=(const PrivateSession&) = delete;

  // All of the following are in it, unless the environment names another folder.
  const TemporaryFolder& folder() const { return m_folder; }
  std::filesystem::path home() const { return m_folder.path() / "home"; }
  std::filesystem::path dataHome() const { return home() / ".local/share"; }
  std::filesystem::path configHome() const { return home() / ".config"; }
  std::filesystem::path runtimeDir() const { return m_environment.at("XDG_RUNTIME_DIR"); }
  std::filesystem::path logs() const { return m_folder.path() / "log"; } // NUMBER-PROGRAM.log

  const std::string& busAddress() const { return m_busAddress; }
  const Environment& environment() const { return m_environment; }
  void setEnvironment(const std::string& name, const std::string& value) { m_environment[name] = value; }
  void unsetEnvironment(const std::string& name) { m_environment.erase(name); }

  // Starts an app as a desktop does: a session of its own, the desktop's environment and user.
  Program& launch(std::vector<std::string> command, const Environment& added = {});
  Program& launchAs(std::optional<uid_t> user, std::vector<std::string> command,
                    const Environment& added = {});
  // Runs a small tool to its end; true when it succeeded.
  bool run(std::vector<std::string> command);
  // Asks the program on the session's bus for something, as app menus do; true when it took that.
  bool callApplication(const std::string& method, std::vector<std::string> arguments = {"{}"});
  // Writes DATA/applications/ID.desktop.
  std::filesystem::path installDesktopFile(const std::string& id, const std::string& text) const;
  bool hasBusName(const std::string& name);
  void waitForBusName(const std::string& name);

  Program& sessionBus() { return *m_sessionBus; }
  Program& startSessionBus(); // again as well, at the same address, after it was killed

 protected:
  // The user (an account that exists, for the bus; only root can name another) and what is added to the
  // environment of everything that runs here.
  PrivateSession(std::optional<uid_t> user, const Environment& added);

  Start startOf(std::vector<std::string> command, const Environment& added);
  Program& started(const Start& start);
  void endAll();
  // Has the tool write its picture to the path that is added to its command, and takes it out of here.
  bool takePicture(std::vector<std::string> tool, const std::filesystem::path& png);

 private:
  void makeFolders();

  std::optional<uid_t> m_user;
  TemporaryFolder m_folder;
  Environment m_environment;
  std::string m_marker;
  std::string m_busAddress;
  std::vector<std::unique_ptr<Program>> m_programs;
  Program* m_sessionBus = nullptr;
};

} // namespace vantle::desktop
