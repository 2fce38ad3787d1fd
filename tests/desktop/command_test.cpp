// SPDX-License-Identifier: MIT
// What `vantle COMMAND` says, of a copy that runs a Boost among real apps, and where none runs.
#include "command/CommandLine.h"
#include "command/Commands.h"
#include "status/Words.h"
#include "tests/desktop/CommandStage.h"
#include "tests/support/FakeService.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Schema.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <utility>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// A connection to the session's bus that this test itself asks on. It counts what it hears of changes.
class Listener {
 public:
  explicit Listener(const std::string& address) {
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0) throw std::runtime_error("no bus");
    m_bus.reset(bus);
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0 ||
        sd_bus_match_signal(bus, nullptr, nullptr, path, "org.freedesktop.DBus.Properties",
                            "PropertiesChanged", count, this) < 0 ||
        sd_bus_match_signal(bus, nullptr, nullptr, menuPath, menuName, "ItemsPropertiesUpdated", countMenu,
                            this) < 0) {
      throw std::runtime_error("the bus lets nobody in");
    }
  }

  // The name of the error; empty when there was none.
  std::string pause(std::uint32_t seconds) { return call("Pause", "u", seconds); }
  std::string boost(const char* app) { return call("Boost", "s", app); }
  std::string report() { return call("Report", "b", 1); }
  std::string why(const char* app) { return call("Why", "s", app); }
  std::string off() { return call("Off", ""); }
  std::string all() { return ask("org.freedesktop.DBus.Properties", "GetAll", "s", interface); }
  std::string application(const char* action) {
    return ask("org.freedesktop.Application", "ActivateAction", "sava{sv}", action, 0, 0);
  }
  std::string nameless() { return ask("org.freedesktop.DBus.Properties", "GetAll", "s", ""); }
  std::string introspected() { return ask("org.freedesktop.DBus.Introspectable", "Introspect", ""); }
  std::string menu() { return askAt(menuPath, menuName, "GetLayout", "iias", 0, -1, 0); }
  std::string menuLine(int id) { return askAt(menuPath, menuName, "GetProperty", "is", id, "label"); }
  std::string chosen(int id) { return askAt(menuPath, menuName, "Event", "isvu", id, "clicked", "i", 0, 0); }
  std::string icon() {
    return askAt("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll", "s",
                 "org.kde.StatusNotifierItem");
  }
  std::string iconTitle() {
    return askAt("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get", "ss",
                 "org.kde.StatusNotifierItem", "Title");
  }
  std::string clicked() {
    return askAt("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", "ii", 0, 0);
  }
  std::string active() { return ask("org.freedesktop.DBus.Properties", "Get", "ss", interface, "Active"); }
  int heard() {
    while (sd_bus_process(m_bus.get(), nullptr) > 0) {
    }
    return m_heard;
  }
  int heardOfMenu() {
    heard();
    return m_heardOfMenu;
  }

 private:
  struct Close {
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
  };
  static constexpr const char* path = "/com/halvo/vantle";
  static constexpr const char* interface = "com.halvo.vantle.Boost1";
  static constexpr const char* menuPath = "/MenuBar";
  static constexpr const char* menuName = "com.canonical.dbusmenu";

  template <class... Arguments> std::string call(const char* member, const char* types, Arguments... values) {
    return ask(interface, member, types, values...);
  }
  template <class... Arguments>
  std::string ask(const char* on, const char* member, const char* types, Arguments... values) {
    return askAt(path, on, member, types, values...);
  }
  template <class... Arguments> std::string askAt(const char* object, const char* on, const char* member,
                                                  const char* types, Arguments... values) {
    sd_bus_error error{};
    sd_bus_message* reply = nullptr;
    const int status = sd_bus_call_method(m_bus.get(), "com.halvo.vantle", object, on, member, &error, &reply,
                                          types, values...);
    std::string name = status < 0 && error.name != nullptr ? error.name : "";
    if (status < 0 && name.empty()) name = "no answer";
    sd_bus_error_free(&error);
    sd_bus_message_unref(reply);
    return name;
  }
  static int count(sd_bus_message*, void* self, sd_bus_error*) {
    ++static_cast<Listener*>(self)->m_heard;
    return 0;
  }

  static int countMenu(sd_bus_message*, void* self, sd_bus_error*) {
    ++static_cast<Listener*>(self)->m_heardOfMenu;
    return 0;
  }

  std::unique_ptr<sd_bus, Close> m_bus;
  int m_heard = 0;
  int m_heardOfMenu = 0;
};

