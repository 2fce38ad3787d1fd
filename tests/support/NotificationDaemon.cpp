// SPDX-License-Identifier: MIT
#include "tests/support/NotificationDaemon.h"

#include <fstream>
#include <iterator>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

// Called by the daemon for each notice. Its own log escapes and shortens what it shows.
constexpr const char* recorder = "#!/bin/sh\n"
                                 "printf '%s|%s|%s\\n' \"$DUNST_APP_NAME\" "
                                 "\"$DUNST_SUMMARY\" \"$DUNST_BODY\" >> \"$TMPDIR/notices\"\n";

} // namespace

NotificationDaemon::NotificationDaemon(PrivateSession& session) : m_session(session) {
  const fs::path script = session.folder().write("record-notice", recorder);
  fs::permissions(script, fs::perms::owner_all);
  session.folder().write("home/.config/dunst/dunstrc",
                         "[global]\n    markup = full\n    notification_limit = 0\n"
                         "    idle_threshold = 0\n    stack_duplicates = false\n"
                         "    enable_recursive_icon_lookup = false\n"
                         "[every]\n    appname = *\n    timeout = 0\n    script = " +
                             script.string() + "\n");
  start();
}

void NotificationDaemon::start() {
  m_program = &m_session.launch({"dunst"});
  m_session.waitForBusName("org.freedesktop.Notifications");
}

int NotificationDaemon::displayed() {
  const fs::path count = m_session.folder().path() / "tmp/displayed";
  if (!m_session.run({"sh", "-c", "dunstctl count displayed > " + count.string()})) return -1;
  int value = -1;
  std::ifstream(count) >> value;
  return value;
}

std::string NotificationDaemon::shown() const {
  std::ifstream file(m_session.folder().path() / "tmp/notices");
  return {std::istreambuf_iterator<char>(file), {}};
}

} // namespace vantle::desktop
