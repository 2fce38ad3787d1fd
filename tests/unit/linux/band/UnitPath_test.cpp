// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitPath.h"

#include "platform/linux/process/ControlGroupFile.h"

#include <gtest/gtest.h>
#include <tuple>
#include <vector>

namespace vantle {

namespace {

const std::string manager = userManagerPath(1000);
const std::string apps = appSlicePath(1000);

TEST(UnitPath, FindsTheUnitOfAProcess) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {apps + "/app-gnome-firefox-12.scope", "app-gnome-firefox-12.scope"},
      {apps + "/app-a.slice/a.service", "a.service"},
      {apps + "/a.service/inner/deeper", "a.service"},
      {manager + "/session.slice/pipewire.service", "pipewire.service"},
      {apps + "/_cpu.service", "cpu.service"},
      {apps + "/app-x\\x2dy-1.scope", "app-x\\x2dy-1.scope"},
      {apps, ""},
      {manager, ""},
      {manager + "/init.scope", "init.scope"},
      {"/user.slice/user-1000.slice/session-2.scope", ""},
      {"/system.slice/cron.service", ""},
      {"/", ""},
      {"", ""}};
  for (const auto& [path, name] : cases) {
    const auto unit = unitOf(manager, path);
    EXPECT_EQ(unit ? unit->name : "", name) << path;
  }
}

TEST(UnitPath, TheWeighingUnitIsWhereTwoPathsPart) {
  const std::string front = apps + "/app-game-1.scope";
  const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
      {front, apps + "/app-a-1.scope", "app-a-1.scope"},
      {front, apps + "/app-a.slice/a.service", "app-a.slice"},
      {front, apps + "/a.service/inner", "a.service"},
      {front, manager + "/session.slice/a.service", "session.slice"},
      {front, front, ""},
      {front + "/one", front + "/two", ""},
      {front, apps, ""},
      {apps + "/app-a.slice/game.service", apps + "/app-a.slice/b.service", "b.service"},
      {front, "/user.slice/user-1000.slice/session-2.scope", ""},
      {"/user.slice/user-1000.slice/session-2.scope", apps + "/app-a-1.scope", ""},
      {apps + "/-", apps + "/app-a-1.scope", "app-a-1.scope"},
      {front, apps + "/plainfolder", ""}};
  for (const auto& [left, path, name] : cases) {
    const auto unit = weighingUnit(manager, left, path);
    EXPECT_EQ(unit ? unit->name : "", name) << left << " and " << path;
  }
}

TEST(UnitPath, AnAppsPlaceIsAUnitThatWasMadeForOneApp) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {apps + "/app-gnome-firefox-12.scope", apps + "/app-gnome-firefox-12.scope"},
      {apps + "/app-gnome-firefox-12.scope/inner", apps + "/app-gnome-firefox-12.scope"},
      {apps + "/run-u7.scope", apps + "/run-u7.scope"},
      {apps + "/app-org.example.Editor@a1.service", apps + "/app-org.example.Editor@a1.service"},
      {apps + "/app-a.slice/app-a-1.service", apps + "/app-a.slice/app-a-1.service"},
      {apps + "/dbus-:1.2-org.example.Editor@0.service", apps + "/dbus-:1.2-org.example.Editor@0.service"},
      {apps + "/gnome-terminal-server.service", ""},
      {apps + "/dbus.service", ""},
      {manager + "/session.slice/pipewire.service", ""},
      {manager + "/init.scope", ""},
      {manager, ""},
      {apps, ""},
      {"/user.slice/user-1000.slice/session-2.scope", ""},
      {"/user.slice/user-1001.slice/user@1001.service/app.slice/app-a-1.scope", ""},
      {"/system.slice/cron.service", ""},
      {"/", ""},
      {"", ""}};
  for (const auto& [path, place] : cases) EXPECT_EQ(appPlaceOf(manager, path), place) << path;
}

TEST(UnitPath, HoldsWhatIsBelow) {
  const UnitPlace place{"a.scope", apps + "/a.scope"};
  EXPECT_TRUE(place.holds(apps + "/a.scope"));
  EXPECT_TRUE(place.holds(apps + "/a.scope/inner"));
  EXPECT_FALSE(place.holds(apps + "/a.scope2"));
  EXPECT_FALSE(place.holds(apps));
}

TEST(ControlGroupFile, ReadsBothVersions) {
  const std::string text = "9:name=systemd:/a\n2:cpu,cpuacct:/b:c\n1:cpuset:/d\n0::/e\n";
  EXPECT_EQ(controlGroupPath(text), "/e");
  EXPECT_EQ(controlGroupPath(text, true), "/b:c");
  EXPECT_EQ(controlGroupPath("1:cpuset:/d\n", true), std::nullopt);
  EXPECT_EQ(controlGroupPath(""), std::nullopt);
  EXPECT_EQ(controlGroupPath("nonsense"), std::nullopt);
}

} // namespace

} // namespace vantle