long ownMemory(Pid pid) { // in KB
  std::ifstream file("/proc/" + std::to_string(pid) + "/status");
  long sum = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("RssAnon:") || line.starts_with("VmSwap:"))
      sum += std::stol(line.substr(line.find(':') + 1));
  }
  return sum;
}

long descriptorsOf(Pid pid) {
  const std::filesystem::directory_iterator all("/proc/" + std::to_string(pid) + "/fd");
  return std::distance(begin(all), end(all));
}

using Command = CommandStage;

std::string schemaViolation(const std::string& json) {
  return violationOf(std::filesystem::path(VANTLE_DOCS) / "status.schema.json", json);
}

TEST_F(Command, StatusTellsOfABoostAsJson) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  EXPECT_EQ(schemaViolation(vantle({"status", "--json"}).output), "");
  const Json status = statusJson();
  EXPECT_EQ(*status.find("running"), Json(true));
  EXPECT_EQ(*status.find("automatic"), Json(true));
  const Json& boost = *status.find("boost");
  EXPECT_EQ(*boost.find("active"), Json(true));
  EXPECT_EQ(boost.find("app")->textAt("name"), "Game");
  EXPECT_EQ(boost.find("app")->textAt("id"), "org.example.Game");
  EXPECT_EQ(boost.find("app")->integerAt("pid"), m_game->pid());
  EXPECT_EQ(appIn(status, *m_game).textAt("state"), "boost app");
  const Json mail = appIn(status, *m_mail);
  EXPECT_EQ(mail.textAt("state"), "in background");
  EXPECT_EQ(mail.textAt("reason"), "slowed");
  EXPECT_EQ(mail.unsignedAt("processes"), 1U);
  EXPECT_TRUE(mail.textAt("lever"));
}

TEST_F(Command, StatusTellsPeopleTheSame) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const Said said = vantle({"status"});
  EXPECT_EQ(said.status, 0);
  EXPECT_THAT(said.output, StartsWith("Boost on for Game\nStarts by itself\nMemory pressure: "));
  EXPECT_THAT(said.output, HasSubstr("  Game (" + std::to_string(m_game->pid()) + "): boost app\n"));
  EXPECT_THAT(said.output,
              HasSubstr("  Mail (" + std::to_string(m_mail->pid()) + "): in background by its "));
  EXPECT_EQ(said.errors, "");
}

TEST_F(Command, SaysThatNothingRunsAndStartsNothing) {
  const std::vector<std::vector<std::string>> all{
      {"status"}, {"status", "--follow"}, {"why", "Mail"}, {"boost"}, {"off"}, {"pause", "1m"}, {"report"}};
  for (const std::vector<std::string>& arguments : all) {
    const Said said = vantle(arguments);
    EXPECT_EQ(said.status, 3) << arguments.front();
    EXPECT_EQ(said.errors, "vantle: Vantle is not running.\n") << arguments.front();
  }
  const Said said = vantle({"status", "--json"});
  EXPECT_EQ(said.status, 3);
  EXPECT_EQ(schemaViolation(said.output), "");
  EXPECT_EQ(Json::parse(said.output)->find("running")->asBool(), false);
  EXPECT_FALSE(m_desktop->hasBusName("com.halvo.vantle"));
}

// A bus that starts programs starts none for a question.
TEST_F(Command, HasTheBusStartNoCopy) {
  const std::filesystem::path services = m_desktop->folder().folder("services");
  const std::filesystem::path started = m_desktop->folder().path() / "tmp/started";
  m_desktop->folder().write("services/com.halvo.vantle.service",
                            "[D-BUS Service]\nName=com.halvo.vantle\nExec=/bin/touch " + started.string() +
                                "\n");
  const std::filesystem::path socket = m_desktop->folder().path() / "tmp/starting-bus";
  const std::filesystem::path configuration = m_desktop->folder().write(
      "starting.conf", "<busconfig><type>session</type><listen>unix:path=" + socket.string() +
                           "</listen><servicedir>" + services.string() +
                           "</servicedir><policy context=\"default\"><allow send_destination=\"*\" "
                           "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/>"
                           "<allow own=\"*\"/><allow user=\"*\"/></policy></busconfig>");
  m_desktop->launch({"dbus-daemon", "--config-file=" + configuration.string(), "--nofork", "--nopidfile"});
  require("the bus", [&] { return isServed(socket); });
  m_desktop->setEnvironment("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + socket.string());
  EXPECT_EQ(vantle({"status"}).status, 3);
  EXPECT_EQ(vantle({"boost"}).status, 3);
  EXPECT_FALSE(std::filesystem::exists(started));
  // Whoever wants it can have one started.
  EXPECT_TRUE(m_desktop->run(
      {"dbus-send", "--session", "--dest=com.halvo.vantle", "/", "org.freedesktop.DBus.Peer.Ping"}));
  EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(started); }));
}

TEST_F(Command, RefusesWhatItDoesNotKnow) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
      {{"staus"}, "there is no command 'staus'; see 'vantle --help'."},
      {{"--staus"}, "there is no option '--staus'; see 'vantle --help'."},
      {{"-x"}, "there is no option '-x'; see 'vantle --help'."},
      {{"-platform", "xcb", "status"},
       "'status' cannot stand behind an option of the program's; see 'vantle --help'."},
      {{"status", "--jsn"}, "there is no option of 'status' called '--jsn'; see 'vantle --help'."},
      {{"status", "Mail"}, "'status' cannot take 'Mail'; see 'vantle --help'."},
      {{"off", "--json"}, "there is no option of 'off' called '--json'; see 'vantle --help'."},
      {{"why"}, "'why' needs NAME|PID; see 'vantle --help'."},
      {{"why", ""}, "'why' cannot take ''; see 'vantle --help'."},
      {{"why", "a", "b"}, "'why' cannot take 'b'; see 'vantle --help'."},
      {{"pause"}, "'pause' needs DURATION; see 'vantle --help'."},
      {{"pause", "5"}, "'5' is no duration of up to a day, as 90s, 30m or 2h; see 'vantle --help'."},
      {{"pause", "25h"}, "'25h' is no duration of up to a day, as 90s, 30m or 2h; see 'vantle --help'."},
      {{"pause", "4294967296s"},
       "'4294967296s' is no duration of up to a day, as 90s, 30m or 2h; see 'vantle --help'."},
  };
  for (const auto& [arguments, message] : cases) {
    const Said said = vantle(arguments);
    EXPECT_EQ(said.status, 2) << message;
    EXPECT_EQ(said.errors, "vantle: " + message + "\n");
    EXPECT_EQ(said.output, "");
  }
}

TEST_F(Command, TellsOfItself) {
  EXPECT_EQ(vantle({"-v"}).output, "vantle " VANTLE_VERSION "\n");
  EXPECT_EQ(vantle({"-h"}).output, helpText());
  EXPECT_EQ(vantle({"status", "--help"}).output, helpText());
  EXPECT_EQ(vantle({"--version"}).output, "vantle " VANTLE_VERSION "\n");
  const Said said = vantle({"--help"});
  EXPECT_EQ(said.status, 0);
  for (const CommandText& command : commandTexts) {
    EXPECT_THAT(said.output, HasSubstr("\n  " + std::string(command.name)));
    for (const OptionText& option : command.options) {
      EXPECT_THAT(said.output, HasSubstr("\n    " + std::string(option.name)));
    }
  }
}

std::string knownAs(const std::string& name) {
  return "  Known as org.example." + name +
         " by window class: the desktop file declares it, to the letter.\n";
}

TEST_F(Command, SaysWhyAnAppIsSlowedOrNot) {
  m_desktop->folder().folder("home/.config/com.halvo.vantle");
  m_desktop->folder().write("home/.config/com.halvo.vantle/defaults.json",
                            R"({"protectedApps": ["org.example.Music"]})");
  Program& music = app("Music");
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const std::string mail = "Mail (" + std::to_string(m_mail->pid()) + "): in background by its ";
  for (const std::string& target :
       {std::string("mail"), std::string("org.example.Mail"), std::to_string(m_mail->pid())}) {
    const Said said = vantle({"why", target});
    EXPECT_EQ(said.status, 0) << said.errors;
    EXPECT_THAT(said.output, StartsWith(mail));
    EXPECT_THAT(said.output, HasSubstr(". It makes room for the Boost app.\n" + knownAs("Mail")));
  }
  EXPECT_EQ(vantle({"why", "Music"}).output,
            "Music (" + std::to_string(music.pid()) +
                "): left alone. It is on the list of apps that are never slowed.\n" + knownAs("Music"));
  EXPECT_EQ(vantle({"why", "Game"}).output, "Game (" + std::to_string(m_game->pid()) +
                                                "): boost app. It is a Boost app.\n" + knownAs("Game"));
  EXPECT_EQ(appIn(statusJson(), *m_mail).textAt("knownBy"), "window class");
  const Said said = vantle({"why", "Nobody"});
  EXPECT_EQ(said.status, 1);
  EXPECT_EQ(said.errors, "vantle: there is no running app 'Nobody'.\n");
}

TEST_F(Command, SaysWhyForAnyProcessOfAnApp) {
  m_mail = &m_desktop->launch({testWindow(), "--class", "Mail", "--background", "--children", "1"});
  m_desktop->waitForWindow(m_mail->pid());
  std::set<Pid> processes = processesOf({m_mail->pid()});
  processes.erase(m_mail->pid());
  ASSERT_FALSE(processes.empty());
  startVantle();
  m_desktop->activate(app("Game"));
  require("the Boost", [&] { return isSlowed(m_mail->pid()); });
  EXPECT_THAT(vantle({"why", std::to_string(*processes.begin())}).output,
              StartsWith("Mail (" + std::to_string(m_mail->pid()) + "): in background"));
}

TEST_F(Command, BoostsAnAppAndTurnsItOff) {
  m_mail = &app("Mail");
  Program& music = app("Music");
  startVantle();
  m_desktop->activate(music);
  ASSERT_TRUE(waitUntil([&] { return appIn(statusJson(), music).textAt("state") == "in front"; }));
  const Said said = vantle({"boost", "Mail"});
  EXPECT_EQ(said.status, 0) << said.errors;
  EXPECT_EQ(said.output, "");
  const Json status = statusJson();
  EXPECT_EQ(appIn(status, *m_mail).textAt("state"), "boost app");
  EXPECT_EQ(appIn(status, music).textAt("state"), "in front") << "the person works with it";
  EXPECT_TRUE(isAtFullSpeed(music.pid()));
  EXPECT_EQ(vantle({"boost", "Mail"}).status, 0) << "it is the Boost app already";
  const Said other = vantle({"boost", "Music"});
  EXPECT_EQ(other.status, 1);
  EXPECT_EQ(other.errors, "vantle: a Boost is running already; 'vantle off' ends it.\n");
  EXPECT_EQ(vantle({"off"}).status, 0);
  EXPECT_EQ(*statusJson().find("boost")->find("active"), Json(false));
  // As the button in the panel does: the app in front.
  EXPECT_EQ(vantle({"boost"}).status, 0);
  EXPECT_EQ(appIn(statusJson(), music).textAt("state"), "boost app");
  EXPECT_TRUE(waitUntil([&] { return isSlowed(m_mail->pid()); }));
  EXPECT_EQ(vantle({"off"}).status, 0);
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(m_mail->pid()); }));
}

TEST_F(Command, BoostsNeitherNobodyNorOneOfTwo) {
  app("Mail");
  app("Mail");
  startVantle();
  EXPECT_EQ(vantle({"boost", "Nobody"}).errors, "vantle: there is no running app 'Nobody'.\n");
  const Said said = vantle({"boost", "Mail"});
  EXPECT_EQ(said.status, 1);
  EXPECT_EQ(said.errors, "vantle: several apps are called 'Mail': name one by its process number.\n");
}

TEST_F(Command, PausesAutomaticBoosts) {
  m_mail = &app("Mail");
  m_game = &app("Game");
  startVantle();
  const Said said = vantle({"pause", "2h"});
  EXPECT_EQ(said.status, 0) << said.errors;
  EXPECT_THAT(said.output, StartsWith("No Boost starts by itself until "));
  m_desktop->activate(*m_game);
  ASSERT_TRUE(waitUntil([&] { return appIn(statusJson(), *m_game).textAt("state") == "in front"; }));
  EXPECT_EQ(*statusJson().find("boost")->find("active"), Json(false));
  EXPECT_THAT(vantle({"status"}).output, HasSubstr("\nStarts by itself, paused until "));
  EXPECT_EQ(vantle({"boost"}).status, 0) << "the person can";
  EXPECT_TRUE(waitUntil([&] { return isSlowed(m_mail->pid()); }));
  EXPECT_EQ(vantle({"off"}).status, 0);
  // That app starts none any more; the pause is over for another one.
  EXPECT_EQ(vantle({"pause", "0s"}).status, 0);
  EXPECT_THAT(vantle({"status"}).output, HasSubstr("\nStarts by itself\n"));
  m_desktop->activate(app("Game"));
  EXPECT_TRUE(waitUntil([&] { return isSlowed(m_mail->pid()); }));
}

TEST_F(Command, APauseEndsByItself) {
  m_mail = &app("Mail");
  m_game = &app("Game");
  startVantle();
  EXPECT_EQ(vantle({"pause", "1s"}).status, 0);
  m_desktop->activate(*m_game);
  EXPECT_TRUE(waitUntil([&] { return isSlowed(m_mail->pid()); })) << "whoever is in front then has its Boost";
}

TEST_F(Command, FollowsUntilTheCopyEnds) {
  m_mail = &app("Mail");
  m_game = &app("Game");
  startVantle();
  Program& follower = launchCommand({"status", "--json", "--follow"});
  const int number = m_commands;
  require("the first status", [&] { return linesOf(number) > 0; });
  m_desktop->activate(*m_game);
  require("the Boost", [&] {
    const std::optional<Json> last = Json::parse(lastLineOf(number));
    return last && appIn(*last, *m_mail).textAt("state") == "in background";
  });
  m_game->kill();
  require("its end", [&] {
    const std::optional<Json> last = Json::parse(lastLineOf(number));
    return last && last->find("boost")->find("active")->asBool() == false;
  });
  std::istringstream lines(contents(outputOf(number)));
  std::string before;
  for (std::string line; std::getline(lines, line); before = line) {
    EXPECT_EQ(schemaViolation(line), "");
    EXPECT_NE(line, before) << "nothing has changed";
  }
  m_vantle->kill();
  EXPECT_EQ(follower.exitStatus(), 3);
  EXPECT_EQ(Json::parse(lastLineOf(number))->find("running")->asBool(), false);
}

TEST_F(Command, FollowsWithoutTellingTheSameTwice) {
  m_desktop.reset();
  makeDesktop({});
  startVantle();
  Listener listener(m_desktop->busAddress());
  launchCommand({"status", "--json", "--follow"});
  const int json = m_commands;
  launchCommand({"status", "--follow"});
  const int text = m_commands;
  require("both", [&] { return linesOf(json) == 1 && linesOf(text) == 3; });
  EXPECT_EQ(listener.pause(600), "");
  require("the pause", [&] { return linesOf(text) == 6; });
  app("Mail");
  require("the app", [&] { return lastLineOf(json).find("Mail") != std::string::npos; });
  EXPECT_EQ(linesOf(json), 2) << "the object does not tell of a pause";
}

// A disk that is full, and an output that was closed.
TEST_F(Command, EndsWhenItsAnswerCannotBeWritten) {
  startVantle();
  for (const char* output : {">/dev/full", ">&-", "<&- >&-"}) {
    for (const char* command : {"status", "status --follow", "status --json --follow", "report"}) {
      const std::filesystem::path said = m_desktop->folder().path() / "tmp/unwritten";
      const std::string run =
          std::string("exec " VANTLE_PROGRAM " ") + command + " 2>" + said.string() + " " + output;
      EXPECT_EQ(m_desktop->launch({"/bin/sh", "-c", run}).exitStatus(), 1) << run;
      EXPECT_EQ(contents(said), "vantle: the answer could not be written.\n") << run;
    }
  }
}

// One that is about to end answers for nothing any more, though its name is still there.
TEST_F(Command, ACopyThatIsEndingRunsNoMore) {
  m_desktop.reset();
  makeDesktop({});
  FakeService ending(m_desktop->busAddress(), "com.halvo.vantle");
  for (const char* error : {"UnknownObject", "UnknownInterface", "NoReply"}) {
    for (const char* member : {"GetAll", "Off", "Why"}) {
      ending.refuse(member, std::string("org.freedesktop.DBus.Error.") + error);
    }
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"status"}, {"status", "--follow"}, {"why", "Mail"}, {"off"}}) {
      const Said said = vantle(arguments);
      EXPECT_EQ(said.status, 3) << arguments.front();
      EXPECT_EQ(said.errors, "vantle: Vantle is not running.\n") << error;
    }
  }
}

TEST_F(Command, SaysNothingOfAnothersToTheTerminal) {
  startVantle();
  const std::string evil = "ev\nil\x1b[31m\u009b\u202e";
  EXPECT_EQ(vantle({"why", evil}).errors, "vantle: there is no running app 'ev?il?[31m?'.\n");
  EXPECT_EQ(vantle({evil}).errors, "vantle: there is no command 'ev?il?[31m?'; see 'vantle --help'.\n");
  const Said said = vantle({"boost", std::string(100'000, 'x')});
  EXPECT_EQ(said.status, 1);
  EXPECT_EQ(said.errors, "vantle: there is no running app '" + std::string(100, 'x') + "…'.\n");
}

TEST_F(Command, FollowsForNobodyNoLonger) {
  startVantle();
  Program& pair =
      m_desktop->launch({"/bin/sh", "-c", std::string(VANTLE_PROGRAM " status --follow | head -n 1")});
  EXPECT_EQ(pair.exitStatus(), 0);
}

// Everything of one connection, so that nothing comes and goes but the changes.
TEST_F(Command, AThousandChangesLeaveNothingBehind) {
  m_desktop.reset();
  makeDesktop({}); // this process is who it belongs to
  startVantle();
  Program& follower = launchCommand({"status", "--follow"}); // a pause stands in the text
  const int number = m_commands;
  Listener listener(m_desktop->busAddress());
  constexpr long lines = 3; // of each status
  require("the first status", [&] { return linesOf(number) == lines; });
  long told = 1;
  const auto change = [&](int times) {
    for (int count = 0; count < times; ++count) {
      // Never the same minute twice.
      ASSERT_EQ(listener.pause(static_cast<std::uint32_t>(3600 + 67 * told)), "");
      ++told;
      require("the change", [&] { return linesOf(number) == lines * told; });
    }
  };
  change(200);
  const long program = ownMemory(m_vantle->pid());
  const long command = ownMemory(follower.pid());
  const long programDescriptors = descriptorsOf(m_vantle->pid());
  const long commandDescriptors = descriptorsOf(follower.pid());
  change(1000);
  EXPECT_LE(ownMemory(m_vantle->pid()), program + 64);
  EXPECT_LE(ownMemory(follower.pid()), command + 16);
  EXPECT_EQ(descriptorsOf(m_vantle->pid()), programDescriptors);
  EXPECT_EQ(descriptorsOf(follower.pid()), commandDescriptors);
}

TEST_F(Command, WhoeverHasAskedIsToldOfChangesOnly) {
  m_desktop.reset();
  makeDesktop({});
  startVantle();
  Listener asker(m_desktop->busAddress());
  Listener other(m_desktop->busAddress());
  EXPECT_EQ(asker.active(), "");
  EXPECT_EQ(asker.off(), "") << "changes nothing";
  EXPECT_EQ(asker.pause(0), "") << "nor does this";
  EXPECT_EQ(asker.report(), "");
  EXPECT_EQ(asker.heard(), 0);
  EXPECT_EQ(other.pause(600), "");
  EXPECT_TRUE(waitUntil([&] { return asker.heard() == 1; }));
  EXPECT_EQ(other.report(), "");
  EXPECT_EQ(other.heard(), 0) << "it never asked";
}

TEST_F(Command, AsManyFollowAsOnePersonNeeds) {
  m_desktop.reset();
  makeDesktop({});
  startVantle();
  constexpr std::size_t most = 64;
  std::vector<std::unique_ptr<Listener>> followers;
  while (followers.size() < most) {
    followers.push_back(std::make_unique<Listener>(m_desktop->busAddress()));
    ASSERT_EQ(followers.back()->all(), "");
  }
  Listener another(m_desktop->busAddress());
  EXPECT_EQ(another.all(), "org.freedesktop.DBus.Error.LimitsExceeded");
  EXPECT_EQ(another.report(), "") << "orders are no following";
  EXPECT_EQ(followers.front()->all(), "") << "it follows already";
  followers.pop_back();
  EXPECT_TRUE(waitUntil([&] { return another.all().empty(); })) << "one has left";
  EXPECT_EQ(another.pause(600), "");
  EXPECT_TRUE(waitUntil([&] { return followers.front()->heard() == 1 && another.heard() == 1; }));
}

void expectNothingFor(Listener& stranger) {
  const std::string denied = "org.freedesktop.DBus.Error.AccessDenied";
  EXPECT_EQ(stranger.all(), denied);
  EXPECT_EQ(stranger.active(), denied);
  EXPECT_EQ(stranger.why("Mail"), denied);
  EXPECT_EQ(stranger.boost(""), denied);
  EXPECT_EQ(stranger.off(), denied);
  EXPECT_EQ(stranger.pause(60), denied);
  EXPECT_EQ(stranger.report(), denied);
  // Nor by what the desktop itself asks.
  EXPECT_EQ(stranger.nameless(), denied);
  EXPECT_EQ(stranger.introspected(), denied);
  EXPECT_EQ(stranger.application("quit"), denied);
  EXPECT_EQ(stranger.menu(), denied);
  EXPECT_EQ(stranger.menuLine(1), denied);
  for (int line = 1; line <= 8; ++line) EXPECT_EQ(stranger.chosen(line), denied);
  EXPECT_EQ(stranger.icon(), denied);
  EXPECT_EQ(stranger.iconTitle(), denied);
  EXPECT_EQ(stranger.clicked(), denied);
}

TEST_F(Command, AnotherUserOnTheBusGetsNothing) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "needs another user";
  m_mail = &app("Mail");
  m_game = &app("Game");
  startVantle();
  launchCommand({"status", "--json", "--follow"});
  const int number = m_commands;
  require("the first status", [&] { return linesOf(number) > 0; });
  Listener stranger(m_desktop->busAddress());
  expectNothingFor(stranger);
  m_desktop->activate(*m_game);
  require("the Boost", [&] { return lastLineOf(number).find("in background") != std::string::npos; });
  expectNothingFor(stranger);
  EXPECT_EQ(stranger.heard(), 0);
  EXPECT_EQ(stranger.heardOfMenu(), 0);
  EXPECT_TRUE(isSlowed(m_mail->pid())) << "it has turned nothing off";
}

TEST_F(Command, TheTraysMenuIsForTheTrayThatAsksForIt) {
  m_desktop.reset();
  makeDesktop({}); // this process is who it belongs to
  m_mail = &app("Mail");
  m_game = &app("Game");
  startVantle();
  Listener tray(m_desktop->busAddress());
  Listener other(m_desktop->busAddress());
  EXPECT_EQ(tray.icon(), "");
  EXPECT_EQ(tray.iconTitle(), "");
  EXPECT_EQ(tray.menu(), "");
  m_desktop->activate(*m_game);
  EXPECT_TRUE(waitUntil([&] { return tray.heardOfMenu() > 0; }));
  EXPECT_EQ(tray.menuLine(1), "");
  EXPECT_EQ(other.nameless(), "org.freedesktop.DBus.Error.UnknownInterface");
  EXPECT_EQ(other.heardOfMenu(), 0) << "it never asked";
  require("the Boost", [&] { return isSlowed(m_mail->pid()); });
  EXPECT_EQ(tray.chosen(2), "") << "turns the Boost off";
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(m_mail->pid()); }));
}

TEST_F(Command, AClientInASandboxGetsNothing) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const auto inSandbox = [this](const std::string& arguments, const std::string& program = VANTLE_PROGRAM) {
    const std::filesystem::path said = m_desktop->folder().path() / "tmp/sandboxed";
    const std::string run = "exec " + program + " " + arguments + " >" + said.string() + " 2>&1";
    // The same user among the same processes, with a view of its own of the files.
    const std::string user = std::to_string(test::nobody);
    const auto status =
        test::runsAsRoot()
            ? m_desktop
                  ->launchAs(0, {"unshare", "--mount", "setpriv", "--reuid=" + user, "--regid=" + user,
                                 "--clear-groups", "sh", "-c", run})
                  .exitStatus()
            : m_desktop->launch({"unshare", "--mount", "--map-root-user", "sh", "-c", run}).exitStatus();
    return Said{status, contents(said), {}};
  };
  const std::string denied = "vantle: only programs of this user outside of a sandbox are told\n";
  for (const char* arguments : {"status", "status --json", "why Mail", "off", "pause 1h", "report --names"}) {
    const Said said = inSandbox(arguments);
    if (said.output.find("unshare") != std::string::npos) GTEST_SKIP() << said.output;
    EXPECT_EQ(said.status, 1) << arguments;
    EXPECT_THAT(said.output, testing::EndsWith(denied)) << arguments;
    EXPECT_THAT(said.output, testing::Not(HasSubstr("Mail"))) << arguments;
  }
  for (const char* question :
       {"/MenuBar com.canonical.dbusmenu GetLayout iias 0 -1 0",
        "/MenuBar com.canonical.dbusmenu Event isvu 3 clicked i 0 0",
        "/StatusNotifierItem org.freedesktop.DBus.Properties GetAll s org.kde.StatusNotifierItem",
        "/com/halvo/vantle org.freedesktop.Application ActivateAction sava{sv} quit 0 0"}) {
    const Said said = inSandbox(question, "busctl --user -- call com.halvo.vantle");
    EXPECT_NE(said.status, 0) << question;
    EXPECT_THAT(said.output, HasSubstr("Access denied")) << question;
  }
  EXPECT_TRUE(isSlowed(m_mail->pid()));
}

TEST_F(Command, ReportsWithoutNamesUnlessAsked) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const Said said = vantle({"report"});
  EXPECT_EQ(said.status, 0) << said.errors;
  EXPECT_THAT(said.output, StartsWith("Vantle " VANTLE_VERSION "\n"));
  for (const char* subject :
       {"System: ", "Kernel: ", "Desktop: ", "Windows are seen through: ",
        "Lever: units of the user manager: ", "Lever: sessions: ", "Lever: scheduling class: ",
        "Lever: processors for the background: ", "Sound: ", "Inhibitors: ", "Boost: on\n",
        "  1 in background (slowed) by its "}) {
    EXPECT_THAT(said.output, HasSubstr(subject));
  }
  for (const char* name : {"Mail", "Game", "org.example"}) {
    EXPECT_THAT(said.output, testing::Not(HasSubstr(name)));
  }
  const Said named = vantle({"report", "--names"});
  EXPECT_THAT(named.output, HasSubstr("  Mail [org.example.Mail, " + std::to_string(m_mail->pid())));
}

TEST_F(Command, ItsInterfaceIsDocumented) {
  startVantle();
  const std::filesystem::path said = m_desktop->folder().path() / "tmp/introspected";
  ASSERT_TRUE(m_desktop->run({"sh", "-c",
                              "gdbus introspect --session --xml --dest com.halvo.vantle --object-path "
                              "/com/halvo/vantle >" +
                                  said.string()}));
  const std::string xml = contents(said);
  EXPECT_THAT(xml, HasSubstr("org.freedesktop.Application"));
  const std::string begin = "<interface name=\"com.halvo.vantle.Boost1\">";
  ASSERT_THAT(xml, HasSubstr(begin));
  const std::string own =
      xml.substr(xml.find(begin), xml.find("</interface>", xml.find(begin)) - xml.find(begin));
  const std::string guide = contents(std::filesystem::path(VANTLE_DOCS) / "scripting.md");
  int members = 0;
  const std::regex member("<(?:property|method) name=\"([A-Za-z]+)\"");
  for (std::sregex_iterator one(own.begin(), own.end(), member), last; one != last; ++one, ++members) {
    EXPECT_THAT(guide, HasSubstr("| `" + (*one)[1].str())) << "docs/scripting.md";
  }
  EXPECT_EQ(members, 12);
  const std::string schema = contents(std::filesystem::path(VANTLE_DOCS) / "status.schema.json");
  for (const ReasonText& reason : reasonTexts) {
    EXPECT_THAT(guide, HasSubstr("| `" + std::string(reason.word) + "` |"));
    EXPECT_THAT(schema, HasSubstr("\"" + std::string(reason.word) + "\""));
  }
  for (const CommandText& command : commandTexts) {
    EXPECT_THAT(guide, HasSubstr("`vantle " + std::string(command.name)));
    for (const OptionText& option : command.options) {
      EXPECT_THAT(guide, HasSubstr("[" + std::string(option.name) + "]"));
    }
  }
  for (const std::string_view state : stateWords)
    EXPECT_THAT(guide, HasSubstr("| `" + std::string(state) + "` |"));
  for (const std::string_view lever : leverWords)
    EXPECT_THAT(guide, HasSubstr("| `" + std::string(lever) + "` |"));
}

} // namespace
} // namespace vantle::desktop
